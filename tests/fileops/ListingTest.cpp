// Listings of one directory: its files by a filter, and its directories.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <algorithm>

namespace {

std::wstring FileLine(const std::wstring& file)
{
    return L"file =  " + file + L"\n";
}

std::wstring WithForwardSlashes(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}

bool Contains(const StringList& list, const std::wstring& text)
{
    return std::find(list.begin(), list.end(), text) != list.end();
}

} // namespace

class ListFilesFilterTest : public LibraryTest {};

TEST_F(ListFilesFilterTest, SortsUpperCaseBeforeLowerCase)
{
    tree.Files({L"b", L"a", L"C"});
    EXPECT_EQ((StringList{L"C", L"a", L"b"}), ListFilesFilter(tree.Root(), L"*", false));
}

// Windows finds a, b, C: the last one goes before the others.
TEST_F(ListFilesFilterTest, LogsOnlyWhatIsAppendedAtTheEnd)
{
    tree.Files({L"b", L"a", L"C"});
    ListFilesFilter(tree.Root(), L"*", false);
    const std::vector<HostEvent> expected = {
        {HostEvent::Kind::kLog, 2, "file =  %S\n", FileLine(L"a")},
        {HostEvent::Kind::kLog, 2, "file =  %S\n", FileLine(L"b")},
    };
    EXPECT_EQ(expected, host.Events());
}

TEST_F(ListFilesFilterTest, LogsFullPathsWhereItListsThem)
{
    const std::wstring file = tree.File(L"a");
    ListFilesFilter(tree.Root(), L"*", true);
    EXPECT_EQ((StringList{FileLine(file)}), host.LinesAt(2));
}

TEST_F(ListFilesFilterTest, StarListsTheSameFilesAsStarDotStar)
{
    tree.Files({L"noext", L"a.txt", L"b.tar.gz", L".hidden"});
    const StringList all = {L".hidden", L"a.txt", L"b.tar.gz", L"noext"};
    EXPECT_EQ(all, ListFilesFilter(tree.Root(), L"*", false));
    EXPECT_EQ(all, ListFilesFilter(tree.Root(), L"*.*", false));
}

TEST_F(ListFilesFilterTest, FilterIsThePlatforms)
{
    tree.Files({L"a.txt", L"B.TXT", L"ab.doc", L"b.doc"});
    const struct {
        const wchar_t* filter;
        StringList files;
        const char* why;
    } cases[] = {
        {L"*.txt", {L"B.TXT", L"a.txt"}, "names have no case"},
        {L"*.TXT", {L"B.TXT", L"a.txt"}, "nor have filters"},
        {L"a*", {L"a.txt", L"ab.doc"}, "a beginning"},
        {L"?.doc", {L"b.doc"}, "one character"},
        {L"ab.doc", {L"ab.doc"}, "a name"},
        {L"*.none", {}, "no such file"},
        {L"", {}, "no filter finds nothing"},
    };
    for (const auto& [filter, files, why] : cases) {
        EXPECT_EQ(files, ListFilesFilter(tree.Root(), filter, false)) << why;
    }
    EXPECT_EQ(StringList(), host.LinesAt(0));
}

// Directory and filter are joined as they are; what a path in the filter finds is named from the directory.
TEST_F(ListFilesFilterTest, FilterMayLeadIntoASubdirectory)
{
    tree.Files({LR"(sub\a.txt)", L"b.txt"});
    EXPECT_EQ((StringList{L"a.txt"}), ListFilesFilter(tree.Root(), LR"(sub\*.txt)", false));
    EXPECT_EQ((StringList{tree.Path(L"a.txt")}), ListFilesFilter(tree.Root(), LR"(sub\*.txt)", true));
}

