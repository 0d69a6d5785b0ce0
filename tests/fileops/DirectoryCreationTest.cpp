// Creation of a directory with all its missing parents.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

class RecursivelyCreateDirectoryTest : public LibraryTest {
protected:
    // The directories that creation tries to make, in order, while they are really made.
    static StringList Made(const std::wstring& path)
    {
        CallLog::Take();
        const ImportPatch recorded(
            "_wmkdir", +[](const wchar_t* directory) {
                CallLog::Add(directory);
                return ::_wmkdir(directory);
            });
        EXPECT_TRUE(RecursivelyCreateDirectory(path));
        return CallLog::Take();
    }

    // The same when every directory seems to have been made.
    static StringList MadeInSimulation(const std::wstring& path)
    {
        CallLog::Take();
        const ImportPatch recorded(
            "_wmkdir", +[](const wchar_t* directory) {
                CallLog::Add(directory);
                return 0;
            });
        const CapturedOutput output; // that the directory is not there in the end
        EXPECT_TRUE(RecursivelyCreateDirectory(path));
        return CallLog::Take();
    }
};

TEST_F(RecursivelyCreateDirectoryTest, MakesAllMissingParents)
{
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b\c)")));
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(a\b\c)")));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(RecursivelyCreateDirectoryTest, TakesEverySpellingOfAPath)
{
    std::wstring slashes = tree.Path(L"slashes/x/");
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    const struct {
        std::wstring path;
        std::wstring made;
        const char* why;
    } cases[] = {
        {tree.Path(LR"(end\x\)"), tree.Path(LR"(end\x)"), "a trailing backslash"},
        {slashes, tree.Path(LR"(slashes\x)"), "forward slashes"},
        {tree.Path(LR"(doubled\\x)"), tree.Path(LR"(doubled\x)"), "a doubled backslash"},
        {tree.Path(LR"(dots.d\x.y.z)"), tree.Path(LR"(dots.d\x.y.z)"), "names with extensions"},
        {LR"(\\?\)" + tree.Path(LR"(long\x)"), tree.Path(LR"(long\x)"), "the extended-length form"},
        {tree.Path(L"\u00e9t\u00e9\\\u0416\\\U0001F600"), tree.Path(L"\u00e9t\u00e9\\\u0416\\\U0001F600"),
         "names of all scripts"},
    };
    for (const auto& [path, made, why] : cases) {
        EXPECT_TRUE(RecursivelyCreateDirectory(path)) << why;
        EXPECT_TRUE(IsDirectory(made)) << why;
    }
}

TEST_F(RecursivelyCreateDirectoryTest, TakesRelativePathsFromTheCurrentDirectory)
{
    tree.Directory(L"dir");
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_TRUE(RecursivelyCreateDirectory(LR"(new\x)"));
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(dir\new\x)")));
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(L"rooted").substr(2)));
    EXPECT_TRUE(IsDirectory(tree.Path(L"rooted")));
}

// The trailing backslash that normalisation adds leaves no last part that could be kept.
TEST_F(RecursivelyCreateDirectoryTest, ReducesAPathWithStepsUpToTheAncestor)
{
    tree.Directory(L"dir");
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_TRUE(RecursivelyCreateDirectory(LR"(..\new)"));
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
    EXPECT_EQ(tree.Path(L"dir"), CurrentDirectory());
}

TEST_F(RecursivelyCreateDirectoryTest, WorksOnASecondVolume)
{
    const TestDirectory other(L"D:\\");
    EXPECT_TRUE(RecursivelyCreateDirectory(other.Path(LR"(a\b)")));
    EXPECT_TRUE(IsDirectory(other.Path(LR"(a\b)")));
}

TEST_F(RecursivelyCreateDirectoryTest, OnAShareTriesTheShareItselfFirst)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const std::wstring& root = share.Root();
    const std::wstring top = root.substr(0, root.rfind(L'\\'));
    const StringList expected = {LR"(\\alpha\data)", top, root, root + LR"(\x)", root + LR"(\x\y)"};
    EXPECT_EQ(expected, Made(root + LR"(\x\y)"));
    EXPECT_TRUE(IsDirectory(root + LR"(\x\y)"));
    EXPECT_EQ(StringList(), host.Lines());
}

// What is made, and from where on, for paths that no test may make for real.
TEST_F(RecursivelyCreateDirectoryTest, BeginsBelowTheDriveOrTheServer)
{
    const WorkingDirectory inside(tree.Root());
    const struct {
        const wchar_t* path;
        StringList made;
        const char* why;
    } cases[] = {
        {LR"(C:\)", {}, "a root has nothing to make"},
        {LR"(C:)", {}, "nor has a drive alone"},
        {LR"(\\server)", {}, "nor has a server"},
        {LR"(\\server\share)", {LR"(\\server\share)"}, "a share is tried like a directory"},
        {LR"(//server/share/a)", {LR"(\\server\share)", LR"(\\server\share\a)"}, "a share with forward slashes"},
        {LR"(C:a\b)", {LR"(C:\a)", LR"(C:\a\b)"}, "a drive's own current directory does not count"},
        {LR"(C:\a\\b)", {LR"(C:\a)", LR"(C:\a\)", LR"(C:\a\\b)"}, "an empty component is tried, too"},
        {LR"(C:\\a\b)", {LR"(\\a\b)"}, "two backslashes begin a server, also after a drive"},
        {LR"(\\server\\share)", {LR"(\\server\share)"}, "also after the server"},
        {LR"(\\?\C:\a)", {LR"(\\?\C:)", LR"(\\?\C:\a)"}, "the extended-length prefix stands for the server"},
        {LR"(C:\a.b\c.d)", {LR"(C:\a.b)", LR"(C:\a.b\c.d)"}, "dots mean nothing"},
    };
    for (const auto& [path, made, why] : cases) {
        EXPECT_EQ(made, MadeInSimulation(path)) << why;
    }
}

