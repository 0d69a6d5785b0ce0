// Directory checks when Windows or the runtime library fails. All of these are simulations: single imports of the
// library are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

namespace {

int __cdecl ChangeAndRecord(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wchdir ") + directory);
    return ::_wchdir(directory);
}

int __cdecl FailToChange(const wchar_t* directory)
{
    CallLog::Add(std::wstring(L"_wchdir ") + directory);
    errno = EACCES;
    ::SetLastError(ERROR_ACCESS_DENIED);
    return -1;
}

wchar_t* __cdecl FailToReadCurrentDirectory(wchar_t* /*buffer*/, int /*room*/)
{
    errno = ERANGE;
    return nullptr;
}

} // namespace

class IsDirectoryExistsFault : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        CallLog::Take();
    }
};

TEST_F(IsDirectoryExistsFault, ChangesIntoTheNormalisedDirectoryAndBack)
{
    const std::wstring before = CurrentDirectory();
    const ImportPatch recorded("_wchdir", &ChangeAndRecord);
    for (const std::wstring& name : {tree.Root(), tree.Path(L"missing")}) {
        isDirectoryExists(name);
        EXPECT_EQ((StringList{L"_wchdir " + name + L"\\", L"_wchdir " + before}), CallLog::Take());
    }
}

TEST_F(IsDirectoryExistsFault, DirectoryThatMayNotBeEnteredDoesNotExist)
{
    const ImportPatch denied("_wchdir", &FailToChange);
    errno = 0;
    EXPECT_FALSE(isDirectoryExists(tree.Root()));
    EXPECT_EQ(EACCES, errno);
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(2U, CallLog::Take().size()) << "the way back is tried all the same";
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsDirectoryExistsFault, WayBackLeavesTheErrorsOfTheAttempt)
{
    const ImportPatch spoiling(
        "_wchdir", +[](const wchar_t* directory) {
            const int result = ::_wchdir(directory);
            if (result == 0) {
                errno = EIO;
                ::SetLastError(ERROR_GEN_FAILURE);
            }
            return result;
        });
    EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
}

TEST_F(IsDirectoryExistsFault, CurrentDirectoryThatTheRuntimeCannotReadIsRestoredAllTheSame)
{
    const WorkingDirectory inside(tree.Directory(L"here"));
    const ImportPatch unreadable("_wgetcwd", &FailToReadCurrentDirectory);
    ::SetLastError(ERROR_INVALID_DATA);
    EXPECT_TRUE(isDirectoryExists(tree.Root()));
    EXPECT_EQ(tree.Path(L"here"), CurrentDirectory());
    EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
    EXPECT_EQ(tree.Path(L"here"), CurrentDirectory());
}

TEST_F(IsDirectoryExistsFault, UnreadableCurrentDirectoryIsNotChanged)
{
    const WorkingDirectory inside(tree.Root());
    const ImportPatch unreadable("_wgetcwd", &FailToReadCurrentDirectory);
    const ImportPatch recorded("_wchdir", &ChangeAndRecord);
    EXPECT_TRUE(isDirectoryExists(tree.Root()));
    EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
    EXPECT_FALSE(isDirectoryExists(tree.File(L"file")));
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b)")));
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(a\b)")));
    EXPECT_EQ(StringList{}, CallLog::Take());
}