TEST_F(ListFilesFilterTest, LeavesOutDirectories)
{
    tree.Directory(L"dir");
    tree.Directory(L"dir.txt");
    tree.File(L"file.txt");
    EXPECT_EQ((StringList{L"file.txt"}), ListFilesFilter(tree.Root(), L"*", false));
    EXPECT_EQ((StringList{L"file.txt"}), ListFilesFilter(tree.Root(), L"*.txt", false));
}

TEST_F(ListFilesFilterTest, ListsFilesOfAllAttributes)
{
    const struct {
        const wchar_t* name;
        DWORD attributes;
    } files[] = {
        {L"hidden", FILE_ATTRIBUTE_HIDDEN},
        {L"readonly", FILE_ATTRIBUTE_READONLY},
        {L"system", FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_HIDDEN},
    };
    for (const auto& [name, attributes] : files) {
        ::SetFileAttributesW(tree.File(name).c_str(), attributes);
    }
    EXPECT_EQ((StringList{L"hidden", L"readonly", L"system"}), ListFilesFilter(tree.Root(), L"*", false));
}

TEST_F(ListFilesFilterTest, FullPathsBeginWithTheNormalisedDirectory)
{
    const TestDirectory other(L"D:\\");
    other.File(L"file");
    const StringList expected = {other.Path(L"file")};
    ASSERT_TRUE(expected[0].starts_with(L"D:\\"));
    EXPECT_EQ(expected, ListFilesFilter(WithForwardSlashes(other.Root()), L"*", true));
    EXPECT_EQ(expected, ListFilesFilter(other.Root(), L"*", true));
    EXPECT_EQ(expected, ListFilesFilter(other.Root() + L"\\", L"*", true));
}

TEST_F(ListFilesFilterTest, ListsSharesAndExtendedLengthPaths)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const std::wstring shared = share.File(L"file");
    const std::wstring file = tree.File(L"file");
    EXPECT_EQ((StringList{shared}), ListFilesFilter(share.Root(), L"*", true));
    EXPECT_EQ((StringList{LR"(\\?\)" + file}), ListFilesFilter(LR"(\\?\)" + tree.Root(), L"*", true));
}

TEST_F(ListFilesFilterTest, ListsTheRootOfAVolume)
{
    const TestDirectory marker(L"D:\\");
    const std::wstring name = marker.Root().substr(3, marker.Root().rfind(L'\\') - 3);
    const std::wstring file = L"D:\\" + name + L"-file";
    WriteFileBytes(file, "x");
    EXPECT_EQ((StringList{file}), ListFilesFilter(L"D:\\", name + L"*", true));
    EXPECT_TRUE(::DeleteFileW(file.c_str()));
}

TEST_F(ListFilesFilterTest, TakesRelativeDirectoriesFromTheCurrentDirectory)
{
    tree.Files({L"top", LR"(dir\file)", LR"(dir\sub\file2)"});
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_EQ((StringList{tree.Path(LR"(dir\sub\file2)")}), ListFilesFilter(L"sub", L"*", true));
    EXPECT_EQ((StringList{tree.Path(LR"(dir\file)")}), ListFilesFilter(L"", L"*", true)) << "empty: where we are";
    EXPECT_EQ((StringList{tree.Path(L"top")}), ListFilesFilter(LR"(..\)", L"*", true));
    EXPECT_EQ((StringList{tree.Path(L"top")}), ListFilesFilter(tree.Root().substr(2), L"*", true)) << "rooted";
}

// A surrogate pair comes before U+FF21 in the order of code units, after it in the order of characters.
TEST_F(ListFilesFilterTest, SortsByCodeUnits)
{
    const StringList sorted = {L"A", L"_", L"b", L"\u00e9", L"\u0416", L"\U0001F600", L"\uFF21"};
    tree.Files(sorted);
    EXPECT_EQ(sorted, ListFilesFilter(tree.Root(), L"*", false));
}

