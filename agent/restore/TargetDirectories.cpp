// The directories that a restore writes into.

#include "agent/restore/TargetDirectories.h"

#include "agent/platform/Directories.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Security.h"
#include "agent/restore/NewContent.h"

#include <algorithm>

namespace agent {

namespace {

void FinishOne(const std::wstring& path, const ManifestDirectory& known, bool withSecurity, Report& report)
{
    const DWORD attributes =
        known.attributes == 0 ? 0 : FILE_ATTRIBUTE_DIRECTORY | (known.attributes & kRestoredAttributes);
    if (!SetInformation(path, known.created, known.modified, attributes)) {
        report.Fail(path, L"its times and attributes could not be restored: " + LastReason());
    }
    if (withSecurity && !known.security.empty()) {
        if (const auto reason = WriteSecurity(path, known.security)) {
            report.Fail(path, *reason);
        }
    }
}

} // namespace

std::optional<std::wstring> TargetDirectories::Prepare(const std::wstring& directory, const std::wstring& bound)
{
    auto prepared = m_prepared.find(directory);
    if (prepared == m_prepared.end()) {
        prepared = m_prepared.emplace(directory, Create(directory, bound)).first;
    }
    return prepared->second;
}

std::optional<std::wstring> TargetDirectories::Create(const std::wstring& directory, const std::wstring& bound)
{
    if (const std::wstring link = LinkOnTheWay(directory, bound); !link.empty()) {
        return L"the link " + link + L" leads elsewhere, so nothing is restored through it";
    }
    const std::wstring topmost = TopmostMissing(directory);
    auto reason = EnsureDirectory(directory);
    if (!reason && !topmost.empty()) {
        m_created.push_back(topmost);
    }
    return reason;
}

bool TargetDirectories::IsInCreated(const std::wstring& path) const
{
    return std::any_of(m_created.begin(), m_created.end(),
                       [&](const std::wstring& directory) { return IsSameOrBelow(path, directory); });
}

void TargetDirectories::Finish(const std::vector<DirectoryStep>& steps, const RestoreOptions& options,
                               Report& report) const
{
    std::for_each(steps.rbegin(), steps.rend(), [&](const DirectoryStep& step) {
        const std::wstring& path = step.target.path;
        const auto prepared = m_prepared.find(path);
        const bool isThere = prepared != m_prepared.end() && !prepared->second;
        if (isThere && (options.overwrite == Overwrite::kAlways || IsInCreated(path))) {
            FinishOne(path, step.directory, options.security, report);
        }
    });
}

} // namespace agent
