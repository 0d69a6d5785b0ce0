// The report of the Win32 deleter: log line, then the thread's last error, then the report.

#include "tests/fileops/TreeDeletionFixture.h"

#include "tests/support/SilentHost.h"

#include <cstdarg>

namespace {

constexpr DWORD kHostError = 1234;

int g_lines = 0;
int g_reportedCode = 0;

// A logger that changes the thread's last error at each line.
int __cdecl LogAndChangeLastError(int /*level*/, const char* format, ...)
{
    ++g_lines;
    if (std::string(format) == "%S call failed: %d\n") {
        va_list arguments;
        va_start(arguments, format);
        static_cast<void>(va_arg(arguments, const wchar_t*));
        g_reportedCode = va_arg(arguments, int);
        va_end(arguments);
    }
    ::SetLastError(kHostError);
    return 0;
}

int g_localFrees = 0;

HLOCAL WINAPI CountLocalFree(HLOCAL memory)
{
    ++g_localFrees;
    return ::LocalFree(memory);
}

DWORD WINAPI FormatNothing(DWORD /*flags*/, const void* /*source*/, DWORD /*message*/, DWORD /*language*/,
                           wchar_t* /*buffer*/, DWORD /*size*/, va_list* /*arguments*/)
{
    return 0;
}

} // namespace

TEST_F(DeleteDirectoryRecursiveTest, LoggerThatChangesTheLastErrorChangesTheReport)
{
    const std::wstring file = tree.File(LR"(top\sub\file)");
    ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
    g_lines = 0;
    g_reportedCode = 0;
    SetVssFileManagerLogger(&LogAndChangeLastError, &SilentKeepAlive, &SilentLog);
    g_lines = 0;
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(LR"(top\sub)").c_str()));
    EXPECT_EQ(static_cast<int>(kHostError), g_reportedCode);
    EXPECT_LE(4, g_lines);
}

TEST_F(DeleteDirectoryRecursiveTest, FreesTheSystemMessageOnlyIfThereIsOne)
{
    const std::wstring file = tree.File(LR"(top\file)");
    ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
    const ImportPatch counted("LocalFree", &CountLocalFree);
    g_localFrees = 0;
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(1, g_localFrees);
    const ImportPatch without("FormatMessageW", &FormatNothing);
    g_localFrees = 0;
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(0, g_localFrees);
}

// The other report, that of the file manager, calls LocalFree in any case.
TEST_F(DeleteDirectoryRecursiveTest, FailureReportOfTheFileManagerAlwaysCallsLocalFree)
{
    const ImportPatch counted("LocalFree", &CountLocalFree);
    const ImportPatch without("FormatMessageW", &FormatNothing);
    g_localFrees = 0;
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isDirectoryExists(L""));
    EXPECT_EQ(1, g_localFrees);
}
