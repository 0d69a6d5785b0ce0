// The file manager's error state, which only the library itself can see.

#include "frame/FileManager.h"
#include "frame/LogSinks.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <cstdarg>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string>
#include <type_traits>
#include <vector>

namespace {

using quorvantavss::CVssFileManager;

std::vector<std::string> g_lines;

int __cdecl KeepLine(int level, const char* format, ...)
{
    char line[512] = {};
    va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(line, sizeof(line), format, arguments));
    va_end(arguments);
    g_lines.push_back(std::to_string(level) + line);
    return 0;
}

int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// The object's memory as the interface lays it down.
struct ManagerLayout {
    const void* virtualTable;
    std::wstring errorText;
    VssFileManagerLogFn logger;
    VssFileManagerLogFn auxLogger;
    VssFileManagerKeepAliveFn keepAlive;
    std::int32_t keepAliveStamp;
    std::int32_t lastError;
};
static_assert(sizeof(ManagerLayout) == sizeof(CVssFileManager));

const ManagerLayout& LayoutOf(const CVssFileManager& manager)
{
    return reinterpret_cast<const ManagerLayout&>(manager);
}

// Where a virtual function is in the table: the ABI keeps the offset, plus 1, in a pointer to it.
template <typename Function>
std::size_t SlotOf(Function function)
{
    std::uintptr_t value = 0;
    std::memcpy(&value, &function, sizeof(value));
    return (value - 1) / sizeof(void*);
}

class FileManagerErrors : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_lines.clear();
        manager.SetHostFunctions(&KeepLine, &NullKeepAlive, &PlainLogSink);
    }

    CVssFileManager manager;
};

} // namespace

TEST(CVssFileManager, HasVirtualFunctionsButNoVirtualDestructor)
{
    EXPECT_TRUE(std::is_polymorphic_v<CVssFileManager>);
    EXPECT_FALSE(std::has_virtual_destructor_v<CVssFileManager>);
}

TEST(CVssFileManager, KeepsTheOrderOfItsVirtualFunctions)
{
    EXPECT_EQ(0U, SlotOf(&CVssFileManager::GetErrorText));
    EXPECT_EQ(1U, SlotOf(&CVssFileManager::SetErrnoError));
    EXPECT_EQ(2U, SlotOf(&CVssFileManager::ReportLastError));
}

TEST(CVssFileManager, StartsWithoutAnErrorAndWithTheBuiltInSinks)
{
    const std::int32_t before = std::clock();
    const CVssFileManager manager;
    const ManagerLayout& layout = LayoutOf(manager);
    EXPECT_EQ(L"", layout.errorText);
    EXPECT_EQ(&DefaultLogSink, layout.logger);
    EXPECT_EQ(&PlainLogSink, layout.auxLogger);
    EXPECT_EQ(&NullKeepAlive, layout.keepAlive);
    EXPECT_LE(before, layout.keepAliveStamp);
    EXPECT_GE(std::clock(), layout.keepAliveStamp);
    EXPECT_EQ(0, layout.lastError);
}

TEST(CVssFileManager, TakesTheHostsFunctionsAndKeepsItsStamp)
{
    CVssFileManager manager;
    const std::int32_t stamp = LayoutOf(manager).keepAliveStamp;
    ::Sleep(5);
    manager.SetHostFunctions(&KeepLine, &KeepAlive, &DefaultLogSink);
    EXPECT_EQ(&KeepLine, LayoutOf(manager).logger);
    EXPECT_EQ(&KeepAlive, LayoutOf(manager).keepAlive);
    EXPECT_EQ(&DefaultLogSink, LayoutOf(manager).auxLogger);
    EXPECT_EQ(stamp, LayoutOf(manager).keepAliveStamp);
}

TEST(SetErrnoError, WithoutASubjectHasNoTrailingBlank)
{
    quorvantavss::CVssFileManager manager;
    manager.SetErrnoError(2, L"");
    EXPECT_EQ(L"errno: 2", manager.GetErrorText());
}

