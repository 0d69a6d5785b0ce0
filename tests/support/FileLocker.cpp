// Opens a file, reports that through an event and on standard output, and keeps the file open until a second event or a
// time limit.
//
//   kestrovane-file-locker PATH ACCESS SHARE NAME    the events are NAME-ready and NAME-release

#include "tests/support/UniqueResource.h"

#include <shellapi.h>

#include <cstdio>
#include <cwchar>
#include <string>

namespace {

UniqueHandle CreateNamedEvent(const std::wstring& name)
{
    return UniqueHandle(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
}

} // namespace

int main()
{
    constexpr int kArgumentCount = 5;
    constexpr DWORD kLimit = 300000; // milliseconds; longer than any test runs
    int count = 0;
    const UniqueLocalMemory<wchar_t*> arguments(::CommandLineToArgvW(::GetCommandLineW(), &count));
    if (arguments == nullptr || count != kArgumentCount) {
        return 2;
    }
    const auto access = static_cast<DWORD>(std::wcstoul(arguments.get()[2], nullptr, 10));
    const auto share = static_cast<DWORD>(std::wcstoul(arguments.get()[3], nullptr, 10));
    const std::wstring name = arguments.get()[4];
    const UniqueHandle file(::CreateFileW(arguments.get()[1], access, share, nullptr, OPEN_EXISTING, 0, nullptr));
    const UniqueHandle release = CreateNamedEvent(name + L"-release");
    const UniqueHandle ready = CreateNamedEvent(name + L"-ready");
    if (file.get() == INVALID_HANDLE_VALUE) {
        return 1;
    }
    ::SetEvent(ready.get());
    std::puts("ready");
    std::fflush(stdout);
    ::WaitForSingleObject(release.get(), kLimit);
    return 0;
}
