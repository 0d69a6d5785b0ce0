// Whether a directory can be entered, and whether its DACL grants reading and writing.

#include "tests/support/Dacl.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <cerrno>

namespace {

std::wstring WithForwardSlashes(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

} // namespace

class IsDirectoryExistsTest : public LibraryTest {};

TEST_F(IsDirectoryExistsTest, TellsDirectoriesFromEverythingElse)
{
    const std::wstring directory = tree.Directory(L"dir");
    const std::wstring file = tree.File(L"file.txt");
    const struct {
        std::wstring path;
        bool exists;
        const char* why;
    } cases[] = {
        {directory, true, "a directory"},
        {directory + L"\\", true, "its trailing backslash changes nothing"},
        {WithForwardSlashes(directory), true, "forward slashes are separators, too"},
        {WithForwardSlashes(directory) + L"/", true, "also at the end"},
        {tree.Root() + LR"(\\dir)", true, "doubled backslashes count as one"},
        {tree.Path(L"DIR"), true, "names have no case"},
        {file, false, "a file cannot be entered"},
        {file + L"\\", false, "not even with a backslash"},
        {tree.Path(L"missing"), false, "nothing there"},
        {tree.Path(LR"(missing\below)"), false, "not even the parent"},
        {LR"(\\?\)" + directory, true, "the extended-length form"},
        {LR"(\\?\)" + file, false, "the extended-length form of a file"},
        {L"C:\\", true, "the root of a volume"},
        {L"C:", true, "a drive is taken as its root"},
        {L"D:\\", true, "the root of another volume"},
        {L"Q:\\", false, "a drive that does not exist"},
    };
    for (const auto& [path, exists, why] : cases) {
        EXPECT_EQ(exists, isDirectoryExists(path)) << Utf8(path) << ": " << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsDirectoryExistsTest, TakesRelativePathsFromTheCurrentDirectory)
{
    tree.Directory(LR"(dir\sub)");
    tree.Directory(L"beside");
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_TRUE(isDirectoryExists(L"sub"));
    EXPECT_TRUE(isDirectoryExists(L"."));
    EXPECT_TRUE(isDirectoryExists(LR"(..\..\)"));
    EXPECT_FALSE(isDirectoryExists(L"beside"));
    EXPECT_TRUE(isDirectoryExists(tree.Root().substr(2))) << "rooted: on the current drive";
    EXPECT_EQ(tree.Path(L"dir"), CurrentDirectory());
}

TEST_F(IsDirectoryExistsTest, EntersDirectoriesOfShares)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const std::wstring file = share.File(LR"(sub\file)");
    EXPECT_TRUE(isDirectoryExists(share.Path(L"sub")));
    EXPECT_TRUE(isDirectoryExists(WithForwardSlashes(share.Path(L"sub"))));
    EXPECT_TRUE(isDirectoryExists(LR"(\\alpha\data)"));
    EXPECT_FALSE(isDirectoryExists(file));
    EXPECT_FALSE(isDirectoryExists(LR"(\\alpha\nodata)"));
}

TEST_F(IsDirectoryExistsTest, RestoresTheCurrentDirectoryFromAndToEveryVolume)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const TestDirectory other(L"D:\\");
    const std::wstring places[] = {tree.Root(), other.Root(), share.Root(), L"C:\\", L"D:\\"};
    for (const std::wstring& from : places) {
        const WorkingDirectory inside(from);
        const std::wstring before = CurrentDirectory();
        for (const std::wstring& to : places) {
            EXPECT_TRUE(isDirectoryExists(to)) << Utf8(to);
            EXPECT_EQ(before, CurrentDirectory()) << Utf8(to);
        }
        EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
        EXPECT_EQ(before, CurrentDirectory());
    }
}

