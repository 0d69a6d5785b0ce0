// Creation of directories when the runtime library fails. All of these are simulations: single imports of the
// library are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/ThrowingHost.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

namespace {

int g_errnoOfChange;
DWORD g_errorOfChange;

// Lets every change of directory but the last way back fail with the errors above.
int __cdecl FailToChange(const wchar_t* /*directory*/)
{
    errno = g_errnoOfChange;
    ::SetLastError(g_errorOfChange);
    return -1;
}

int __cdecl SeemToMake(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wmkdir ") + directory);
    return 0;
}

int __cdecl FailToMake(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wmkdir ") + directory);
    errno = EACCES;
    ::SetLastError(ERROR_WRITE_PROTECT);
    return -1;
}

int __cdecl MakeAndRecord(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wmkdir ") + directory);
    return ::_wmkdir(directory);
}

int __cdecl ChangeAndRecord(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wchdir ") + directory);
    return ::_wchdir(directory);
}

int __cdecl SeemToChange(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wchdir ") + directory);
    return 0;
}

wchar_t* __cdecl FailToReadCurrentDirectory(wchar_t* /*buffer*/, int /*room*/)
{
    errno = ERANGE;
    return nullptr;
}

} // namespace

class RecursivelyCreateDirectoryFault : public ThrowingTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        CallLog::Take();
    }

    struct Outcome {
        std::string printed;
        DWORD lastError;
    };

    // What creation leaves when the directory cannot be entered in the end.
    static Outcome Unreachable(const std::wstring& path, int errnoOfChange, DWORD errorOfChange)
    {
        g_errnoOfChange = errnoOfChange;
        g_errorOfChange = errorOfChange;
        const ImportPatch unreachable("_wchdir", &FailToChange);
        CapturedOutput output;
        EXPECT_TRUE(RecursivelyCreateDirectory(path));
        const DWORD lastError = ::GetLastError();
        return {output.Text(), lastError};
    }
};

TEST_F(RecursivelyCreateDirectoryFault, EntersEachDirectoryBeforeTheNextIsMade)
{
    const std::wstring before = CurrentDirectory();
    const std::wstring& root = tree.Root();
    const std::wstring top = root.substr(0, root.rfind(L'\\'));
    {
        const ImportPatch making("_wmkdir", &MakeAndRecord);
        const ImportPatch changing("_wchdir", &ChangeAndRecord);
        EXPECT_TRUE(RecursivelyCreateDirectory(root + L"\\a"));
    }
    const StringList expected = {
        L"_wchdir C:",      L"_wmkdir " + top,           L"_wchdir " + top,           L"_wmkdir " + root,
        L"_wchdir " + root, L"_wmkdir " + root + L"\\a", L"_wchdir " + root + L"\\a", L"_wchdir " + before,
    };
    EXPECT_EQ(expected, CallLog::Take());
}

TEST_F(RecursivelyCreateDirectoryFault, SplitsOddSharePathsAtTheirServer)
{
    const struct {
        const wchar_t* path;
        StringList expected;
        const char* why;
    } cases[] = {
        {LR"(\\s\x\\)",
         {L"_wchdir \\\\s", L"_wmkdir \\\\s\\x", L"_wchdir \\\\s\\x"},
         "one backslash at the end is cut"},
        {LR"(\\\x\y)",
         {L"_wchdir \\\\", L"_wmkdir \\\\\\x", L"_wchdir \\\\\\x", L"_wmkdir \\\\\\x\\y", L"_wchdir \\\\\\x\\y"},
         "the server is empty"},
        {LR"(\\\)", {L"_wchdir \\\\"}, "nothing but an empty server"},
        {LR"(\\)", {L"_wchdir "}, "two characters are no server"},
    };
    for (const auto& [path, expected, why] : cases) {
        SCOPED_TRACE(why);
        const ImportPatch making("_wmkdir", &SeemToMake);
        const ImportPatch changing("_wchdir", &SeemToChange);
        EXPECT_TRUE(RecursivelyCreateDirectory(path));
        StringList calls = CallLog::Take();
        ASSERT_FALSE(calls.empty());
        calls.pop_back(); // the way back
        EXPECT_EQ(expected, calls);
    }
}

