// Deletion of files that match a filter.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <io.h>

#include <cerrno>

using DeleteFilesFilterTest = LibraryTest;

TEST_F(DeleteFilesFilterTest, DeletesWhatMatchesAndNothingElse)
{
    tree.Files({L"a.txt", L"b.txt", L"c.log", LR"(sub\d.txt)"});
    EXPECT_TRUE(DeleteFilesFilter(tree.Root(), L"*.txt"));
    EXPECT_FALSE(PathExists(tree.Path(L"a.txt")));
    EXPECT_FALSE(PathExists(tree.Path(L"b.txt")));
    EXPECT_TRUE(PathExists(tree.Path(L"c.log")));
    EXPECT_TRUE(PathExists(tree.Path(LR"(sub\d.txt)")));
}

TEST_F(DeleteFilesFilterTest, IsTrueWhenNothingMatches)
{
    tree.File(L"a.txt");
    EXPECT_TRUE(DeleteFilesFilter(tree.Root(), L"*.none"));
    EXPECT_TRUE(PathExists(tree.Path(L"a.txt")));
}

TEST_F(DeleteFilesFilterTest, IsTrueForAMissingDirectory)
{
    EXPECT_TRUE(DeleteFilesFilter(tree.Path(L"missing"), L"*"));
}

TEST_F(DeleteFilesFilterTest, WithAStarDeletesTheFilesAndKeepsTheDirectories)
{
    tree.Files({L"a", L"b.txt", LR"(sub\c)"});
    EXPECT_TRUE(DeleteFilesFilter(tree.Root(), L"*"));
    EXPECT_FALSE(PathExists(tree.Path(L"a")));
    EXPECT_FALSE(PathExists(tree.Path(L"b.txt")));
    EXPECT_TRUE(PathExists(tree.Path(LR"(sub\c)")));
}

namespace {
std::intptr_t FailSearch(const wchar_t* pattern, struct _wfinddata64_t* /*entry*/)
{
    CallLog::Add(pattern);
    return -1;
}
} // namespace

TEST_F(DeleteFilesFilterTest, DoesNotWidenAStarAsListingsDo)
{
    const ImportPatch patch("_wfindfirst64", &FailSearch);
    DeleteFilesFilter(tree.Root(), L"*");
    EXPECT_EQ(StringList{tree.Root() + L"\\*"}, CallLog::Take());
}

TEST_F(DeleteFilesFilterTest, StopsAtAReadOnlyFileAndLeavesItsAttribute)
{
    tree.Files({L"a", L"b", L"c"});
    ::SetFileAttributesW(tree.Path(L"b").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(DeleteFilesFilter(tree.Root(), L"*"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
    EXPECT_FALSE(PathExists(tree.Path(L"a")));
    EXPECT_NE(0U, ::GetFileAttributesW(tree.Path(L"b").c_str()) & FILE_ATTRIBUTE_READONLY);
    EXPECT_TRUE(PathExists(tree.Path(L"c"))) << "later files are not tried";
}

TEST_F(DeleteFilesFilterTest, StopsAtALockedFile)
{
    tree.Files({L"a", L"b"});
    {
        const LockedFile locked(tree.Path(L"a"), GENERIC_READ, FILE_SHARE_READ);
        EXPECT_FALSE(DeleteFilesFilter(tree.Root(), L"*"));
        EXPECT_EQ(static_cast<DWORD>(ERROR_SHARING_VIOLATION), ::GetLastError());
    }
    EXPECT_TRUE(PathExists(tree.Path(L"b")));
}

TEST_F(DeleteFilesFilterTest, LogsWhatItFindsAsAListingDoes)
{
    tree.Files({L"a", L"b"});
    DeleteFilesFilter(tree.Root(), L"*");
    EXPECT_EQ((StringList{L"file =  " + tree.Path(L"a") + L"\n", L"file =  " + tree.Path(L"b") + L"\n"}),
              host.LinesAt(2));
}

TEST_F(DeleteFilesFilterTest, LogsNothingAboutAFileThatCannotBeDeleted)
{
    const LockedFile locked(tree.File(L"a"), GENERIC_READ, FILE_SHARE_READ);
    errno = 0;
    EXPECT_FALSE(DeleteFilesFilter(tree.Root(), L"*"));
    EXPECT_EQ(EACCES, errno);
    EXPECT_EQ(StringList{L"file =  " + tree.Path(L"a") + L"\n"}, host.Lines());
}

TEST_F(DeleteFilesFilterTest, TakesTheCurrentDirectoryForAnEmptyPath)
{
    tree.File(LR"(here\a.txt)");
    const WorkingDirectory inside(tree.Path(L"here"));
    EXPECT_TRUE(DeleteFilesFilter(L"", L"*.txt"));
    EXPECT_FALSE(PathExists(tree.Path(LR"(here\a.txt)")));
}
