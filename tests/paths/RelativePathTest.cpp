// Paths that the library makes absolute: relative ones, rooted ones, and those that climb.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

class RelativePathTest : public LibraryTest {};

namespace {

// The whole path that the library makes: nothing in it is to be translated.
std::wstring Absolute(const std::wstring& path)
{
    return GetPathFileTranslate(path);
}

const wchar_t* g_currentDirectory = nullptr;

// Simulation: a current directory that Windows would not accept.
wchar_t* __cdecl FakeGetCwd(wchar_t* buffer, int room)
{
    ::lstrcpynW(buffer, g_currentDirectory, room);
    return buffer;
}

} // namespace

TEST_F(RelativePathTest, IsAppendedToTheCurrentDirectory)
{
    const std::wstring here = tree.Directory(L"here");
    const WorkingDirectory in(here);
    const std::pair<std::wstring, std::wstring> cases[] = {
        {L"f.txt", here + LR"(\f.txt)"},
        {LR"(dir\f.txt)", here + LR"(\dir\f.txt)"},
        {L"dir/f.txt", here + LR"(\dir\f.txt)"},
        {LR"(dir\)", here + LR"(\dir\)"},
        {L".", here + LR"(\.)"},
        {LR"(.\f.txt)", here + LR"(\.\f.txt)"},
        {LR"(a\..\f.txt)", here + LR"(\a\..\f.txt)"},
        {L"..", here + LR"(\..)"}, // no step: there is no backslash after it
        {LR"(...\f.txt)", here + LR"(\...\f.txt)"},
        {LR"(..a\f.txt)", here + LR"(\..a\f.txt)"},
    };
    for (const auto& [path, absolute] : cases) {
        EXPECT_EQ(absolute, Absolute(path));
    }
    EXPECT_EQ(L"f.txt", GetFileName(L"f.txt"));
    EXPECT_EQ(here, GetPathFileName(L"f.txt"));
    EXPECT_EQ(here.substr(2) + LR"(\f.txt)", GetPathFileNameNoVolume(L"f.txt"));
    EXPECT_EQ(L"C", GetVolume(L"f.txt"));
}

TEST_F(RelativePathTest, DoublesTheBackslashOfARoot)
{
    const WorkingDirectory in(LR"(C:\)");
    EXPECT_EQ(LR"(C:\\f.txt)", Absolute(L"f.txt"));
    EXPECT_EQ(LR"(C:\)", GetPathFileName(L"f.txt"));
    EXPECT_EQ(LR"(C:\\dir\f.txt)", Absolute(LR"(dir\f.txt)"));
}

