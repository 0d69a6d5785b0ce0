// platform: what the library says of the Windows release.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Report.h"

#include <Kestrovane.h>

namespace agent {

namespace {

int RunPlatform()
{
    Report report("platform");
    report.SetFlag("windowsXp", IsRunsOnWinXP() != 0);
    report.SetFlag("server2003Sp1OrLater", IsRunOnWin2003SP1Up() != 0);
    return report.Finish();
}

} // namespace

void AddPlatformCommand(CommandSet& commands)
{
    CommandOptions command =
        commands.Add("platform", "Shows what the library reports of the Windows release", &RunPlatform);
    command.Example(R"(kestrovane-agent --json platform)");
}

} // namespace agent
