// list: the files of a directory or a tree.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/HostFunctions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/TreeSurvey.h"

#include <Kestrovane.h>

#include <memory>

namespace agent {

namespace {

struct ListOptions {
    std::wstring directory;
    std::wstring filter = L"*";
    bool recursive = false;
    bool fullPaths = false;
};

// A listing is empty also for a directory that cannot be read, and ends early at one below it; a walk of the agent's
// own names both.
void ReportUnreadable(const ListOptions& options, Report& report)
{
    for (const auto& [directory, reason] : SurveyTree(Absolute(options.directory), {L"", false}).failures) {
        report.Fail(directory, reason);
    }
}

int RunList(const ListOptions& options)
{
    Report report("list");
    if (options.directory.empty() || !isDirectoryExists(options.directory)) {
        const DWORD error = ::GetLastError();
        report.Fail(options.directory, error == ERROR_SUCCESS ? L"no such directory" : SystemReason(error));
        return report.Finish();
    }
    std::vector<std::wstring> files;
    const auto list = options.recursive ? &ListFilesFilterRecursive : &ListFilesFilter;
    if (!CallInterruptibly([&] { files = list(options.directory, options.filter, options.fullPaths); })) {
        report.SetInterrupted();
    }
    for (const std::wstring& file : files) {
        report.CountAchieved();
        report.Add("files", file);
        if (!IsJson()) {
            WriteResult(file + L"\n");
        }
    }
    if (options.recursive) {
        ReportUnreadable(options, report);
    }
    if (IsJson()) {
        report.Set("count", static_cast<std::int64_t>(files.size()));
    }
    return report.Finish();
}

} // namespace

void AddListCommand(CommandSet& commands)
{
    auto options = std::make_shared<ListOptions>();
    CommandOptions command =
        commands.Add("list", "Lists the files of a directory", [options] { return RunList(*options); });
    command.Required("DIR", options->directory, "The directory");
    command.Pattern("--filter", options->filter, "Which names, with * and ?");
    command.Flag("--recursive", options->recursive, "The whole tree");
    command.Flag("--full-paths", options->fullPaths, "Full paths instead of names");
    command.Example(R"(kestrovane-agent list C:\Data --recursive --filter *.txt)");
}

} // namespace agent
