// own: the owner of a file or a whole tree.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"
#include "agent/platform/TreeSurvey.h"
#include "agent/restore/Ownership.h"

#include <memory>

namespace agent {

namespace {

struct OwnOptions {
    std::wstring path;
    std::wstring account;
    bool yes = false;
};

// The library enters links, so they are shown before anything changes.
bool ShowTree(const std::wstring& path, Report& report)
{
    const TreeSurvey survey = SurveyTree(path, {L"", true});
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
    for (const auto& [directory, reason] : survey.failures) {
        report.Fail(directory, reason + L"; nothing is changed");
    }
    return !report.HasFailures();
}

int RunOwn(const OwnOptions& options)
{
    Report report("own");
    const std::wstring path = WithoutLongPrefix(Absolute(options.path));
    report.Set("path", path);
    report.Set("account", options.account);
    const auto information = ReadInformation(path);
    if (!information) {
        report.Fail(path, LastReason());
        return report.Finish();
    }
    report.Set("files", 1);
    if (information->IsDirectory() && !ShowTree(path, report)) {
        return report.Finish();
    }
    report.Set("owned", 0);
    if (options.yes) {
        GiveOwner(path, options.account, report);
    } else {
        report.Note(L"nothing is changed without --yes");
    }
    return report.Finish();
}

} // namespace

void AddOwnCommand(CommandSet& commands)
{
    auto options = std::make_shared<OwnOptions>();
    CommandOptions command = commands.Add("own", "Gives a file or a whole tree its owner, with full access",
                                          [options] { return RunOwn(*options); });
    command.Required("PATH", options->path, "The file or directory");
    command.Required("ACCOUNT", options->account, "A user or group: NAME, DOMAIN\\NAME, .\\NAME, LocalSystem");
    command.Flag("--yes", options->yes, "Does it; without, what would change is shown");
    command.Example(R"(kestrovane-agent own D:\Restored LocalSystem --yes)");
}

} // namespace agent
