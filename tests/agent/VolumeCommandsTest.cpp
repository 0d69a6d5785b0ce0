// The agent's commands on volumes, snapshots, owners and the platform.

#include "tests/support/AgentTest.h"

#include <Kestrovane.h>

using VolumesCommandTest = AgentTest;
using ResolveCommandTest = AgentTest;
using SnapshotBackupTest = AgentTest;
using OwnCommandTest = AgentTest;
using PlatformCommandTest = AgentTest;

TEST_F(VolumesCommandTest, ShowsEveryMountPathAndMarksOne)
{
    const auto volumes = RunForJson({L"volumes"}, 0)["volumes"];
    std::vector<std::string> mountPaths;
    int withMostFree = 0;
    for (const auto& volume : volumes) {
        mountPaths.push_back(volume["mountPath"]);
        withMostFree += volume["mostFreeSpace"].get<bool>() ? 1 : 0;
        EXPECT_LT(0.0, volume["totalGigabytes"].get<double>());
        EXPECT_LE(volume["freeGigabytes"].get<double>(), volume["totalGigabytes"].get<double>());
    }
    EXPECT_EQ((std::vector<std::string>{"C:\\", "D:\\"}), mountPaths);
    EXPECT_EQ(1, withMostFree);
    EXPECT_NE(std::string::npos, RunAgent({L"volumes"}).output.find("D:\\"));
}

TEST_F(ResolveCommandTest, ShowsTheVolumeAndThePartsOfAPath)
{
    const auto report = RunForJson({L"resolve", LR"(D:\dir\f.tar.gz)"}, 0);
    EXPECT_FALSE(report["volumeRoot"].get<bool>());
    EXPECT_EQ("D:\\", report["mountPath"]);
    EXPECT_EQ("D", report["drive"]);
    EXPECT_EQ("D:\\dir", report["directory"]);
    EXPECT_EQ("f.tar.gz", report["name"]);
    EXPECT_EQ(Utf8(GetUniqueVolumeNameForPath(L"D:\\")), report["uniqueName"]);
    EXPECT_TRUE(RunForJson({L"resolve", L"D:"}, 0)["volumeRoot"].get<bool>());
}

TEST_F(ResolveCommandTest, OfAPathWithoutAVolumeIsAnError)
{
    RunForJson({L"resolve", L""}, 2);
    RunForJson({L"resolve", LR"(Q:\dir)"}, 1);
}

TEST_F(SnapshotBackupTest, HoldsWhatTheSnapshotHolds)
{
    // A directory stands for the device: C:\dir\f is read from <device>\dir\f.
    const std::wstring inSnapshot = store.Path(L"device\\" + live.Root().substr(3));
    live.File(L"changed.txt", "after");
    live.File(L"new.txt", "after");
    store.File(L"device\\" + live.Path(L"changed.txt").substr(3), "before");
    store.File(L"device\\" + live.Path(LR"(sub\deleted.txt)").substr(3), "before");
    const auto report =
        RunForJson({L"backup", live.Root(), Backup(), L"--snapshot", L"C:=" + store.Path(L"device")}, 0);
    EXPECT_EQ(2, report["files"]);
    EXPECT_EQ("before", ReadFileBytes(Copy(L"changed.txt")));
    EXPECT_EQ("before", ReadFileBytes(Copy(LR"(sub\deleted.txt)")));
    EXPECT_FALSE(PathExists(Copy(L"new.txt")));
    EXPECT_EQ("after", ReadFileBytes(live.Path(L"changed.txt")));
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("before", ReadFileBytes(live.Path(L"changed.txt")));
}

TEST_F(SnapshotBackupTest, TakesAVolumeNameAndATrailingBackslash)
{
    store.File(L"device\\" + live.Path(L"a.txt").substr(3), "before");
    const std::wstring volume = GetUniqueVolumeNameForPath(L"C:\\");
    RunForJson({L"backup", live.Root(), Backup(), L"--snapshot", volume + L"=" + store.Path(L"device\\")}, 0);
    EXPECT_EQ("before", ReadFileBytes(Copy(L"a.txt")));
}

TEST_F(SnapshotBackupTest, OfAVolumeWithoutASnapshotCopiesNothing)
{
    live.File(L"a.txt");
    store.Directory(L"device");
    RunForJson({L"backup", live.Root(), Backup(), L"--snapshot", L"D:=" + store.Path(L"device")}, 1);
    EXPECT_FALSE(PathExists(Backup()));
}

TEST_F(SnapshotBackupTest, OfADeviceThatCannotBeOpenedCopiesNothing)
{
    live.File(L"a.txt");
    RunForJson({L"backup", live.Root(), Backup(), L"--snapshot", L"C:=" + store.Path(L"missing")}, 1);
    RunForJson({L"backup", live.Root(), Backup(), L"--snapshot", L"no equals sign"}, 1);
    EXPECT_FALSE(PathExists(Backup()));
}

TEST_F(OwnCommandTest, WithoutYesShowsWhatWouldChange)
{
    live.Files({L"a", LR"(sub\b)"});
    const auto report = RunForJson({L"own", live.Root(), L"Everyone"}, 0);
    EXPECT_EQ(2, report["files"]);
    EXPECT_EQ(2, report["directories"]);
    EXPECT_EQ(0, report["owned"]);
}

TEST_F(OwnCommandTest, ChangesEveryObject)
{
    live.Files({L"a", LR"(sub\b)"});
    EXPECT_EQ(4, RunForJson({L"own", live.Root(), L"Everyone", L"--yes"}, 0)["owned"]);
    EXPECT_EQ(1, RunForJson({L"own", live.Path(L"a"), L"LocalSystem", L"--yes"}, 0)["owned"]);
}

TEST_F(OwnCommandTest, NamesAnUnknownAccountAndAMissingPath)
{
    const auto report = RunForJson({L"own", live.Root(), L"nobody knows", L"--yes"}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("error 1332"));
    RunForJson({L"own", live.Path(L"missing"), L"Everyone", L"--yes"}, 1);
    RunForJson({L"own", L"", L"Everyone", L"--yes"}, 2);
}

TEST_F(OwnCommandTest, RestoreGivesItsFilesAnOwner)
{
    live.Files({L"a", LR"(sub\b)", LR"(sub\c)"});
    MakeBackup();
    ::DeleteFileW(live.Path(LR"(sub\b)").c_str());
    ::DeleteFileW(live.Path(LR"(sub\c)").c_str());
    ::RemoveDirectoryW(live.Path(L"sub").c_str());
    live.File(L"not restored");
    const auto report = RunForJson({L"restore", Backup(), L"--owner", L"Everyone"}, 0);
    EXPECT_EQ(4, report["owned"]) << "the new directory, its two files and the replaced file";
    live.File(L"a", "live");
    const auto failed = RunForJson({L"restore", Backup(), L"--owner", L"nobody knows"}, 1);
    EXPECT_EQ("nobody knows", failed["failures"][0]["file"]);
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a"))) << "nothing may be restored for an unknown account";
}

TEST_F(PlatformCommandTest, ShowsBothAnswersOfTheLibrary)
{
    const auto report = RunForJson({L"platform"}, 0);
    EXPECT_EQ(IsRunsOnWinXP() != 0, report["windowsXp"].get<bool>());
    EXPECT_EQ(IsRunOnWin2003SP1Up() != 0, report["server2003Sp1OrLater"].get<bool>());
}
