// list: the files of a directory or a tree.

#include "agent/Commands.h"

#include "agent/FileFacts.h"
#include "agent/Output.h"
#include "agent/Report.h"
#include "agent/SourceTree.h"
#include "agent/Text.h"

#include <Kestrovane.h>

namespace agent {

namespace {

// A listing is empty also for a directory that cannot be read, and ends early at one below it; a walk of the agent's own
// names both.
void ReportUnreadable(const ListOptions& options, Report& report)
{
    const SourceTree tree = ReadSourceTree(Absolute(options.directory), L"*");
    for (const auto& [directory, reason] : tree.failures) {
        report.Fail(directory, reason);
    }
}

} // namespace

int RunList(const ListOptions& options, const CommonOptions& common)
{
    Report report("list");
    if (options.directory.empty() || !isDirectoryExists(options.directory)) {
        const DWORD error = ::GetLastError();
        report.Fail(options.directory, error == ERROR_SUCCESS ? L"no such directory" : SystemReason(error));
        return report.Finish(common.json);
    }
    const auto files = options.recursive
                           ? ListFilesFilterRecursive(options.directory, options.filter, options.fullPaths)
                           : ListFilesFilter(options.directory, options.filter, options.fullPaths);
    for (const std::wstring& file : files) {
        report.CountAchieved();
        report.Add("files", file);
        if (!common.json) {
            WriteResult(file + L"\n");
        }
    }
    if (options.recursive) {
        ReportUnreadable(options, report);
    }
    if (common.json) {
        report.Set("count", static_cast<std::int64_t>(files.size()));
    }
    return report.Finish(common.json);
}

} // namespace agent
