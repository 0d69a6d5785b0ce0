// Deletion of directory trees.

#include "tests/fileops/TreeDeletionFixture.h"
#include "tests/support/ChildProcess.h"

using CleanupDirectoryTest = DeleteDirectoryRecursiveTest;

TEST_F(DeleteDirectoryRecursiveTest, LogsEachFileAndEachSubdirectoryAfterItsContents)
{
    tree.Files({LR"(top\a)", LR"(top\sub\b)", LR"(top\sub\deeper\c)", LR"(top\z)"});
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    const std::vector<HostEvent> expected = {
        FileLine(tree.Path(LR"(top\a)")),
        FileLine(tree.Path(LR"(top\sub\b)")),
        FileLine(tree.Path(LR"(top\sub\deeper\c)")),
        DirectoryLine(tree.Path(LR"(top\sub\deeper)")),
        DirectoryLine(tree.Path(LR"(top\sub)")),
        FileLine(tree.Path(LR"(top\z)")),
    };
    EXPECT_EQ(expected, host.Events());
    EXPECT_FALSE(PathExists(tree.Path(L"top")));
}

TEST_F(DeleteDirectoryRecursiveTest, OfAnEmptyDirectoryLogsNothing)
{
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Directory(L"top").c_str()));
    EXPECT_TRUE(host.Events().empty());
    EXPECT_FALSE(PathExists(tree.Path(L"top")));
}

TEST_F(DeleteDirectoryRecursiveTest, TakesATrailingBackslashAndAShare)
{
    tree.File(LR"(top\a)");
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Path(L"top\\").c_str()));
    const TestDirectory share(LR"(\\alpha\data\)");
    share.File(LR"(top\sub\a)");
    EXPECT_NE(0, DeleteDirectoryRecursive(share.Path(L"top").c_str()));
    EXPECT_FALSE(PathExists(share.Path(L"top")));
}

TEST_F(DeleteDirectoryRecursiveTest, OfAMissingDirectoryIsZeroAndSilent)
{
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"missing").c_str()));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(DeleteDirectoryRecursiveTest, OfAFileIsZeroAndKeepsIt)
{
    const std::wstring file = tree.File(L"file");
    EXPECT_EQ(0, DeleteDirectoryRecursive(file.c_str()));
    EXPECT_TRUE(PathExists(file));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(DeleteDirectoryRecursiveTest, RejectsNullAndAnEmptyPath)
{
    for (const wchar_t* path : {static_cast<const wchar_t*>(nullptr), L""}) {
        ::SetLastError(0);
        EXPECT_EQ(0, DeleteDirectoryRecursive(path));
        EXPECT_EQ(static_cast<DWORD>(ERROR_PATH_NOT_FOUND), ::GetLastError());
    }
    EXPECT_FALSE(CleanupDirectory(L""));
    EXPECT_TRUE(PathExists(tree.Root())) << "the drive's root was searched";
}

TEST_F(DeleteDirectoryRecursiveTest, StopsAtAReadOnlyFileAndReportsIt)
{
    tree.Files({LR"(top\a)", LR"(top\b)", LR"(top\c)"});
    ::SetFileAttributesW(tree.Path(LR"(top\b)").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
    StringList expected = {L"Deleting file: " + tree.Path(LR"(top\a)") + L" \n",
                           L"Deleting file: " + tree.Path(LR"(top\b)") + L" \n"};
    const StringList undeleted = Undeleted(L"File", ERROR_ACCESS_DENIED);
    expected.insert(expected.end(), undeleted.begin(), undeleted.end());
    EXPECT_EQ(expected, host.LinesAt(0));
    EXPECT_EQ(L"   - Returned HRESULT = 0x80070005\n", host.Lines()[4]);
    EXPECT_TRUE(PathExists(tree.Path(LR"(top\c)")));
}

TEST_F(DeleteDirectoryRecursiveTest, AFailureBelowEndsEveryLevelAbove)
{
    tree.Files({LR"(top\sub\deeper\a)", LR"(top\z)"});
    const LockedFile locked(tree.Path(LR"(top\sub\deeper\a)"), GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    StringList expected = {L"Deleting file: " + tree.Path(LR"(top\sub\deeper\a)") + L" \n"};
    for (const wchar_t* kind : {L"File", L"Directory", L"Directory"}) {
        const StringList undeleted = Undeleted(kind, ERROR_SHARING_VIOLATION);
        expected.insert(expected.end(), undeleted.begin(), undeleted.end());
    }
    EXPECT_EQ(expected, host.LinesAt(0));
    EXPECT_TRUE(PathExists(tree.Path(LR"(top\z)")));
}

TEST_F(DeleteDirectoryRecursiveTest, DeletesSixtyLevels)
{
    std::wstring path = L"top";
    for (int level = 0; level < 60; ++level) {
        path += L"\\d";
    }
    tree.File(path + L"\\f");
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_FALSE(PathExists(tree.Path(L"top")));
}

TEST_F(DeleteDirectoryRecursiveTest, HasCapacityForASearchPatternAfter257Characters)
{
    for (const auto& [length, fits] : {std::pair(257U, true), std::pair(258U, false), std::pair(259U, false)}) {
        host.Clear();
        const std::wstring top = tree.Root() + L"\\" + std::wstring(length - tree.Root().size() - 1, L'd');
        ASSERT_TRUE(::CreateDirectoryW((LR"(\\?\)" + top).c_str(), nullptr)) << length;
        ::SetLastError(0);
        EXPECT_EQ(fits, DeleteDirectoryRecursive(top.c_str()) != 0) << length;
        EXPECT_EQ(!fits, PathExists(LR"(\\?\)" + top)) << length;
        EXPECT_TRUE(host.Events().empty()) << length;
        if (!fits) {
            EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), ::GetLastError()) << length;
        }
    }
}

TEST_F(DeleteDirectoryRecursiveTest, CannotDeleteAnEntryWhosePathDoesNotFit)
{
    for (const bool isDirectory : {false, true}) {
        host.Clear();
        const std::wstring top = tree.Directory(isDirectory ? L"with directory" : L"with file");
        const std::wstring entry = LR"(\\?\)" + top + L"\\" + std::wstring(255, L'n');
        if (isDirectory) {
            ASSERT_TRUE(::CreateDirectoryW(entry.c_str(), nullptr)) << ::GetLastError();
        } else {
            WriteFileBytes(entry, "x");
        }
        EXPECT_EQ(0, DeleteDirectoryRecursive(top.c_str()));
        EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), ::GetLastError());
        EXPECT_EQ(Undeleted(isDirectory ? L"Directory" : L"File", ERROR_FILENAME_EXCED_RANGE), host.LinesAt(0));
        EXPECT_TRUE(PathExists(entry));
    }
}

