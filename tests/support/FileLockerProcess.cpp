// A second process that locks a file: it keeps the file open with a given share mode.

#include "tests/support/FileLockerProcess.h"

#include "tests/support/ChildProcess.h"

#include <gtest/gtest.h>

namespace {

constexpr DWORD kPatience = 30000; // milliseconds; the program opens its file within one second

UniqueHandle CreateNamedEvent(const std::wstring& name)
{
    return UniqueHandle(::CreateEventW(nullptr, TRUE, FALSE, name.c_str()));
}

} // namespace

FileLockerProcess::FileLockerProcess(const std::wstring& path, DWORD access, DWORD share)
{
    static int count = 0;
    const std::wstring name =
        L"kestrovane-file-locker-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(++count);
    m_release = CreateNamedEvent(name + L"-release");
    const UniqueHandle ready = CreateNamedEvent(name + L"-ready");
    m_process = StartProgram(ProgramBesideThis(L"kestrovane-file-locker.exe"),
                             {path, std::to_wstring(access), std::to_wstring(share), name});
    if (m_process != nullptr) {
        const HANDLE either[] = {ready.get(), m_process.get()};
        EXPECT_EQ(WAIT_OBJECT_0, ::WaitForMultipleObjects(2, either, FALSE, kPatience))
            << "the second process could not open the file";
    }
}

FileLockerProcess::~FileLockerProcess()
{
    ::SetEvent(m_release.get());
    if (m_process != nullptr && ::WaitForSingleObject(m_process.get(), kPatience) != WAIT_OBJECT_0) {
        ::TerminateProcess(m_process.get(), 1);
    }
}