TEST_F(RecursivelyCreateDirectoryFault, PrintsOneOfThreeTextsByTheRuntimesError)
{
    const std::wstring path = tree.Path(L"dir");
    const struct {
        int error;
        std::string printed;
    } cases[] = {
        {ENOENT, "Unable to locate the directory: " + Utf8(path) + "\n"},
        {EINVAL, "Invalid buffer.\n"},
        {EACCES, "Unknown error.\n"},
        {0, "Unknown error.\n"},
        {ENOTDIR, "Unknown error.\n"},
    };
    for (const auto& [error, printed] : cases) {
        EXPECT_EQ(printed, Unreachable(path, error, ERROR_ACCESS_DENIED).printed) << error;
    }
}

TEST_F(RecursivelyCreateDirectoryFault, ReportsTheErrorOfTheChangeAndLeavesThatOfTheMaking)
{
    const ImportPatch unmakeable("_wmkdir", &FailToMake);
    EXPECT_EQ(DWORD{ERROR_WRITE_PROTECT}, Unreachable(tree.Path(L"dir"), EACCES, ERROR_ACCESS_DENIED).lastError);
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
}

TEST_F(RecursivelyCreateDirectoryFault, UnreachableDirectoryWithoutAnErrorIsPrintedButNotReported)
{
    const ImportPatch made("_wmkdir", &SeemToMake);
    EXPECT_EQ("Unknown error.\n", Unreachable(tree.Path(L"dir"), EACCES, ERROR_SUCCESS).printed);
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(RecursivelyCreateDirectoryFault, NoFailureStopsIt)
{
    const ImportPatch unmakeable("_wmkdir", &FailToMake);
    const CapturedOutput output;
    EXPECT_TRUE(RecursivelyCreateDirectory(LR"(C:\a\b\c)"));
    EXPECT_EQ((StringList{LR"(_wmkdir C:\a)", LR"(_wmkdir C:\a\b)", LR"(_wmkdir C:\a\b\c)"}), CallLog::Take());
}

// When all directories could be made, the error that stays is an older one, of whatever kind.
TEST_F(RecursivelyCreateDirectoryFault, LeavesAnOlderErrorWhenAllCouldBeMade)
{
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Root()));
    const ImportPatch made("_wmkdir", &SeemToMake);
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, Unreachable(tree.Path(L"dir"), EACCES, ERROR_ACCESS_DENIED).lastError)
        << "from the existing tree before";

    EXPECT_EQ(StringList(), ListDirecoriesRecursive(tree.Path(L"missing")));
    EXPECT_EQ(static_cast<DWORD>(ENOENT), Unreachable(tree.Path(L"dir"), EACCES, ERROR_ACCESS_DENIED).lastError)
        << "an errno of a listing, though no Win32 error";
}

TEST_F(RecursivelyCreateDirectoryFault, CurrentDirectoryThatTheRuntimeCannotReadIsRestoredAllTheSame)
{
    tree.File(L"file");
    const WorkingDirectory inside(tree.Directory(L"here"));
    const ImportPatch unreadable("_wgetcwd", &FailToReadCurrentDirectory);
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b)")));
    EXPECT_EQ(tree.Path(L"here"), CurrentDirectory());
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(a\b)")));
    const CapturedOutput output;
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(file\b)")));
    EXPECT_EQ(tree.Path(L"here"), CurrentDirectory());
}

// The report is written while the current directory is still another one.
TEST_F(RecursivelyCreateDirectoryFault, ExceptionOfTheHostsLoggerFindsTheCurrentDirectoryRestored)
{
    tree.File(L"file");
    const WorkingDirectory inside(tree.Directory(L"here"));
    const ThrowingHost throwing;
    const CapturedOutput output;
    for (const int line : {1, 2, 3}) {
        ThrowingHost::Throw(line, 0);
        EXPECT_THROW(RecursivelyCreateDirectory(tree.Path(LR"(file\dir)")), HostFailure) << line;
        EXPECT_EQ(tree.Path(L"here"), CurrentDirectory());
    }
}