TEST_F(FileManagerErrors, SetErrnoErrorPutsOneBlankBeforeTheSubject)
{
    struct Case {
        std::int32_t code;
        std::wstring subject;
        std::wstring text;
        const char* why;
    };
    const Case cases[] = {
        {13, LR"(C:\dir\f.txt)", LR"(errno: 13 C:\dir\f.txt)", "a path"},
        {2, L"  x", L"errno: 2   x", "blanks of the subject stay"},
        {2, L" ", L"errno: 2  ", "a blank is a subject"},
        {0, L"x", L"errno: 0 x", "no error number is an error number"},
        {-1, L"x", L"errno: -1 x", "negative"},
        {INT32_MIN, L"%s%d", L"errno: -2147483648 %s%d", "the subject is no format"},
        {22, std::wstring(40000, L'n'), L"errno: 22 " + std::wstring(40000, L'n'), "longer than any buffer"},
        {22, std::wstring(L"a\0b", 3), std::wstring(L"errno: 22 a\0b", 13), "with an embedded NUL"},
    };
    for (const auto& [code, subject, text, why] : cases) {
        manager.SetErrnoError(code, subject);
        EXPECT_EQ(text, manager.GetErrorText()) << why;
        EXPECT_EQ(code, LayoutOf(manager).lastError) << why;
    }
    EXPECT_TRUE(g_lines.empty()) << "recording logs nothing";
}

TEST_F(FileManagerErrors, SetErrnoErrorTakesItsOwnTextAsSubject)
{
    manager.SetErrnoError(2, L"a");
    manager.SetErrnoError(3, manager.GetErrorText());
    EXPECT_EQ(L"errno: 3 errno: 2 a", manager.GetErrorText());
}

TEST_F(FileManagerErrors, GetErrorTextGivesACopy)
{
    manager.SetErrnoError(2, L"a");
    auto&& text = manager.GetErrorText();
    text += L"more";
    EXPECT_EQ(L"errno: 2 a", manager.GetErrorText());
}

TEST_F(FileManagerErrors, ReportLastErrorReplacesTheTextAndKeepsBothCodes)
{
    manager.SetErrnoError(13, L"a");
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    manager.ReportLastError();
    EXPECT_EQ(L"CVssFileManager call failed", manager.GetErrorText());
    EXPECT_EQ(13, LayoutOf(manager).lastError);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    ASSERT_LE(2U, g_lines.size());
    EXPECT_EQ("0   - : 2\n", g_lines[0]);
    EXPECT_EQ("0   - Returned HRESULT = 0x80070002\n", g_lines[1]);
}

TEST_F(FileManagerErrors, ReportLastErrorDoesNothingWithoutALastError)
{
    manager.SetErrnoError(13, L"a");
    ::SetLastError(ERROR_SUCCESS);
    manager.ReportLastError();
    EXPECT_EQ(L"errno: 13 a", manager.GetErrorText());
    EXPECT_TRUE(g_lines.empty());
}

TEST_F(FileManagerErrors, HoldOnlyTheLatestFailure)
{
    ::SetLastError(ERROR_FILE_NOT_FOUND);
    manager.ReportLastError();
    manager.SetErrnoError(2, L"a");
    EXPECT_EQ(L"errno: 2 a", manager.GetErrorText());
    manager.SetErrnoError(17, L"");
    EXPECT_EQ(L"errno: 17", manager.GetErrorText());
    EXPECT_EQ(17, LayoutOf(manager).lastError);
}

TEST_F(FileManagerErrors, TheNextOperationClearsTheTextAndNotTheCode)
{
    manager.SetErrnoError(17, L"a");
    EXPECT_TRUE(manager.isDirectoryExists(LR"(C:\)"));
    EXPECT_EQ(L"", manager.GetErrorText());
    EXPECT_EQ(17, LayoutOf(manager).lastError);
}

TEST_F(FileManagerErrors, ARejectedPathIsReportedByItsValidation)
{
    std::wstring path = LR"(C:\a*b)";
    ::SetLastError(ERROR_SHARING_VIOLATION);
    EXPECT_FALSE(manager.ValidatePath(path));
    EXPECT_EQ(L"CVssFileManager call failed", manager.GetErrorText());
    ASSERT_FALSE(g_lines.empty());
    EXPECT_EQ("0   - : 32\n", g_lines[0]);
}

TEST_F(FileManagerErrors, AFailureOfTheRuntimeIsRecordedWithItsSubject)
{
    const std::wstring missing = LR"(C:\kestrovane-missing)";
    EXPECT_TRUE(manager.ListFiles(missing, L"*", false).empty());
    EXPECT_EQ(L"errno: 2 " + missing, manager.GetErrorText());
    EXPECT_EQ(ENOENT, LayoutOf(manager).lastError);
    EXPECT_TRUE(g_lines.empty());
}
