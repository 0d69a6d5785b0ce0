// What is registered for the next restart happens there. restart.sh runs the first test, restarts Wine and runs the
// second.

#include "tests/support/FileLockerProcess.h"
#include "tests/support/PendingList.h"
#include "tests/support/TestDirectory.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

constexpr const wchar_t* kPlace = LR"(C:\kestrovane-restart)";

std::wstring At(const wchar_t* name)
{
    return std::wstring(kPlace) + L"\\" + name;
}

} // namespace

TEST(BeforeRestart, MovesAndDeletionsAreRegistered)
{
    ASSERT_TRUE(::CreateDirectoryW(kPlace, nullptr)) << "error " << ::GetLastError();
    WriteFileBytes(At(L"live.txt"), "old");
    WriteFileBytes(At(L"read-only.txt"), "old");
    WriteFileBytes(At(L"busy.tmp"), "cache");
    const FileLockerProcess live(At(L"live.txt"), GENERIC_READ, FILE_SHARE_READ);
    const FileLockerProcess busy(At(L"busy.tmp"), GENERIC_READ, FILE_SHARE_READ);

    std::wstring cacheFile;
    ASSERT_TRUE(CreateCacheFile(At(L"live.txt"), cacheFile, L"kvt", false, false));
    WriteFileBytes(cacheFile, "new");
    std::wstring target = At(L"live.txt");
    EXPECT_TRUE(MoveCacheFile(cacheFile, target));
    EXPECT_EQ("old", ReadFileBytes(At(L"live.txt"))) << "nothing may be moved before the restart";

    ::SetFileAttributesW(At(L"read-only.txt").c_str(), FILE_ATTRIBUTE_READONLY);
    std::vector<std::wstring> doomed = {At(L"busy.tmp"), At(L"read-only.txt")};
    EXPECT_TRUE(DeleteCacheFileList(doomed));
    EXPECT_TRUE(PathExists(At(L"busy.tmp")));
    EXPECT_TRUE(PathExists(At(L"read-only.txt")));
    // Windows' restart deletes read-only files, Wine's leaves them.
    ::SetFileAttributesW(At(L"read-only.txt").c_str(), FILE_ATTRIBUTE_NORMAL);
}

TEST(AfterRestart, TheLiveFileIsReplacedTheOthersAreGoneAndTheListIsEmpty)
{
    EXPECT_EQ("new", ReadFileBytes(At(L"live.txt")));
    EXPECT_FALSE(PathExists(At(L"busy.tmp")));
    EXPECT_FALSE(PathExists(At(L"read-only.txt")));
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = ::FindFirstFileW(At(L"*.tmp").c_str(), &entry);
    EXPECT_EQ(INVALID_HANDLE_VALUE, search) << "the cache file has become the live file";
    EXPECT_TRUE(ReadPendingList().empty());
    ::DeleteFileW(At(L"live.txt").c_str());
    EXPECT_TRUE(::RemoveDirectoryW(kPlace)) << "error " << ::GetLastError();
}
