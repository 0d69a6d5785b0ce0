// Runs of the agent in which one call of Windows fails.

#include "tests/support/AgentFaults.h"

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

#include <sstream>

namespace {

constexpr std::uintptr_t kFalse = 0;
constexpr std::uintptr_t kMinusOne = ~std::uintptr_t{0}; // INVALID_HANDLE_VALUE
constexpr std::uintptr_t kUnsuccessful = 0xC0000001;     // STATUS_UNSUCCESSFUL

constexpr FailingAgentCall kFailing[] = {
    {"ConvertSecurityDescriptorToStringSecurityDescriptorW", kFalse, ERROR_INVALID_SECURITY_DESCR},
    {"ConvertStringSecurityDescriptorToSecurityDescriptorW", kFalse, ERROR_INVALID_ACL},
    {"GetFileSecurityW", kFalse, ERROR_ACCESS_DENIED},
    {"LookupAccountNameW", kFalse, ERROR_NONE_MAPPED},
    {"RegDeleteKeyValueW", ERROR_ACCESS_DENIED, 0},
    {"RegGetValueW", ERROR_ACCESS_DENIED, 0},
    {"RegSetKeyValueW", ERROR_ACCESS_DENIED, 0},
    {"SetFileSecurityW", kFalse, ERROR_ACCESS_DENIED},

    {"BCryptOpenAlgorithmProvider", kUnsuccessful, 0},
    {"BCryptCreateHash", kUnsuccessful, 0},
    {"BCryptHashData", kUnsuccessful, 0},
    {"BCryptFinishHash", kUnsuccessful, 0},

    {"CommandLineToArgvW", kFalse, ERROR_NOT_ENOUGH_MEMORY},
    {"CreateDirectoryW", kFalse, ERROR_ACCESS_DENIED},
    {"CreateFileW", kMinusOne, ERROR_ACCESS_DENIED},
    {"CreateHardLinkW", kFalse, ERROR_TOO_MANY_LINKS},
    {"DeleteFileW", kFalse, ERROR_ACCESS_DENIED},
    {"DuplicateHandle", kFalse, ERROR_ACCESS_DENIED},
    {"FileTimeToSystemTime", kFalse, ERROR_INVALID_PARAMETER},
    {"FindFirstFileExW", kMinusOne, ERROR_ACCESS_DENIED},
    {"FindFirstFileW", kMinusOne, ERROR_ACCESS_DENIED},
    {"FindFirstStreamW", kMinusOne, ERROR_ACCESS_DENIED},
    {"FindNextFileW", kFalse, ERROR_UNEXP_NET_ERR},
    {"FindNextStreamW", kFalse, ERROR_UNEXP_NET_ERR},
    {"FlushFileBuffers", kFalse, ERROR_IO_DEVICE},
    {"FormatMessageW", 0, ERROR_MR_MID_NOT_FOUND},
    {"GetConsoleMode", kFalse, ERROR_INVALID_HANDLE},
    {"GetDiskFreeSpaceExW", kFalse, ERROR_PATH_NOT_FOUND},
    {"GetDriveTypeW", DRIVE_NO_ROOT_DIR, 0},
    {"GetEnvironmentVariableW", 0, ERROR_ENVVAR_NOT_FOUND},
    {"GetFileAttributesExW", kFalse, ERROR_ACCESS_DENIED},
    {"GetFileInformationByHandle", kFalse, ERROR_INVALID_FUNCTION},
    {"GetFileSizeEx", kFalse, ERROR_INVALID_HANDLE},
    {"GetFinalPathNameByHandleW", 0, ERROR_NOT_ENOUGH_MEMORY},
    {"GetFullPathNameW", 0, ERROR_INVALID_NAME},
    {"GetTempPathW", 0, ERROR_FILENAME_EXCED_RANGE},
    {"GetVolumeNameForVolumeMountPointW", kFalse, ERROR_NOT_A_REPARSE_POINT},
    {"GetVolumePathNameW", kFalse, ERROR_FILENAME_EXCED_RANGE},
    {"GetWindowsDirectoryW", 0, ERROR_NOT_ENOUGH_MEMORY},
    {"LCMapStringEx", 0, ERROR_INVALID_PARAMETER},
    {"MoveFileExW", kFalse, ERROR_ACCESS_DENIED},
    {"MultiByteToWideChar", 0, ERROR_NO_UNICODE_TRANSLATION},
    {"ReadFile", kFalse, ERROR_CRC},
    {"RemoveDirectoryW", kFalse, ERROR_DIR_NOT_EMPTY},
    {"SetConsoleCtrlHandler", kFalse, ERROR_INVALID_PARAMETER},
    {"SetFileAttributesW", kFalse, ERROR_ACCESS_DENIED},
    {"SetFileInformationByHandle", kFalse, ERROR_ACCESS_DENIED},
    {"WideCharToMultiByte", 0, ERROR_NO_UNICODE_TRANSLATION},
    {"WriteConsoleW", kFalse, ERROR_INVALID_HANDLE},
    {"WriteFile", kFalse, ERROR_DISK_FULL},
};

constexpr const char* kSound[] = {
    // They close something.
    "BCryptCloseAlgorithmProvider", "BCryptDestroyHash", "CloseHandle", "FindClose", "LocalFree",
    // They have no failing result, or fail for wrong arguments alone.
    "CompareStringOrdinal", "GetCommandLineW", "GetCurrentProcess", "GetLastError", "GetStdHandle",
    "GetSystemTimeAsFileTime", "GetTickCount64", "SetLastError", "Sleep",
    // The runtime calls them, mostly at the start.
    "DeleteCriticalSection", "EnterCriticalSection", "GetStartupInfoA", "InitializeCriticalSection", "IsDBCSLeadByteEx",
    "LeaveCriticalSection", "SetUnhandledExceptionFilter", "TlsGetValue", "VirtualProtect", "VirtualQuery",
    "__C_specific_handler"};

std::string JoinedNames()
{
    std::string names;
    for (const FailingAgentCall& call : kFailing) {
        names += std::string(call.name) + " ";
    }
    return names;
}

std::string Plan(const PlannedAgentFailure& failure)
{
    const FailingAgentCall& call = kFailing[failure.import];
    std::ostringstream plan;
    plan << failure.import << ' ' << failure.first << ' ' << failure.last << ' ' << call.result << ' '
         << call.lastError;
    return plan.str();
}

void ReadCounts(const std::string& text, AgentFaultRun& run)
{
    std::istringstream words(text);
    run.calls.resize(std::size(kFailing));
    for (int& calls : run.calls) {
        words >> calls;
    }
    for (std::string name; words >> name;) {
        run.others.push_back(name);
    }
}

} // namespace

std::span<const FailingAgentCall> FailingAgentCalls()
{
    return kFailing;
}

std::span<const char* const> SoundAgentCalls()
{
    return kSound;
}

AgentFaultRun RunAgentWithout(const PlannedAgentFailure* failure, const std::vector<std::wstring>& arguments)
{
    const std::string counts = "C:\\windows\\temp\\agent-calls-" + std::to_string(::GetCurrentProcessId());
    ::SetEnvironmentVariableA("KESTROVANE_COUNTS", counts.c_str());
    ::SetEnvironmentVariableA("KESTROVANE_CALLS", JoinedNames().c_str());
    ::SetEnvironmentVariableA("KESTROVANE_FAILING", failure == nullptr ? nullptr : Plan(*failure).c_str());
    AgentFaultRun run;
    run.result = AgentProcess(arguments, BesideTheAgent(L"kestrovane-failing-calls.dll")).Wait();
    const std::wstring file(counts.begin(), counts.end());
    ReadCounts(ReadFileBytes(file), run);
    EXPECT_TRUE(::DeleteFileW(file.c_str())) << "the agent has not come to its end";
    return run;
}