// The runtime's own buffer for the current directory is too small for this one.
TEST_F(IsDirectoryExistsTest, RestoresACurrentDirectoryOfMoreThan260Characters)
{
    std::wstring deep = tree.Root();
    for (int level = 0; level < 6; ++level) {
        deep += L'\\' + std::wstring(50, L'd');
    }
    tree.Directory(deep.substr(tree.Root().size() + 1));
    const WorkingDirectory inside(deep);
    const std::wstring before = CurrentDirectory();
    ASSERT_LT(300U, before.size());
    EXPECT_TRUE(isDirectoryExists(tree.Root()));
    EXPECT_EQ(before, CurrentDirectory());
    EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
    EXPECT_EQ(before, CurrentDirectory());
}

TEST_F(IsDirectoryExistsTest, LeavesTheErrorsOfTheAttempt)
{
    const std::wstring file = tree.File(L"file");
    errno = 0;
    EXPECT_FALSE(isDirectoryExists(tree.Path(L"missing")));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    errno = 0;
    EXPECT_FALSE(isDirectoryExists(file));
    EXPECT_EQ(EINVAL, errno);
    EXPECT_NE(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
}

TEST_F(IsDirectoryExistsTest, EmptyPathIsReportedWhenThereIsAnErrorToReport)
{
    EXPECT_FALSE(isDirectoryExists(L""));
    EXPECT_EQ(StringList(), host.Lines()) << "no error, no report";
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isDirectoryExists(L""));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.LinesAt(0));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(IsDirectoryExistsTest, RejectedPathIsReportedOnce)
{
    for (const wchar_t* name : {L"a*b", L"a?b", L"a:b", LR"(a*\b)"}) {
        host.Clear();
        ::SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_FALSE(isDirectoryExists(tree.Path(name))) << Utf8(name);
        EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines()) << Utf8(name);
    }
}

TEST_F(IsDirectoryExistsTest, DoesNotValidateShares)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isDirectoryExists(LR"(\\alpha\data\a*b)"));
    EXPECT_EQ(StringList(), host.Lines());
}

class IsDirectoryReadWritableTest : public LibraryTest {};

TEST_F(IsDirectoryReadWritableTest, IsTrueForWhatTheUserMayReadAndWrite)
{
    const TestDirectory other(L"D:\\");
    EXPECT_TRUE(isDirectoryReadWritable(tree.Root()));
    EXPECT_TRUE(isDirectoryReadWritable(tree.Root() + L"\\"));
    EXPECT_TRUE(isDirectoryReadWritable(WithForwardSlashes(tree.Root())));
    EXPECT_TRUE(isDirectoryReadWritable(tree.File(L"file"))) << "files have DACLs, too";
    EXPECT_TRUE(isDirectoryReadWritable(other.Root()));
}

TEST_F(IsDirectoryReadWritableTest, IsFalseForADirectoryThatGrantsReadingAlone)
{
    const std::wstring directory = tree.Directory(L"dir");
    SetDacl(directory, kEveryoneMayRead);
    EXPECT_FALSE(isDirectoryReadWritable(directory));
    SetDacl(directory, kEveryoneMayAll);
    EXPECT_TRUE(isDirectoryReadWritable(directory));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsDirectoryReadWritableTest, IsFalseWithoutALogLineForWhatCannotBeQueried)
{
    EXPECT_FALSE(isDirectoryReadWritable(tree.Path(L"missing")));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    EXPECT_FALSE(isDirectoryReadWritable(tree.Path(L"a*b"))) << "the path is not validated, but Windows rejects it";
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsDirectoryReadWritableTest, TakesRelativePathsAsWindowsDoes)
{
    tree.Directory(L"dir");
    const WorkingDirectory inside(tree.Root());
    EXPECT_TRUE(isDirectoryReadWritable(L"dir"));
    EXPECT_TRUE(isDirectoryReadWritable(LR"(dir\..\dir)"));
    EXPECT_FALSE(isDirectoryReadWritable(L"missing"));
}

TEST_F(IsDirectoryReadWritableTest, EmptyPathIsReportedWhenThereIsAnErrorToReport)
{
    EXPECT_FALSE(isDirectoryReadWritable(L""));
    EXPECT_EQ(StringList(), host.Lines());
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isDirectoryReadWritable(L""));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.LinesAt(0));
}
