// The fixture of the owner change's tests, and what the host and the system see of each step.

#pragma once

#include "tests/support/LibraryTest.h"
#include "tests/support/SecurityCalls.h"

#include <algorithm>

using Events = std::vector<HostEvent>;

inline const std::wstring kAccount = L"SYSTEM";
inline const std::wstring kAccountSid = L"S-1-5-18";
inline const std::wstring kUnknownAccount = L"no-account-of-this-machine";
constexpr int kOwnerAndAccessList = 5;

inline HostEvent Progress(const char* format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 2, format, text};
}

inline HostEvent Detail(const char* format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 0, format, text};
}

inline HostEvent KeepAlive(int seconds)
{
    return {HostEvent::Kind::kKeepAlive, seconds, {}, {}};
}

inline HostEvent Call(const std::wstring& text)
{
    return SecurityCalls::Call(text);
}

inline HostEvent ClockLine(int ticks)
{
    return Detail("clock ticks = %d, CLOCKS_PER_SEC = %d, timeout = %d",
                  L"clock ticks = " + std::to_wstring(ticks) + L", CLOCKS_PER_SEC = 1000, timeout = 570");
}

inline HostEvent SendKaLine()
{
    return Progress("%s::%d::%s\n", L"frame/FileManager.cpp::154::SendKA\n");
}

inline HostEvent SidLine(const std::wstring& account)
{
    return Progress("Getting SID for user %S.\n", L"Getting SID for user " + account + L".\n");
}

inline HostEvent ReadLine(const std::wstring& path)
{
    return Progress("Getting DACL for file/folder %S.\n", L"Getting DACL for file/folder " + path + L".\n");
}

inline HostEvent ModifyLine(const std::wstring& account)
{
    return Progress("Modifying DACL to include new ACE for user %S.\n",
                    L"Modifying DACL to include new ACE for user " + account + L".\n");
}

inline HostEvent SuccessLine()
{
    return Progress("Successfully modified DACL.\n", L"Successfully modified DACL.\n");
}

inline Events operator+(Events first, const Events& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The steps of one object, each with its calls and its clean-up.
inline Events UpToSid(const std::wstring& account)
{
    return {ClockLine(0), SidLine(account), Call(L"LookupAccountNameW(" + account + L", sizes)"),
            Call(L"LookupAccountNameW(" + account + L", SID)"), Call(L"free(domain)")};
}

inline Events UpToList(const std::wstring& path, const std::wstring& account)
{
    return UpToSid(account) + Events{ReadLine(path), Call(L"GetNamedSecurityInfoW(" + path + L")")};
}

inline Events UpToNewList(const std::wstring& path, const std::wstring& account)
{
    return UpToList(path, account) + Events{ModifyLine(account), Call(L"SetEntriesInAclW()")};
}

inline Events UpToWrite(const std::wstring& path, const std::wstring& account)
{
    return UpToNewList(path, account) + Events{KeepAlive(10800), Call(L"SetNamedSecurityInfoW(" + path + L")")};
}

inline Events UpToSecondList(const std::wstring& path, const std::wstring& account)
{
    return UpToWrite(path, account) +
           Events{SuccessLine(),      KeepAlive(600), Call(L"LocalFree(new list)"),
                  Call(L"free(SID)"), ReadLine(path), Call(L"GetNamedSecurityInfoW(" + path + L")")};
}

inline Events ChangedObject(const std::wstring& path, const std::wstring& account = kAccount)
{
    return UpToSecondList(path, account) + Events{Call(L"PathIsDirectoryW(" + path + L")")};
}

inline Events OpenedFolder(const std::wstring& path)
{
    // The first two entries are the folder itself and its parent.
    return {Call(L"FindFirstFileW(" + path + L"\\*.*)"), Call(L"FindNextFileW()"), Call(L"FindNextFileW()")};
}

inline Events ClosedFolder()
{
    return {Call(L"FindClose()")};
}

inline Events NextEntry()
{
    return {Call(L"FindNextFileW()")};
}

class ChangeObjectOwnerTest : public LibraryTest {
protected:
    void TearDown() override
    {
        EXPECT_TRUE(calls.HoldsNothing()) << "something was not freed";
        EXPECT_EQ(0, host.AuxCalls());
        LibraryTest::TearDown();
    }

    [[nodiscard]] StringList WrittenPaths() const
    {
        StringList paths;
        for (const SecurityWrite& write : calls.Writes()) {
            paths.push_back(write.path);
        }
        return paths;
    }

    SecurityCalls calls{host};
};

// What only failures and a clock of the test's own show.
class ChangeObjectOwnerSimulation : public ChangeObjectOwnerTest {};
