// Deletion of directory trees when Windows fails. Simulations: single imports of the library are replaced.

#include "tests/fileops/TreeDeletionFixture.h"
#include "tests/support/CallLog.h"
#include "tests/support/SilentHost.h"

using DeleteDirectoryRecursiveFault = DeleteDirectoryRecursiveTest;

namespace {

constexpr DWORD kErrorWithoutText = 999999;

// Windows gives "." first in every directory but a root; this search is on the first real entry instead.
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

BOOL WINAPI FailRemoval(const wchar_t* /*directory*/)
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
    const ImportPatch patch("RemoveDirectoryW", &FailRemoval);
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
    const LockedFile locked(tree.Path(LR"(top\sub\a)"), GENERIC_READ, FILE_SHARE_READ);
    SetVssFileManagerLogger(&RecordUndeletedLines, &SilentKeepAlive, &RecordUndeletedLines);
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

TEST_F(DeleteDirectoryRecursiveFault, ReportsAnErrorWithoutATextOfWindowsInTwoLines)
{
    tree.File(LR"(top\a)");
    const ImportPatch patch(
        "DeleteFileW", +[](const wchar_t*) -> BOOL {
            ::SetLastError(kErrorWithoutText);
            return FALSE;
        });
    EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
    EXPECT_EQ(
        (StringList{L"Deleting file: " + tree.Path(LR"(top\a)") + L" \n", L"File couldn't be deleted: C \n",
                    L"RecursivelyDeleteVirtualDir call failed: 999999\n", L"   - Returned HRESULT = 0x8007423f\n"}),
        host.LinesAt(0));
    EXPECT_EQ(kErrorWithoutText, ::GetLastError());
}
