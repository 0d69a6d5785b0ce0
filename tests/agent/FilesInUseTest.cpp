// The agent's restore of files that other programs have open, and what it registers for the reboot.

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

TEST_F(FilesInUseTest, AreReplacedAtTheNextReboot)
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

TEST_F(FilesInUseTest, RegisteredAgainAreRegisteredOnce)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const LockedFile held(live.File(L"a.txt", "busy"), GENERIC_READ, FILE_SHARE_READ);
    RunForJson({L"restore", Backup()}, 4);
    const StringList first = CacheFilesIn(live.Root());
    RunForJson({L"restore", Backup()}, 4);
    const StringList caches = CacheFilesIn(live.Root());
    ASSERT_EQ(1U, first.size());
    ASSERT_EQ(1U, caches.size());
    EXPECT_EQ(1U, pending.Entries().size());
    EXPECT_TRUE(pending.ReplacesAtRestart(caches[0], live.Path(L"a.txt")));
}

TEST_F(FilesInUseTest, RestoredInPlaceLaterAreNotReplacedAtTheReboot)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    {
        const LockedFile held(live.File(L"a.txt", "busy"), GENERIC_READ, FILE_SHARE_READ);
        RunForJson({L"restore", Backup()}, 4);
    }
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("hello", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_TRUE(pending.Entries().empty());
    EXPECT_EQ(0U, CacheFilesIn(live.Root()).size());
}

TEST_F(FilesInUseTest, OfOtherProgramsKeepTheirRegistrations)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const PendingEntry foreign = {LR"(\??\)" + live.File(L"setup.tmp"), LR"(!\??\)" + live.Path(L"a.txt")};
    const PendingEntry deletion = {LR"(\??\)" + live.Path(L"gone.tmp"), L""};
    pending.Write({foreign, deletion});
    {
        const LockedFile held(live.Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
        RunForJson({L"restore", Backup()}, 4);
    }
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ((std::vector<PendingEntry>{foreign, deletion}), pending.Entries());
    EXPECT_TRUE(PathExists(live.Path(L"setup.tmp")));
}

TEST_F(FilesInUseTest, ThatAreReadOnlyAreWritableForTheReboot)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const std::wstring busy = live.File(L"a.txt", "busy");
    ::SetFileAttributesW(busy.c_str(), FILE_ATTRIBUTE_READONLY);
    const LockedFile held(busy, GENERIC_READ, FILE_SHARE_READ);
    RunForJson({L"restore", Backup()}, 4);
    EXPECT_EQ(0U, ::GetFileAttributesW(busy.c_str()) & FILE_ATTRIBUTE_READONLY);
}

using PendingCancelTest = FilesInUseTest;

TEST_F(PendingCancelTest, TakesOneRegistrationBackAndDeletesItsCacheFile)
{
    live.Files({L"a.txt", L"b.txt"});
    MakeBackup();
    const LockedFile a(live.Path(L"a.txt"), GENERIC_READ, FILE_SHARE_READ);
    const LockedFile b(live.Path(L"b.txt"), GENERIC_READ, FILE_SHARE_READ);
    RunForJson({L"restore", Backup()}, 4);
    EXPECT_EQ(2, RunForJson({L"pending"}, 0)["count"]);
    EXPECT_EQ(1, RunForJson({L"pending", L"--cancel", live.Path(L"A.TXT")}, 0)["cancelled"]);
    EXPECT_EQ(1U, CacheFilesIn(live.Root()).size());
    ASSERT_EQ(1U, pending.Entries().size());
    EXPECT_EQ(1, RunForJson({L"pending", L"--cancel", L"--all"}, 0)["cancelled"]);
    EXPECT_EQ(0U, CacheFilesIn(live.Root()).size());
    EXPECT_TRUE(pending.Entries().empty());
}

TEST_F(PendingCancelTest, LeavesWhatOtherProgramsHaveRegistered)
{
    const std::vector<PendingEntry> foreign = {
        {LR"(\??\)" + live.File(L"setup.tmp"), LR"(!\??\)" + live.Path(L"a.txt")}};
    pending.Write(foreign);
    EXPECT_EQ(0, RunForJson({L"pending", L"--cancel", L"--all"}, 0)["cancelled"]);
    const auto report = RunForJson({L"pending", L"--cancel", live.Path(L"a.txt")}, 1);
    EXPECT_EQ(Utf8(live.Path(L"a.txt")), report["failures"][0]["file"]);
    EXPECT_EQ(foreign, pending.Entries());
    EXPECT_TRUE(PathExists(live.Path(L"setup.tmp")));
}

TEST_F(PendingCancelTest, TakesATargetOrAllAndNothingElse)
{
    RunForJson({L"pending", L"--cancel"}, 2);
    RunForJson({L"pending", L"--all"}, 2);
    RunForJson({L"pending", L"C:\\a"}, 2);
    RunForJson({L"pending", L"--cancel", L"C:\\a", L"--all"}, 2);
    RunForJson({L"pending", L"--cancel", L"C:\\a"}, 1);
}
