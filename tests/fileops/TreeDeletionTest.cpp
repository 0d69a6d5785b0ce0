// Deletion of directory trees.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/ThrowingHost.h"

class DeleteDirectoryRecursiveTest : public LibraryTest {
protected:
    static HostEvent Detail(const char* format, const std::wstring& text)
    {
        return {HostEvent::Kind::kLog, 0, format, text};
    }
    static HostEvent FileLine(const std::wstring& path)
    {
        return Detail("Deleting file: %S \n", L"Deleting file: " + path + L" \n");
    }
    static HostEvent DirectoryLine(const std::wstring& path)
    {
        return Detail("Deleting directory: %S \n", L"Deleting directory: " + path + L" \n");
    }

    // The path is passed as a wide text for %s, of which a printf shows the first character.
    static StringList Undeleted(const wchar_t* kind, DWORD error)
    {
        StringList lines = {std::wstring(kind) + L" couldn't be deleted: C \n"};
        const auto report =
            FailureLines(error, L"RecursivelyDeleteVirtualDir call failed: " + std::to_wstring(error) + L"\n");
        lines.insert(lines.end(), report.begin(), report.end());
        return lines;
    }
};
using DeleteDirectoryRecursiveFault = DeleteDirectoryRecursiveTest;
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

TEST_F(DeleteDirectoryRecursiveTest, RefusesNullAndAnEmptyPath)
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
    const HeldFile held(tree.Path(LR"(top\sub\deeper\a)"), GENERIC_READ, FILE_SHARE_READ);
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

TEST_F(DeleteDirectoryRecursiveTest, HasRoomForASearchPatternBehind257Characters)
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

TEST_F(DeleteDirectoryRecursiveTest, StopsInATreeThatIsDeeperThanItsRoom)
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

namespace {

// Windows gives "." first in every directory but a root; this search stands on the first real entry instead.
HANDLE WINAPI SearchWithoutDots(const wchar_t* pattern, WIN32_FIND_DATAW* entry)
{
    const HANDLE search = ::FindFirstFileW(pattern, entry);
    ::FindNextFileW(search, entry);
    ::FindNextFileW(search, entry);
    return search;
}

BOOL WINAPI FailWithAccessDenied(HANDLE /*search*/, WIN32_FIND_DATAW* /*entry*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI RefuseRemoval(const wchar_t* /*directory*/)
{
    ::SetLastError(ERROR_CURRENT_DIRECTORY);
    return FALSE;
}

BOOL WINAPI RecordFindClose(HANDLE search)
{
    CallLog::Add(L"close");
    return ::FindClose(search);
}

BOOL WINAPI RecordRemoval(const wchar_t* directory)
{
    CallLog::Add(L"remove");
    return ::RemoveDirectoryW(directory);
}

int __cdecl RecordUndeletedLines(int /*level*/, const char* format, ...)
{
    if (std::string(format).find("couldn't") != std::string::npos) {
        CallLog::Add(L"log");
    }
    return 0;
}

int __cdecl NoKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// A link to a directory looks like this to a search.
BOOL WINAPI NextWithLinks(HANDLE search, WIN32_FIND_DATAW* entry)
{
    const BOOL found = ::FindNextFileW(search, entry);
    if (found && (entry->dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
        entry->dwFileAttributes |= FILE_ATTRIBUTE_REPARSE_POINT;
    }
    return found;
}

} // namespace

// A simulation: the roots of the prefix are not for deleting.
TEST_F(DeleteDirectoryRecursiveFault, SkipsTheFirstEntryWithoutALook)
{
    tree.Files({LR"(top\a)", LR"(top\b)"});
    const ImportPatch patch("FindFirstFileW", &SearchWithoutDots);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_DIR_NOT_EMPTY), ::GetLastError());
    EXPECT_TRUE(PathExists(tree.Path(LR"(top\a)")));
    EXPECT_FALSE(PathExists(tree.Path(LR"(top\b)")));
}

TEST_F(DeleteDirectoryRecursiveFault, ASearchThatEndsEarlyRemovesNothingAndIsSilent)
{
    tree.File(LR"(top\a)");
    const ImportPatch patch("FindNextFileW", &FailWithAccessDenied);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
    EXPECT_TRUE(PathExists(tree.Path(LR"(top\a)")));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(DeleteDirectoryRecursiveFault, ADirectoryThatCannotBeRemovedIsZeroAndSilent)
{
    tree.Directory(L"top");
    const ImportPatch patch("RemoveDirectoryW", &RefuseRemoval);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_CURRENT_DIRECTORY), ::GetLastError());
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(DeleteDirectoryRecursiveFault, ClosesTheSearchBeforeItRemovesAndRemovesSubdirectoriesTwice)
{
    tree.Directory(LR"(top\sub)");
    const ImportPatch close("FindClose", &RecordFindClose);
    const ImportPatch remove("RemoveDirectoryW", &RecordRemoval);
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ((StringList{L"close", L"remove", L"remove", L"close", L"remove"}), CallLog::Take());
}

TEST_F(DeleteDirectoryRecursiveFault, ClosesTheSearchAfterTheLineOfAFileAndBeforeThatOfADirectory)
{
    tree.File(LR"(top\sub\a)");
    const HeldFile held(tree.Path(LR"(top\sub\a)"), GENERIC_READ, FILE_SHARE_READ);
    SetVssFileManagerLogger(&RecordUndeletedLines, &NoKeepAlive, &RecordUndeletedLines);
    const ImportPatch close("FindClose", &RecordFindClose);
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ((StringList{L"log", L"close", L"close", L"log"}), CallLog::Take());
}

TEST_F(DeleteDirectoryRecursiveFault, EntersDirectoriesThatAreLinks)
{
    tree.File(LR"(top\link\a)");
    const ImportPatch patch("FindNextFileW", &NextWithLinks);
    EXPECT_NE(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_FALSE(PathExists(tree.Path(L"top")));
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