TEST_F(ListFilesFilterTest, EmptyDirectoryGivesNothingAndReportsNothing)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(StringList(), ListFilesFilter(tree.Root(), L"*", true));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListFilesFilterTest, DirectoryThatCannotBeEnteredGivesNothingAndLogsNothing)
{
    for (const std::wstring& directory : {tree.Path(L"missing"), tree.File(L"file"), std::wstring(L"Q:\\")}) {
        EXPECT_EQ(StringList(), ListFilesFilter(directory, L"*", true)) << Utf8(directory);
    }
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListFilesFilterTest, RejectedDirectoryIsReportedOnce)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(StringList(), ListFilesFilter(tree.Path(L"a*b"), L"*", true));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    host.Clear();
    ::SetLastError(0);
    EXPECT_EQ(StringList(), ListFilesFilter(tree.Path(L"a*b"), L"*", true));
    EXPECT_EQ(StringList(), host.Lines()) << "no error, no report";
}

TEST_F(ListFilesFilterTest, DoesNotHoldTheDirectoryAfterwards)
{
    const std::wstring directory = tree.Directory(L"dir");
    ListFilesFilter(directory, L"*", true);
    ListFilesFilter(directory, L"*.none", true);
    EXPECT_TRUE(::RemoveDirectoryW(directory.c_str())) << ::GetLastError();
}

class ListDirecoriesRecursiveTest : public LibraryTest {};

TEST_F(ListDirecoriesRecursiveTest, ListsOneLevelWithoutTrailingBackslashes)
{
    tree.Directory(LR"(a\b\c)");
    tree.Directory(LR"(d\e)");
    tree.File(L"file");
    EXPECT_EQ((StringList{tree.Path(L"a"), tree.Path(L"d")}), ListDirecoriesRecursive(tree.Root()));
    EXPECT_TRUE(host.Events().empty()) << "nothing is logged";
}

TEST_F(ListDirecoriesRecursiveTest, LeavesOutOnlyTheDirectoryAndItsParent)
{
    tree.Directory(L".git");
    tree.Directory(L"..x");
    tree.Directory(L"\u00e9\U0001F600");
    StringList found = ListDirecoriesRecursive(tree.Root());
    std::sort(found.begin(), found.end());
    EXPECT_EQ((StringList{tree.Path(L"..x"), tree.Path(L".git"), tree.Path(L"\u00e9\U0001F600")}), found);
}

TEST_F(ListDirecoriesRecursiveTest, ListsSharesVolumesAndRelativeDirectories)
{
    const TestDirectory share(LR"(\\beta\data\)");
    const TestDirectory other(L"D:\\");
    const std::wstring shared = share.Directory(L"sub");
    const std::wstring beside = other.Directory(L"sub");
    EXPECT_EQ((StringList{shared}), ListDirecoriesRecursive(share.Root()));
    EXPECT_EQ((StringList{beside}), ListDirecoriesRecursive(WithForwardSlashes(other.Root())));
    EXPECT_TRUE(Contains(ListDirecoriesRecursive(L"D:\\"), other.Root().substr(0, other.Root().rfind(L'\\'))));
    tree.Directory(LR"(dir\sub)");
    const WorkingDirectory inside(tree.Root());
    EXPECT_EQ((StringList{tree.Path(LR"(dir\sub)")}), ListDirecoriesRecursive(L"dir"));
    EXPECT_EQ((StringList{tree.Path(L"dir")}), ListDirecoriesRecursive(L""));
}

TEST_F(ListDirecoriesRecursiveTest, DirectoryThatCannotBeSearchedGivesNothingAndLogsNothing)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    for (const std::wstring& directory : {tree.Path(L"missing"), tree.File(L"file"), tree.Directory(L"empty")}) {
        EXPECT_EQ(StringList(), ListDirecoriesRecursive(directory)) << Utf8(directory);
    }
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListDirecoriesRecursiveTest, RejectedDirectoryIsReportedOnce)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(StringList(), ListDirecoriesRecursive(tree.Path(L"a?b")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
}
