// The agent's backup, from the command line to the last byte.

#include "tests/support/AgentTest.h"

using BackupCommandTest = AgentTest;

TEST_F(BackupCommandTest, CopiesEveryFileAndNamesItInTheManifest)
{
    MakeLiveTree();
    const auto report = RunForJson({L"backup", live.Root(), Backup()}, 0);
    EXPECT_EQ(6, report["files"]);
    const auto manifest = Manifest();
    EXPECT_EQ(Utf8(live.Root()), manifest["original"]);
    EXPECT_EQ(6U, manifest["files"].size());
    for (const auto& [name, bytes] : LiveFiles()) {
        EXPECT_EQ(bytes, ReadFileBytes(Copy(name))) << Utf8(name);
    }
}

TEST_F(BackupCommandTest, RecordsTheDigestThatAnyoneElseComputes)
{
    live.File(L"abc", "abc");
    MakeBackup();
    const auto manifest = Manifest();
    EXPECT_EQ(3, manifest["files"][0]["size"]);
    EXPECT_EQ("ba7816bf8f01cfea414140de5dae2223b00361a396177a9cb410ff61f20015ad", manifest["files"][0]["sha256"]);
}

TEST_F(BackupCommandTest, NamesAFileInUseAndBacksTheRestUp)
{
    MakeLiveTree();
    const LockedFile held(live.Path(L"a.txt"), GENERIC_READ, 0);
    const auto report = RunForJson({L"backup", live.Root(), Backup()}, 3);
    EXPECT_EQ(5, report["files"]);
    ASSERT_EQ(1U, report["failures"].size());
    EXPECT_EQ(Utf8(live.Path(L"a.txt")), report["failures"][0]["file"]);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("(error 32)"));
}

TEST_F(BackupCommandTest, RefusesATargetInsideTheSource)
{
    MakeLiveTree();
    RunForJson({L"backup", live.Root(), live.Path(L"sub\\backup")}, 1);
    EXPECT_FALSE(PathExists(live.Path(L"sub\\backup")));
}

TEST_F(BackupCommandTest, OfAMissingDirectoryDoesNothing)
{
    RunForJson({L"backup", live.Path(L"missing"), Backup()}, 1);
    EXPECT_FALSE(PathExists(Backup()));
}
