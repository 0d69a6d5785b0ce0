// Opens a file, says so through an event and on standard output, and keeps it open until a second event or the end of its
// patience.
//
//   kestrovane-file-locker PATH ACCESS SHARE NAME    the events are NAME-ready and NAME-release

#include <windows.h>

#include <shellapi.h>

#include <cstdio>
#include <cwchar>
#include <string>

int main()
{
    constexpr int kArgumentCount = 5;
    constexpr DWORD kPatience = 300000; // milliseconds
    int count = 0;
    wchar_t** arguments = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    if (arguments == nullptr || count != kArgumentCount) {
        return 2;
    }
    const auto access = static_cast<DWORD>(std::wcstoul(arguments[2], nullptr, 10));
    const auto share = static_cast<DWORD>(std::wcstoul(arguments[3], nullptr, 10));
    const std::wstring name = arguments[4];
    const HANDLE file = ::CreateFileW(arguments[1], access, share, nullptr, OPEN_EXISTING, 0, nullptr);
    const HANDLE release = ::CreateEventW(nullptr, TRUE, FALSE, (name + L"-release").c_str());
    const HANDLE ready = ::CreateEventW(nullptr, TRUE, FALSE, (name + L"-ready").c_str());
    if (file == INVALID_HANDLE_VALUE) {
        return 1;
    }
    ::SetEvent(ready);
    std::puts("ready");
    std::fflush(stdout);
    ::WaitForSingleObject(release, kPatience);
    return 0;
}
