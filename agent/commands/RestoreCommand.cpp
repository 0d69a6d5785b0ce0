// restore: brings the files of a backup back, to their own places or to others.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Report.h"
#include "agent/restore/Restore.h"

#include <memory>

namespace agent {

namespace {

std::optional<std::wstring> WhyUsageIsWrong(const RestoreOptions& options)
{
    if (!options.to.empty() && !options.mappings.empty()) {
        return L"--to and mappings exclude each other";
    }
    return WhyMappingsAreIncomplete(options.mappings);
}

int RunRestore(const RestoreOptions& options)
{
    if (const auto reason = WhyUsageIsWrong(options)) {
        Report report("restore");
        report.Fail(L"the command line", *reason);
        return report.FinishObject(kWrongUsage);
    }
    return Restore(options).Run();
}

void AddDestinationOptions(CommandOptions& command, RestoreOptions& options)
{
    command.String("--to", options.to, "DIR", "Everything goes below this directory, whatever its own place was");
    AddMappings(command, options.mappings);
    command.Choice<Unmapped>("--unmapped", options.unmapped,
                             {{"leave-out", Unmapped::kLeaveOut}, {"in-place", Unmapped::kInPlace}},
                             "What becomes of files that no mapping covers");
}

} // namespace

void AddRestoreCommand(CommandSet& commands)
{
    auto options = std::make_shared<RestoreOptions>();
    CommandOptions command =
        commands.Add("restore", "Restores the files of a backup", [options] { return RunRestore(*options); });
    command.Required("BACKUP", options->backup, "The directory that takes the versions of the backup");
    command.String("--at", options->at, "NAME", "The version with this name (default: the newest complete one)");
    AddDestinationOptions(command, *options);
    command.Patterns("--only", options->only, "Restores the files with such names alone; may be repeated");
    command.Choice<Overwrite>(
        "--overwrite", options->overwrite,
        {{"always", Overwrite::kAlways}, {"if-newer", Overwrite::kIfNewer}, {"never", Overwrite::kNever}},
        "Replaces existing files");
    command.Flag("--dry-run", options->dryRun,
                 "Shows what would be done, what is missing and what would not fit, and changes nothing");
    command.Flag("--security", options->security, "Restores security descriptors, where the backup holds them");
    command.String("--owner", options->owner, "ACCOUNT", "Gives what was restored to this account afterwards");
    command.Flag("--temp-cache", options->temporaryCache,
                 "Cache files of files in use go to the temporary directory, where it is on the same volume");
    command.Example(R"(kestrovane-agent restore D:\Backup --dry-run)");
    command.Example(R"(kestrovane-agent restore D:\Backup --to D:\Restored --only *.txt)");
    command.Example(R"(kestrovane-agent restore D:\Backup --map C:\Data=D:\New;*;recursive)");
}

} // namespace agent
