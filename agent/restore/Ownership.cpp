// Giving files and trees their owner.

#include "agent/restore/Ownership.h"

#include "agent/console/HostFunctions.h"
#include "agent/platform/Errors.h"

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

std::optional<std::wstring> WhyAccountIsUnknown(const std::wstring& account)
{
    constexpr std::wstring_view kThisMachine = LR"(.\)"; // the library looks such a name up without it
    if (account == L"LocalSystem") {
        return std::nullopt;
    }
    const std::wstring name = account.starts_with(kThisMachine) ? account.substr(kThisMachine.size()) : account;
    BYTE sid[SECURITY_MAX_SID_SIZE] = {};
    wchar_t domain[MAX_PATH] = {};
    DWORD sidSize = sizeof(sid);   // bytes
    DWORD domainLength = MAX_PATH; // characters
    SID_NAME_USE use = {};
    if (::LookupAccountNameW(nullptr, name.c_str(), sid, &sidSize, domain, &domainLength, &use)) {
        return std::nullopt;
    }
    return L"there is no such account: " + LastReason();
}

} // namespace agent
