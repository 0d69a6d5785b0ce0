// The agent's restore over files that other processes hold, and its protection of live files.

#include "tests/support/AgentTest.h"
#include "tests/support/FileLockerProcess.h"
#include "tests/support/PendingList.h"

class FilesInUseTest : public AgentTest {
protected:
    FilesInUseTest() { ::SetEnvironmentVariableW(L"TMP", temporary.Root().c_str()); }
    ~FilesInUseTest() override { ::SetEnvironmentVariableW(L"TMP", nullptr); }

    StringList CacheFilesIn(const std::wstring& directory) const
    {
        StringList names;
        WIN32_FIND_DATAW entry = {};
        const HANDLE search = ::FindFirstFileW((directory + L"\\kv*.tmp").c_str(), &entry);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                names.push_back(directory + L"\\" + entry.cFileName);
            } while (::FindNextFileW(search, &entry));
            ::FindClose(search);
        }
        return names;
    }

    TestDirectory temporary;
    PendingList pending;
};

TEST_F(FilesInUseTest, AreReplacedAtTheNextRestart)
{
    MakeLiveTree();
    MakeBackup();
    const std::wstring busy = live.File(L"a.txt", "busy");
    const FileLockerProcess holder(busy, GENERIC_READ, FILE_SHARE_READ);
    const auto report = RunForJson({L"restore", Backup()}, 4);
    EXPECT_EQ(1, report["replacedAtRestart"]);
    EXPECT_EQ(5, report["restored"]);
    EXPECT_EQ("busy", ReadFileBytes(busy));
    const StringList caches = CacheFilesIn(live.Root());
    ASSERT_EQ(1U, caches.size());
    EXPECT_EQ("hello", ReadFileBytes(caches[0]));
    EXPECT_TRUE(pending.ReplacesAtRestart(caches[0], busy));
}

TEST_F(FilesInUseTest, HaveTheirCacheFileInTheTemporaryDirectoryWhereAsked)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const LockedFile held(live.File(L"a.txt", "busy"), GENERIC_READ, FILE_SHARE_READ);
    RunForJson({L"restore", Backup(), L"--temp-cache"}, 4);
    EXPECT_EQ(0U, CacheFilesIn(live.Root()).size());
    EXPECT_EQ(1U, CacheFilesIn(temporary.Root()).size());
}

TEST_F(FilesInUseTest, HaveTheirCacheFileBesideThemWhereTheTemporaryDirectoryIsOnAnotherVolume)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const LockedFile held(live.File(L"a.txt", "busy"), GENERIC_READ, FILE_SHARE_READ);
    ::SetEnvironmentVariableW(L"TMP", store.Root().c_str());
    RunForJson({L"restore", Backup(), L"--temp-cache"}, 4);
    EXPECT_EQ(1U, CacheFilesIn(live.Root()).size());
    EXPECT_EQ(0U, CacheFilesIn(store.Root()).size());
}

TEST_F(FilesInUseTest, OnAShareAreAFailureThatSaysWhy)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    share.File(L"a.txt", "hello");
    RunForJson({L"backup", share.Root(), Backup()}, 0);
    const LockedFile held(share.File(L"a.txt", "busy"), GENERIC_READ, FILE_SHARE_READ);
    const auto report = RunForJson({L"restore", Backup()}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("share"));
    EXPECT_TRUE(pending.Entries().empty());
    EXPECT_EQ(0U, CacheFilesIn(share.Root()).size());
}

TEST_F(FilesInUseTest, LeaveNoCacheFileWhereTheBackupIsDamaged)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    WriteFileBytes(Copy(L"a.txt"), "damaged");
    const LockedFile held(live.Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
    RunForJson({L"restore", Backup()}, 1);
    EXPECT_EQ(0U, CacheFilesIn(live.Root()).size());
    EXPECT_TRUE(pending.Entries().empty());
}

TEST_F(FilesInUseTest, ProtectionLeavesNoCopiesBehind)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "old");
    RunForJson({L"restore", Backup(), L"--protect-live"}, 0);
    EXPECT_EQ("hello", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_EQ(0U, CacheFilesIn(temporary.Root()).size());
    EXPECT_FALSE(PathExists(Backup() + L"\\kestrovane-restore.journal"));
}

TEST_F(FilesInUseTest, AFileThatCannotBeProtectedIsLeftAlone)
{
    live.File(L"a.txt", "hello");
    live.File(L"b.txt", "hello");
    MakeBackup();
    live.File(L"a.txt", "old");
    // No directory for the copies can be made where a file is.
    ::SetEnvironmentVariableW(L"TMP", live.File(L"no-directory").c_str());
    const auto report = RunForJson({L"restore", Backup(), L"--protect-live"}, 1);
    EXPECT_EQ(2, report["failed"]);
    EXPECT_EQ("old", ReadFileBytes(live.Path(L"a.txt")));
}
