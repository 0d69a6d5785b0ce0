// The agent's verify and show commands.

#include "tests/support/AgentTest.h"

using VerifyCommandTest = AgentTest;
using ShowCommandTest = AgentTest;

TEST_F(VerifyCommandTest, OfAWholeBackupFindsEveryFile)
{
    MakeLiveTree();
    MakeBackup();
    const auto report = RunForJson({L"verify", Backup()}, 0);
    EXPECT_EQ(6, report["verified"]);
    EXPECT_EQ(5 + 0 + 8192 + 8193 + 100000 + 5, report["bytes"]);
}

TEST_F(VerifyCommandTest, NamesEveryDamagedCopy)
{
    MakeLiveTree();
    MakeBackup();
    WriteFileBytes(Copy(L"a.txt"), "HELLO");
    WriteFileBytes(Copy(L"block.bin"), "short");
    ::DeleteFileW(Copy(LR"(sub\b.log)").c_str());
    const auto report = RunForJson({L"verify", Backup()}, 3);
    EXPECT_EQ(3, report["verified"]);
    ASSERT_EQ(3, report["failed"]);
    EXPECT_EQ(Utf8(Copy(L"a.txt")), report["failures"][0]["file"]);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("content"));
    EXPECT_NE(std::string::npos, report["failures"][1]["reason"].get<std::string>().find("5 bytes, not 8192"));
    EXPECT_NE(std::string::npos, report["failures"][2]["reason"].get<std::string>().find("(error 2)"));
}

TEST_F(VerifyCommandTest, TakesAnotherVersionByName)
{
    live.File(L"a.txt", "first");
    MakeBackup();
    live.File(L"a.txt", "second");
    MakeBackup();
    WriteFileBytes(Backup() + L"\\" + Versions()[0] + L"\\a.txt", "FIRST");
    RunForJson({L"verify", Backup()}, 0);
    RunForJson({L"verify", Backup(), L"--at", Versions()[0]}, 3);
    RunForJson({L"verify", Backup(), L"--at", L"..\\elsewhere"}, 1);
}

TEST_F(VerifyCommandTest, WithoutAManifestIsNothingDone)
{
    const auto report = RunForJson({L"verify", store.Root()}, 1);
    EXPECT_EQ(Utf8(store.Path(L"kestrovane-manifest.json")), report["failures"][0]["file"]);
}

TEST_F(ShowCommandTest, ListsFilesWithSizesAndTimes)
{
    MakeLiveTree();
    MakeBackup();
    const auto report = RunForJson({L"show", Backup()}, 0);
    EXPECT_EQ(Utf8(live.Root()), report["original"]);
    ASSERT_EQ(6, report["fileCount"]);
    EXPECT_EQ("a.txt", report["files"][0]["name"]);
    EXPECT_EQ(5, report["files"][0]["size"]);
    EXPECT_EQ('Z', report["files"][0]["modified"].get<std::string>().back());
    EXPECT_EQ("sub", report["directories"][0]["name"]);
    EXPECT_NE(std::string::npos, RunAgent({L"show", Backup()}).output.find("sub\\deeper\\c.txt"));
}

TEST_F(VerifyCommandTest, RejectsAnOriginalDirectoryThatIsNotNormalised)
{
    live.File(L"a.txt");
    MakeBackup();
    auto manifest = Manifest();
    const std::wstring path = ManifestPath();
    for (const std::string& original :
         {std::string(R"(C:\HT\..\..\esc)"), std::string(R"(C:\a\.\b)"), std::string("C:a"), std::string(R"(\\?\C:\a)"),
          std::string(R"(C:\a:stream)"), std::string("C:\\a\0b", 6), std::string(R"(C:\a\)"), std::string("C:/a"),
          std::string(R"(\\server)"), std::string(R"(C:\NUL)"), std::string("relative"), std::string()}) {
        manifest["original"] = original;
        WriteFileBytes(path, manifest.dump());
        const auto report = RunForJson({L"verify", Backup()}, 1);
        EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("original")) << original;
    }
}

TEST_F(VerifyCommandTest, RejectsAStoredNameThatLeavesTheVersion)
{
    live.File(L"a.txt", "mine");
    store.File(L"outside.txt", "mine");
    MakeBackup();
    auto manifest = Manifest();
    manifest["files"][0]["stored"] = "..\\..\\outside.txt";
    WriteFileBytes(ManifestPath(), manifest.dump());
    const auto report = RunForJson({L"verify", Backup()}, 3);
    EXPECT_EQ(0, report["verified"]);
    EXPECT_EQ("a.txt", report["failures"][0]["file"]);
}