TEST_F(DeleteDirectoryRecursiveTest, StopsInATreeThatIsDeeperThanItsBuffer)
{
    std::wstring path = LR"(\\?\)" + tree.Directory(L"top");
    for (int level = 0; level < 10; ++level) {
        path += L"\\" + std::wstring(40, L'd');
        ASSERT_TRUE(::CreateDirectoryW(path.c_str(), nullptr));
    }
    WriteFileBytes(path + L"\\file", "kept");
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), ::GetLastError());
    EXPECT_EQ("kept", ReadFileBytes(path + L"\\file"));
}

TEST_F(CleanupDirectoryTest, DeletesATree)
{
    tree.Files({LR"(top\a)", LR"(top\sub\b)"});
    EXPECT_TRUE(CleanupDirectory(tree.Path(L"top")));
    EXPECT_FALSE(PathExists(tree.Path(L"top")));
}

TEST_F(CleanupDirectoryTest, IsFalseForAMissingDirectory)
{
    EXPECT_FALSE(CleanupDirectory(tree.Path(L"missing")));
}

TEST_F(CleanupDirectoryTest, Of260CharactersUsesTheWin32Deleter)
{
    const std::wstring top = tree.Root() + L"\\" + std::wstring(260 - tree.Root().size() - 1, L'd');
    ASSERT_EQ(260U, top.size());
    EXPECT_FALSE(CleanupDirectory(top)) << "the long-path clean-up would have ended this process";
    EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), ::GetLastError());
}

TEST_F(CleanupDirectoryTest, Of261CharactersEmptiesTheDirectoriesBelowAndEndsTheProcess)
{
    std::wstring top = tree.Directory(std::wstring(150, L'd'));
    top += L"\\" + std::wstring(261 - top.size() - 1, L'e');
    ASSERT_EQ(261U, top.size());
    const std::wstring extended = LR"(\\?\)" + top;
    ASSERT_TRUE(::CreateDirectoryW(extended.c_str(), nullptr));
    ASSERT_TRUE(::CreateDirectoryW((extended + L"\\a").c_str(), nullptr));
    ASSERT_TRUE(::CreateDirectoryW((extended + L"\\a\\b").c_str(), nullptr));
    for (const wchar_t* file : {L"\\f", L"\\a\\f", L"\\a\\b\\f"}) {
        WriteFileBytes(extended + file, "x");
    }
    constexpr DWORD kInvalidRuntimeParameter = 0xC0000417;
    EXPECT_EQ(kInvalidRuntimeParameter, RunHelper(L"kestrovane-cleaner.exe", {top}));
    EXPECT_FALSE(PathExists(extended + L"\\a"));
    EXPECT_TRUE(PathExists(extended + L"\\f")) << "the directory itself and its own files are never reached";
}