TEST_F(RelativePathTest, OfNoCharactersIsTheCurrentDirectory)
{
    const std::wstring here = tree.Directory(L"here");
    const WorkingDirectory in(here);
    EXPECT_EQ(L"", GetFileName(L""));
    EXPECT_EQ(here, GetPathFileName(L""));
    EXPECT_EQ(here.substr(2) + LR"(\)", GetPathFileNameNoVolume(L""));
    EXPECT_EQ(L"C", GetVolume(L""));
    EXPECT_EQ(here + LR"(\)", GetPathFileTranslate(L""));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(RelativePathTest, OfNoCharactersKeepsTheBackslashOfARoot)
{
    const WorkingDirectory in(LR"(D:\)");
    EXPECT_EQ(L"", GetFileName(L""));
    EXPECT_EQ(LR"(D:\)", GetPathFileName(L""));
    EXPECT_EQ(LR"(\\)", GetPathFileNameNoVolume(L""));
    EXPECT_EQ(L"D", GetVolume(L""));
    EXPECT_EQ(LR"(D:\\)", GetPathFileTranslate(L""));
}

TEST_F(RelativePathTest, ClimbsOneDirectoryForEachStepInFront)
{
    const WorkingDirectory in(tree.Directory(LR"(1\2\3)"));
    const std::pair<std::wstring, std::wstring> cases[] = {
        {LR"(..\f.txt)", tree.Path(LR"(1\2\f.txt)")},
        {LR"(..\..\f.txt)", tree.Path(LR"(1\f.txt)")},
        {LR"(..\..\..\f.txt)", tree.Path(L"f.txt")},
        {L"../../f.txt", tree.Path(LR"(1\f.txt)")},
        {LR"(..\f)", tree.Path(LR"(1\2\f)")},
        {LR"(..\f.tar.gz)", tree.Path(LR"(1\2\f.tar.gz)")},
        {LR"(..\)", tree.Path(LR"(1\2\)")},
        {LR"(..\..)", tree.Path(LR"(1\2\..)")}, // the second is a name: no backslash after it
    };
    for (const auto& [path, absolute] : cases) {
        EXPECT_EQ(absolute, Absolute(path)) << Utf8(path);
    }
}

TEST_F(RelativePathTest, LosesTheMiddleOfAClimbingPath)
{
    const WorkingDirectory in(tree.Directory(LR"(1\2\3)"));
    EXPECT_EQ(tree.Path(LR"(1\f.txt)"), Absolute(LR"(..\..\a\f.txt)"));
    EXPECT_EQ(tree.Path(LR"(1\2\f.txt)"), Absolute(LR"(..\a\b\c\f.txt)"));
    EXPECT_EQ(tree.Path(LR"(1\2\f.txt)"), Absolute(LR"(..\a\..\f.txt)")) << "a step that is not the first";
    EXPECT_EQ(tree.Path(LR"(1\2\)"), Absolute(LR"(..\a\)"));
}

TEST_F(RelativePathTest, ClimbsNoFurtherThanTheRoot)
{
    const WorkingDirectory in(tree.Directory(L"1"));
    EXPECT_EQ(LR"(C:\\f.txt)", Absolute(LR"(..\..\..\..\..\..\..\..\f.txt)"));
}

TEST_F(RelativePathTest, RestoresTheCurrentDirectoryAfterARejectedClimb)
{
    const WorkingDirectory in(tree.Directory(LR"(1\2)"));
    ::SetLastError(ERROR_INVALID_NAME);
    EXPECT_EQ(L"", Absolute(LR"(..\f*.txt)"));
    EXPECT_EQ(ReportLines(ERROR_INVALID_NAME), host.Lines()) << "going back leaves the last error alone";
}

TEST_F(RelativePathTest, TakesTheDriveOfTheCurrentDirectoryWhenRooted)
{
    const TestDirectory other(LR"(D:\)");
    const std::pair<std::wstring, std::wstring> places[] = {{tree.Root(), L"C:"}, {other.Root(), L"D:"}};
    for (const auto& [place, drive] : places) {
        const WorkingDirectory in(place);
        EXPECT_EQ(drive + LR"(\dir\f.txt)", Absolute(LR"(\dir\f.txt)"));
        EXPECT_EQ(drive + LR"(\dir\f.txt)", Absolute(L"/dir/f.txt"));
        EXPECT_EQ(drive + LR"(\f)", Absolute(LR"(\f)"));
        EXPECT_EQ(drive + LR"(\)", Absolute(LR"(\)"));
        EXPECT_EQ(drive.substr(0, 1), GetVolume(LR"(\dir\f.txt)"));
    }
}

TEST_F(RelativePathTest, TakesTwoBackslashesAloneForARootedPath)
{
    const WorkingDirectory in(tree.Root());
    EXPECT_EQ(LR"(C:\\)", Absolute(LR"(\\)"));
    EXPECT_EQ(LR"(C:\\srv)", Absolute(LR"(\\srv)")) << "its directory is two backslashes, too";
}

TEST_F(RelativePathTest, DoesNotValidateARootedPathItself)
{
    const WorkingDirectory in(tree.Root());
    EXPECT_EQ(LR"(C:\d*r\f?.t:t)", Absolute(LR"(\d*r\f?.t:t)"));
    EXPECT_EQ(L"f?.txt", GetFileName(LR"(\d*r\f?.txt)"));
}

// Simulation: Windows has no current directory with such characters.
TEST_F(RelativePathTest, ValidatesTheCurrentDirectoryInPlaceOfARootedPath)
{
    const ImportPatch getCwd("_wgetcwd", &FakeGetCwd);
    for (const wchar_t* directory : {LR"(C:\a*b\c)", LR"(C:\a\b?c)", LR"(C:\a\b.c:d)"}) {
        g_currentDirectory = directory;
        EXPECT_EQ(L"", GetFileName(LR"(\f.txt)")) << Utf8(directory);
        EXPECT_EQ(L"f.txt", GetFileName(L"f.txt")) << "a relative path is validated itself";
    }
    g_currentDirectory = LR"(C:\a\b)";
    EXPECT_EQ(L"f.txt", GetFileName(LR"(\f.txt)"));
}

TEST_F(RelativePathTest, HasNoDriveOnAShare)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const std::wstring deeper = share.Directory(L"deeper");
    const WorkingDirectory in(deeper);
    EXPECT_EQ(deeper + LR"(\f.txt)", Absolute(L"f.txt"));
    EXPECT_EQ(L"", GetVolume(L"f.txt"));
    EXPECT_EQ(share.Path(L"f.txt"), Absolute(LR"(..\f.txt)"));
    EXPECT_EQ(LR"(\dir\f.txt)", Absolute(LR"(\dir\f.txt)")) << "no drive to prepend";
}

namespace {

std::vector<std::wstring> g_changes;

int __cdecl RecordChdir(const wchar_t* directory)
{
    g_changes.emplace_back(directory);
    return ::_wchdir(directory);
}

int __cdecl FailChdir(const wchar_t* directory)
{
    g_changes.emplace_back(directory);
    return -1;
}

} // namespace

// Simulation: the steps up and the way back are recorded.
TEST_F(RelativePathTest, MovesTheCurrentDirectoryOnlyToClimb)
{
    const std::wstring here = tree.Directory(LR"(1\2)");
    const WorkingDirectory in(here);
    const ImportPatch chdir("_wchdir", &RecordChdir);
    g_changes.clear();
    for (const wchar_t* path : {L"f.txt", LR"(dir\f.txt)", LR"(\f.txt)", LR"(C:\f.txt)", LR"(\\srv\share\f)", L""}) {
        GetFileName(path);
    }
    EXPECT_EQ(StringList(), g_changes);
    GetFileName(LR"(..\..\a\f.txt)");
    EXPECT_EQ((StringList{L"..", L"..", here}), g_changes);
}

// Simulation: a directory whose parent may not be entered.
TEST_F(RelativePathTest, IsInvalidWhenAParentCannotBeEntered)
{
    const std::wstring here = tree.Directory(LR"(1\2)");
    const WorkingDirectory in(here);
    const ImportPatch chdir("_wchdir", &FailChdir);
    EXPECT_EQ(L"", Absolute(LR"(..\..\f.txt)")) << "a file of the current directory is not the one that was named";
}