// A terminator hides the trailing backslash from the split: what stands before it is a name, without its extension.
TEST_F(RecursivelyCreateDirectoryTest, APathEndsAtATerminatorInsideIt)
{
    const std::wstring hidden(L"\0hidden", 7);
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b.c)") + hidden));
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(a\b.c)")));
    EXPECT_FALSE(PathExists(tree.Path(LR"(a\b)")));
}

TEST_F(RecursivelyCreateDirectoryTest, MakesPathsOfMoreThan255CharactersWhole)
{
    const std::wstring part(60, L'p');
    for (const std::wstring& prefix : {std::wstring(), std::wstring(LR"(\\?\)")}) {
        const TestDirectory fresh;
        std::wstring path = fresh.Root();
        StringList made;
        for (int level = 0; level < 6; ++level) {
            path += L'\\' + part;
            made.push_back(prefix + path);
        }
        ASSERT_LT(350U, path.size());
        StringList tried = Made(prefix + path);
        ASSERT_LE(made.size(), tried.size());
        tried.erase(tried.begin(), tried.end() - static_cast<std::ptrdiff_t>(made.size()));
        EXPECT_EQ(made, tried) << "no directory of a cut name";
        EXPECT_TRUE(IsDirectory(LR"(\\?\)" + path));
    }
}

TEST_F(RecursivelyCreateDirectoryTest, ExistingTreeIsASuccess)
{
    tree.Directory(LR"(a\b)");
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b)")));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(RecursivelyCreateDirectoryTest, EmptyPathIsReportedWhenThereIsAnErrorToReport)
{
    EXPECT_FALSE(RecursivelyCreateDirectory(L""));
    EXPECT_EQ(StringList(), host.Lines());
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(RecursivelyCreateDirectory(L""));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.LinesAt(0));
}

TEST_F(RecursivelyCreateDirectoryTest, RejectedPathMakesNothingAndIsReportedOnce)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(RecursivelyCreateDirectory(tree.Path(LR"(a\b*c)")));
    EXPECT_FALSE(PathExists(tree.Path(L"a")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
}

TEST_F(RecursivelyCreateDirectoryTest, FileOnTheWayIsPrintedAndReportedYetTrue)
{
    tree.File(L"file");
    const std::wstring path = tree.Path(LR"(file\x\y)");
    CapturedOutput output;
    EXPECT_TRUE(RecursivelyCreateDirectory(path));
    EXPECT_EQ(DWORD{ERROR_PATH_NOT_FOUND}, ::GetLastError()) << "of the last directory that could not be made";
    EXPECT_EQ("Unable to locate the directory: " + Utf8(path) + "\n", output.Text());
    EXPECT_EQ(ReportLines(ERROR_PATH_NOT_FOUND), host.Lines());
}

// Making it fails because it exists (183), entering it because it is no directory: each error has its own place.
TEST_F(RecursivelyCreateDirectoryTest, FileAtTheEndIsAnInvalidBuffer)
{
    const std::wstring file = tree.File(L"file");
    ASSERT_FALSE(::SetCurrentDirectoryW(file.c_str()));
    const DWORD notEntered = ::GetLastError();
    CapturedOutput output;
    EXPECT_TRUE(RecursivelyCreateDirectory(file));
    EXPECT_EQ(DWORD{ERROR_ALREADY_EXISTS}, ::GetLastError());
    EXPECT_EQ("Invalid buffer.\n", output.Text());
    EXPECT_EQ(ReportLines(notEntered), host.Lines());
    EXPECT_NE(DWORD{ERROR_ALREADY_EXISTS}, notEntered);
}

TEST_F(RecursivelyCreateDirectoryTest, ComponentsAfterAFailureAreStillTried)
{
    tree.File(L"file");
    const CapturedOutput output;
    const StringList tried = Made(tree.Path(LR"(file\x\y)"));
    ASSERT_LE(2U, tried.size());
    EXPECT_EQ(tree.Path(LR"(file\x\y)"), tried.back());
    EXPECT_EQ(tree.Path(LR"(file\x)"), tried[tried.size() - 2]);
}

// The platform's printf ends at a character that the C locale does not have; what comes before it stays.
TEST_F(RecursivelyCreateDirectoryTest, UnreachableNameOutsideTheLocaleIsHarmless)
{
    tree.File(L"file");
    CapturedOutput output;
    EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(L"file\\\u0416\\x")));
    EXPECT_EQ(0U, output.Text().find("Unable to locate the directory: "));
}

TEST_F(RecursivelyCreateDirectoryTest, RestoresTheCurrentDirectoryOnSuccessAndFailure)
{
    tree.File(L"file");
    const TestDirectory share(LR"(\\alpha\data\)");
    const TestDirectory other(L"D:\\");
    for (const std::wstring& from : {tree.Root(), share.Root(), other.Root()}) {
        const WorkingDirectory inside(from);
        const std::wstring before = CurrentDirectory();
        const CapturedOutput output;
        RecursivelyCreateDirectory(tree.Path(LR"(a\b)"));
        EXPECT_EQ(before, CurrentDirectory());
        RecursivelyCreateDirectory(tree.Path(LR"(file\b)"));
        EXPECT_EQ(before, CurrentDirectory());
        RecursivelyCreateDirectory(share.Path(LR"(a\b)"));
        EXPECT_EQ(before, CurrentDirectory());
        RecursivelyCreateDirectory(tree.Path(L"a*b"));
        EXPECT_EQ(before, CurrentDirectory());
    }
}
