// Writes the Windows version that this process is shown, and what the library makes of it.
//
//   kestrovane-version-probe FILE    for example "5.1 type 1 'Service Pack 3': XP 1, 2003 SP1 0"

#include <Kestrovane.h>

#include <windows.h>

#include <shellapi.h>

#include <cstdio>

int main()
{
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (arguments == nullptr || count != 2) {
        return 2;
    }
    OSVERSIONINFOEXW version = {};
    version.dwOSVersionInfoSize = sizeof(version);
    if (!::GetVersionExW(reinterpret_cast<OSVERSIONINFOW*>(&version))) {
        return 1;
    }
    FILE* file = ::_wfopen(arguments[1], L"wb");
    if (file == nullptr) {
        return 1;
    }
    std::fprintf(file, "%lu.%lu type %d '%ls': XP %d, 2003 SP1 %d", version.dwMajorVersion, version.dwMinorVersion,
                 version.wProductType, version.szCSDVersion, IsRunsOnWinXP(), IsRunOnWin2003SP1Up());
    return std::fclose(file);
}
