// own: the owner of a file or a whole tree.

#include "agent/Commands.h"

#include "agent/FileFacts.h"
#include "agent/Ownership.h"
#include "agent/Report.h"
#include "agent/Text.h"
#include "agent/TreeSurvey.h"

namespace agent {

namespace {

// The library enters links, so they are shown before anything changes.
bool ShowTree(const std::wstring& path, Report& report)
{
    const TreeSurvey survey = SurveyTree(path, L"", true);
    report.Set("files", static_cast<std::int64_t>(survey.files.size()));
    report.Set("directories", survey.directories);
    report.Set("links", static_cast<std::int64_t>(survey.links.size()));
    for (const std::wstring& link : survey.links) {
        report.Add("linkPaths", link);
        report.Note(link + L" is a link; what it leads to changes its owner, too");
    }
    if (survey.tooDeep) {
        report.Fail(path, L"it has more than " + std::to_wstring(kDeepestSurvey) +
                              L" levels of directories; a link may lead back into it");
    }
    return !survey.tooDeep;
}

} // namespace

int RunOwn(const OwnOptions& options, const CommonOptions& common)
{
    Report report("own");
    const std::wstring path = options.path.empty() ? L"" : Absolute(options.path);
    report.Set("path", path);
    report.Set("account", options.account);
    const auto facts = ReadFacts(path);
    if (!facts) {
        report.Fail(path, path.empty() ? L"an empty path is refused" : SystemReason(::GetLastError()));
        return report.Finish(common.json);
    }
    report.Set("files", 1);
    if (facts->IsDirectory() && !ShowTree(path, report)) {
        return report.Finish(common.json);
    }
    report.Set("owned", 0);
    if (options.yes) {
        GiveOwner(path, options.account, report);
    } else {
        report.Note(L"nothing is changed without --yes");
    }
    return report.Finish(common.json);
}

} // namespace agent
