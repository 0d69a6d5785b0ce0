// Checks for the 5.x releases of Windows, whose snapshot and volume features differ.

#include <Kestrovane.h>

#include <windows.h>

namespace {

constexpr DWORD kFamily5 = 5; // major version

// Minor versions of that family. 64-bit XP reports itself as a workstation of the last one.
constexpr DWORD kWindows2000 = 0;
constexpr DWORD kWindowsXp = 1;
constexpr DWORD kServer2003 = 2;

// Returns zeros, which match no known release, if the query fails.
OSVERSIONINFOEXW ReadVersion() noexcept
{
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    return ::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version)) ? version : OSVERSIONINFOEXW{};
}

bool IsWorkstation(const OSVERSIONINFOEXW& version) noexcept
{
    return version.wProductType == VER_NT_WORKSTATION;
}

bool IsXp(const OSVERSIONINFOEXW& version) noexcept
{
    return version.dwMajorVersion == kFamily5 &&
           (version.dwMinorVersion == kWindowsXp || (version.dwMinorVersion == kServer2003 && IsWorkstation(version)));
}

bool IsServer2003Sp1OrLater(const OSVERSIONINFOEXW& version) noexcept
{
    if (version.dwMajorVersion != kFamily5) {
        return true;
    }
    switch (version.dwMinorVersion) {
    case kWindows2000:
    case kWindowsXp:
        return false;
    case kServer2003:
        return !IsWorkstation(version) && version.szCSDVersion[0] != L'\0'; // any service pack counts
    default:
        return true;
    }
}

} // namespace

int IsRunsOnWinXP()
{
    return IsXp(ReadVersion()) ? 1 : 0;
}

int IsRunOnWin2003SP1Up()
{
    return IsServer2003Sp1OrLater(ReadVersion()) ? 1 : 0;
}
