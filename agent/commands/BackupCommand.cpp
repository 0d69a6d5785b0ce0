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
    command.Pattern("--filter", options->filter, "Which names, with * and ?");
    command.Strings("--snapshot", options->snapshots, "VOLUME=DEVICE",
                    "Reads the files of a volume from its snapshot device");
}

} // namespace agent
