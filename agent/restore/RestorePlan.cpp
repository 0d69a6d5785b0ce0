// What a restore is to do, file by file.

#include "agent/restore/RestorePlan.h"

#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/restore/NameFilter.h"
#include "agent/restore/PresentFiles.h"
#include "agent/restore/RestoreRecord.h"

#include <algorithm>
#include <set>

namespace agent {

namespace {

class Planner {
public:
    Planner(const RestoreOptions& options, const LoadedVersion& version, Report& report)
        : m_options(options),
          m_version(version),
          m_manifest(version.read.manifest),
          m_report(report),
          m_backup(Absolute(options.backup)),
          m_placement(options, m_manifest.original),
          m_names(options.only)
    {
    }

    RestorePlan Plan()
    {
        RestorePlan plan;
        plan.isRejected = !MappingsCoverFiles();
        if (plan.isRejected) {
            return plan;
        }
        for (const auto& [name, reason] : m_version.read.rejected) {
            m_report.Fail(name, reason);
        }
        for (const ManifestFile& file : m_manifest.files) {
            PlanFile(file, plan);
        }
        PlanDirectory(m_manifest.root, plan);
        for (const ManifestDirectory& directory : m_manifest.directories) {
            PlanDirectory(directory, plan);
        }
        m_names.ReportUnused(m_report);
        ReportLeftOut();
        return plan;
    }

private:
    // A mapping that covers nothing is a mistake of the user's, and what it was meant to send elsewhere must not be
    // restored in place.
    bool MappingsCoverFiles()
    {
        bool all = true;
        for (std::size_t i = 0; i < m_options.mappings.size(); ++i) {
            const bool covers = std::any_of(m_manifest.files.begin(), m_manifest.files.end(),
                                            [&](const ManifestFile& file) { return m_placement.Covers(i, file.name); });
            if (!covers) {
                const std::wstring& path = m_options.mappings[i].path;
                const bool hasSlash = path.find(L'/') != std::wstring::npos;
                m_report.Fail(path, L"this mapping covers no file of the backup of " + m_manifest.original +
                                        (hasSlash ? L"; write it with backslashes" : L"") + L"; nothing was restored");
                all = false;
            }
        }
        return all;
    }

    void PlanFile(const ManifestFile& file, RestorePlan& plan)
    {
        if (!m_names.Takes(file.name)) {
            return;
        }
        const auto target = m_placement.PlaceFile(file.name);
        if (!target) {
            m_leftOut.push_back(Join(m_manifest.original, file.name));
            return;
        }
        RestoreStep step{Join(m_version.version.folder, file.stored), *target, file, false, {}, {}};
        if (IsPossible(step) && IsWanted(step)) {
            plan.bytes += file.digest.size;
            plan.steps.push_back(std::move(step));
        }
    }

    bool IsPossible(RestoreStep& step)
    {
        const std::wstring& path = step.target.path;
        const auto reason = WhyImpossible(step);
        if (reason) {
            m_report.Fail(path, *reason);
        }
        return !reason;
    }

    std::optional<std::wstring> WhyImpossible(RestoreStep& step)
    {
        const auto& [path, directory, bound, mapped] = step.target;
        if (!IsConfined(path, bound)) {
            return L"it would leave " + bound;
        }
        if (IsSameOrBelow(path, m_backup)) {
            return L"it lies in the backup itself";
        }
        step.stagingDirectory = StagingDirectoryFor(path, bound);
        if (IsTooLong(step.source) || step.stagingDirectory.empty()) {
            return L"the path, or that of its copy in the backup, has more than 259 characters";
        }
        if (!m_targets.insert(path).second) {
            return L"another file of the backup goes there, too; this one is " + step.source;
        }
        return WhyPresentCannotBeReplaced(step);
    }

    std::optional<std::wstring> WhyPresentCannotBeReplaced(RestoreStep& step)
    {
        const PresentFile* const present = m_present.Find(step.target.directory, NameOf(step.target.path));
        step.replaces = present != nullptr;
        if (present == nullptr) {
            return std::nullopt;
        }
        step.present = present->information;
        if (present->isLink) {
            return L"a link is in its place";
        }
        if (present->information.IsDirectory()) {
            return L"a directory is in its place";
        }
        return std::nullopt;
    }

    bool IsWanted(const RestoreStep& step)
    {
        const bool isNewer = step.file.modified > step.present.modified;
        if (!step.replaces || m_options.overwrite == Overwrite::kAlways ||
            (m_options.overwrite == Overwrite::kIfNewer && isNewer)) {
            return true;
        }
        m_report.Count("skipped");
        return false;
    }

    // Of a selection, only the directories that hold its files.
    void PlanDirectory(const ManifestDirectory& directory, RestorePlan& plan)
    {
        const auto target = m_placement.PlaceDirectory(directory.name);
        if (!target || !m_names.IsEverything()) {
            return;
        }
        if (!IsConfined(target->path, target->bound) || IsSameOrBelow(target->path, m_backup)) {
            m_report.Fail(target->path, L"it would leave " + target->bound + L", or lies in the backup itself");
            return;
        }
        plan.directories.push_back({*target, directory});
    }

    void ReportLeftOut()
    {
        if (m_leftOut.empty()) {
            return;
        }
        for (const std::wstring& path : m_leftOut) {
            m_report.Add("leftOutFiles", path);
            WriteResult(path + L" is left out: no mapping covers it\n");
        }
        m_report.Set("leftOut", static_cast<std::int64_t>(m_leftOut.size()));
        m_report.Note(L"left out, because no mapping covers it: " +
                      Counted(static_cast<std::int64_t>(m_leftOut.size()), L"file") +
                      L"; --unmapped in-place restores such files to their own places");
        m_report.SetInPart();
    }

    const RestoreOptions& m_options;
    const LoadedVersion& m_version;
    const Manifest& m_manifest;
    Report& m_report;
    std::wstring m_backup;
    Placement m_placement;
    NameFilter m_names;
    PresentFiles m_present;
    std::set<std::wstring, LessIgnoringCase> m_targets;
    std::vector<std::wstring> m_leftOut;
};

} // namespace

RestorePlan PlanRestore(const RestoreOptions& options, const LoadedVersion& version, Report& report)
{
    return Planner(options, version, report).Plan();
}

} // namespace agent
