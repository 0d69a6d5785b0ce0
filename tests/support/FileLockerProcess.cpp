// A second process that holds a file open.

#include "tests/support/FileLockerProcess.h"

#include <gtest/gtest.h>

#include <vector>

namespace {

constexpr DWORD kPatience = 30000; // milliseconds

std::wstring ProgramBesideThis(const std::wstring& name)
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + name;
}

} // namespace

FileLockerProcess::FileLockerProcess(const std::wstring& path, DWORD access, DWORD share)
{
    static int count = 0;
    const std::wstring name =
        L"kestrovane-file-locker-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
    m_release = ::CreateEventW(nullptr, TRUE, FALSE, (name + L"-release").c_str());
    const HANDLE ready = ::CreateEventW(nullptr, TRUE, FALSE, (name + L"-ready").c_str());
    std::wstring command = L"\"" + ProgramBesideThis(L"kestrovane-file-locker.exe") + L"\" \"" + path + L"\" " +
                           std::to_wstring(access) + L" " + std::to_wstring(share) + L" " + name;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    const BOOL started =
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &m_process);
    EXPECT_TRUE(started) << "error " << ::GetLastError();
    if (started) {
        const HANDLE either[] = {ready, m_process.hProcess};
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForMultipleObjects(2, either, FALSE, kPatience))
            << "the second process could not open the file";
    }
    ::CloseHandle(ready);
}

FileLockerProcess::~FileLockerProcess()
{
    ::SetEvent(m_release);
    if (m_process.hProcess != nullptr) {
        if (::WaitForSingleObject(m_process.hProcess, kPatience) != WAIT_OBJECT_0) {
            ::TerminateProcess(m_process.hProcess, 1);
        }
        ::CloseHandle(m_process.hProcess);
        ::CloseHandle(m_process.hThread);
    }
    ::CloseHandle(m_release);
}

DWORD RunHelper(const std::wstring& name, const std::vector<std::wstring>& arguments)
{
    std::wstring command = L"\"" + ProgramBesideThis(name) + L"\"";
    for (const std::wstring& argument : arguments) {
        command += L" \"" + argument + L"\"";
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    EXPECT_TRUE(
        ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process))
        << "error " << ::GetLastError();
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(process.hProcess, kPatience));
    DWORD exitCode = 0;
    ::GetExitCodeProcess(process.hProcess, &exitCode);
    ::CloseHandle(process.hProcess);
    ::CloseHandle(process.hThread);
    return exitCode;
}
