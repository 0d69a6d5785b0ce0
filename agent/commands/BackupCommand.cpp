// backup: copies a tree into a new version.

#include "agent/commands/Commands.h"

#include "agent/backup/Backup.h"
#include "agent/console/CommandOptions.h"

#include <memory>

namespace agent {

void AddBackupCommand(CommandSet& commands)
{
    auto options = std::make_shared<BackupOptions>();
    CommandOptions command = commands.Add("backup", "Copies a tree into a new version with a manifest",
                                          [options] { return Backup(*options).Run(); });
    command.Required("DIR", options->directory, "The directory to back up");
    command.Required("TARGET", options->target, "The directory that takes the versions of the backup");
    command.Patterns("--filter", options->selection.filters, "Only files with such names");
    command.Patterns("--exclude", options->selection.excludes, "No files and directories with such names");
    command.Strings("--snapshot", options->snapshots, "VOLUME=DEVICE",
                    "Reads the files of a volume from its snapshot device");
    command.Flag("--security", options->copy.security, "Also owners and DACLs");
    command.Number("--retry", options->copy.retries, 1, "How often files in use are tried again, after all others");
    command.Number("--wait", options->copy.waitSeconds, 0, "Seconds before each retry (default: 0)");
    command.Number("--keep", options->keep, 1, "Afterwards removes the oldest complete versions but this many");
    command.Example(R"(kestrovane-agent backup C:\Data D:\Backup --keep 7)");
    command.Example(R"(kestrovane-agent backup C:\Data D:\Backup --exclude *.tmp --retry 3 --wait 10)");
}

} // namespace agent
