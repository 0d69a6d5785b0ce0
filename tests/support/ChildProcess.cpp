// Second processes, run from programs of the build.

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr DWORD kPatience = 30000; // milliseconds; a program of the tests ends within one second

} // namespace

std::wstring ProgramBesideThis(const std::wstring& name)
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + name;
}

UniqueHandle StartProgram(const std::wstring& program, const std::vector<std::wstring>& arguments,
                          const std::wstring& directory)
{
    std::wstring command = L"\"" + program + L"\"";
    for (const std::wstring& argument : arguments) {
        command += L" \"" + argument + L"\"";
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(::CreateProcessW(program.c_str(), command.data(), nullptr, nullptr, FALSE, 0, nullptr,
                                 directory.empty() ? nullptr : directory.c_str(), &startup, &process))
        << "error " << ::GetLastError();
    const UniqueHandle thread(process.hThread);
    return UniqueHandle(process.hProcess);
}

DWORD ExitCodeOf(HANDLE process)
{
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process, kPatience));
    DWORD exitCode = 0;
    EXPECT_TRUE(::GetExitCodeProcess(process, &exitCode));
    return exitCode;
}

DWORD RunHelper(const std::wstring& name, const std::vector<std::wstring>& arguments)
{
    const UniqueHandle process = StartProgram(ProgramBesideThis(name), arguments);
    return ExitCodeOf(process.get());
}
