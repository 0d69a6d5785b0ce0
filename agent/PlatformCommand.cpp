// platform: what the library says of the Windows release.

#include "agent/Commands.h"

#include "agent/Report.h"

#include <Kestrovane.h>

namespace agent {

int RunPlatform(const CommonOptions& common)
{
    Report report("platform");
    report.SetFlag("windowsXp", IsRunsOnWinXP() != 0);
    report.SetFlag("server2003Sp1OrLater", IsRunOnWin2003SP1Up() != 0);
    return report.Finish(common.json);
}

} // namespace agent
