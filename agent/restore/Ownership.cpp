// Giving files and trees their owner.

#include "agent/restore/Ownership.h"

#include "agent/console/HostFunctions.h"

#include <Kestrovane.h>

namespace agent {

void GiveOwner(const std::wstring& path, const std::wstring& account, Report& report)
{
    bool failedBelow = false;
    {
        const LogListener listener([&](int level, const std::wstring& line) {
            if (line == L"Successfully modified DACL.") {
                report.Count("owned");
            } else if (level == 0 && line.starts_with(L"Error ")) {
                report.Count("ownerFailed");
                report.Fail(path, line);
                failedBelow = true;
            }
        });
        bool changed = false;
        if (!CallInterruptibly([&] { changed = ChangeObjectOwner(path, account); })) {
            report.SetInterrupted();
        } else if (changed) {
            report.CountAchieved();
        } else if (!failedBelow) {
            report.Fail(path, L"its owner could not be changed");
        }
    }
}

} // namespace agent
