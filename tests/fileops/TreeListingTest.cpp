// Listings of whole trees.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

class ListFilesFilterRecursiveTest : public LibraryTest {
protected:
    [[nodiscard]] StringList Full(const StringList& relatives) const
    {
        StringList full;
        for (const std::wstring& relative : relatives) {
            full.push_back(tree.Path(relative));
        }
        return full;
    }
};

TEST_F(ListFilesFilterRecursiveTest, GroupsFilesByDirectoryParentsFirst)
{
    tree.Files({L"z", L"Y", LR"(a\z)", LR"(a\b\z)", LR"(a\b\Y)", LR"(a\c\z)", LR"(b\a)"});
    tree.Directory(LR"(a\empty)");
    const StringList relative = {L"Y", L"z", LR"(a\z)", LR"(a\b\Y)", LR"(a\b\z)", LR"(a\c\z)", LR"(b\a)"};
    EXPECT_EQ(Full(relative), ListFilesFilterRecursive(tree.Root(), L"*", true));
    EXPECT_EQ(relative, ListFilesFilterRecursive(tree.Root(), L"*", false));
}

// Windows finds A, b, then C: each scan logs what it appends to its own list, the tree logs everything.
TEST_F(ListFilesFilterRecursiveTest, LogsScanTreeAndRelativePathsInTurn)
{
    tree.Files({L"a", L"B", LR"(sub\c)"});
    ListFilesFilterRecursive(tree.Root(), L"*", false);
    const struct {
        const char* format;
        std::wstring text;
    } lines[] = {
        {"file =  %S\n", L"file =  " + tree.Path(L"a") + L"\n"},
        // B was found after a, and goes before it
        {"file =  %S\n", L"file =  " + tree.Path(L"B") + L"\n"},
        {"file =  %S\n", L"file =  " + tree.Path(L"a") + L"\n"},
        {"file =  %S\n", L"file =  " + tree.Path(LR"(sub\c)") + L"\n"},
        {"file =  %S\n", L"file =  " + tree.Path(LR"(sub\c)") + L"\n"},
        {"temp[ %d ] =  %S\n", L"temp[ 0 ] =  B\n"},
        {"temp[ %d ] =  %S\n", L"temp[ 1 ] =  a\n"},
        {"temp[ %d ] =  %S\n", L"temp[ 2 ] =  sub\\c\n"},
    };
    std::vector<HostEvent> expected;
    for (const auto& [format, text] : lines) {
        expected.push_back({HostEvent::Kind::kLog, 2, format, text});
    }
    EXPECT_EQ(expected, host.Events());
}

TEST_F(ListFilesFilterRecursiveTest, FullPathsHaveNoRelativeLines)
{
    const std::wstring line = L"file =  " + tree.File(L"a") + L"\n";
    ListFilesFilterRecursive(tree.Root(), L"*", true);
    EXPECT_EQ((StringList{line, line}), host.Lines());
}

TEST_F(ListFilesFilterRecursiveTest, FilterIsForFilesAlone)
{
    tree.Files({L"a.txt", L"a.doc", LR"(sub\b.TXT)", LR"(sub\deep\c.txt)", LR"(sub\deep\c.doc)"});
    const StringList texts = {L"a.txt", LR"(sub\b.TXT)", LR"(sub\deep\c.txt)"};
    EXPECT_EQ(texts, ListFilesFilterRecursive(tree.Root(), L"*.txt", false));
    EXPECT_EQ(texts, ListFilesFilterRecursive(tree.Root(), L"*.TXT", false));
}

TEST_F(ListFilesFilterRecursiveTest, StarListsTheSameFilesAsStarDotStar)
{
    tree.Files({L"noext", LR"(sub\a.txt)", LR"(sub\noext)"});
    const StringList all = {L"noext", LR"(sub\a.txt)", LR"(sub\noext)"};
    EXPECT_EQ(all, ListFilesFilterRecursive(tree.Root(), L"*", false));
    EXPECT_EQ(all, ListFilesFilterRecursive(tree.Root(), L"*.*", false));
}

TEST_F(ListFilesFilterRecursiveTest, RelativePathsAreThoseAfterTheNormalisedDirectory)
{
    const TestDirectory share(LR"(\\beta\data\)");
    const TestDirectory other(L"D:\\");
    const StringList expected = {LR"(sub\file.txt)"};
    tree.File(LR"(dir\sub\file.txt)");
    share.File(expected[0]);
    other.File(expected[0]);
    EXPECT_EQ(expected, ListFilesFilterRecursive(share.Root(), L"*", false));
    EXPECT_EQ(expected, ListFilesFilterRecursive(other.Root() + L"/", L"*", false));
    EXPECT_EQ(expected, ListFilesFilterRecursive(LR"(\\?\)" + other.Root(), L"*", false));
    const WorkingDirectory inside(tree.Root());
    EXPECT_EQ(expected, ListFilesFilterRecursive(L"dir", L"*", false));
    EXPECT_EQ((StringList{LR"(dir\sub\file.txt)"}), ListFilesFilterRecursive(L"", L"*", false));
}

TEST_F(ListFilesFilterRecursiveTest, EmptyTreeGivesNothing)
{
    tree.Directory(LR"(a\b)");
    EXPECT_EQ(StringList(), ListFilesFilterRecursive(tree.Root(), L"*", true));
    EXPECT_EQ(StringList(), ListFilesFilterRecursive(tree.Root(), L"*", false));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListFilesFilterRecursiveTest, DirectoryThatCannotBeEnteredGivesNothingAndLogsNothing)
{
    for (const std::wstring& directory : {tree.Path(L"missing"), tree.File(L"file")}) {
        EXPECT_EQ(StringList(), ListFilesFilterRecursive(directory, L"*", true));
        EXPECT_EQ(StringList(), ListFilesFilterRecursive(directory, L"*", false));
    }
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListFilesFilterRecursiveTest, RejectedDirectoryIsReportedOnce)
{
    for (const bool fullPath : {true, false}) {
        host.Clear();
        ::SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_EQ(StringList(), ListFilesFilterRecursive(tree.Path(L"a*b"), L"*", fullPath));
        EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    }
}

TEST_F(ListFilesFilterRecursiveTest, DoesNotHoldDirectoriesAfterwards)
{
    tree.Directory(LR"(a\b)");
    ListFilesFilterRecursive(tree.Root(), L"*", true);
    EXPECT_TRUE(::RemoveDirectoryW(tree.Path(LR"(a\b)").c_str())) << ::GetLastError();
    EXPECT_TRUE(::RemoveDirectoryW(tree.Path(L"a").c_str())) << ::GetLastError();
}
