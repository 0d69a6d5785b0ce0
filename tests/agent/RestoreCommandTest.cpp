// The agent's restore, from the command line to the last byte.

#include "tests/support/AgentTest.h"

using RestoreCommandTest = AgentTest;

TEST_F(RestoreCommandTest, RestoresDamagedAndDeletedFiles)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "damaged");
    ::DeleteFileW(live.Path(L"block.bin").c_str());
    const auto report = RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ(6, report["restored"]);
    for (const auto& [name, bytes] : LiveFiles()) {
        EXPECT_EQ(bytes, ReadFileBytes(live.Path(name))) << Utf8(name);
    }
}

TEST_F(RestoreCommandTest, CreatesEmptyDirectoriesAgain)
{
    live.Directory(LR"(empty\below)");
    MakeBackup();
    ::RemoveDirectoryW(live.Path(LR"(empty\below)").c_str());
    ::RemoveDirectoryW(live.Path(L"empty").c_str());
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_TRUE(IsDirectory(live.Path(LR"(empty\below)")));
}

TEST_F(RestoreCommandTest, SendsMappedFilesElsewhereAndLeavesTheirLiveFilesAlone)
{
    MakeLiveTree();
    MakeBackup();
    live.File(LR"(sub\b.log)", "newer");
    const std::wstring other = store.Path(L"other");
    const auto report = RunForJson({L"restore", Backup(), L"--unmapped", L"in-place", L"--map",
                                    live.Path(L"sub") + L"\\=" + other + L"\\;*;recursive"},
                                   0);
    EXPECT_EQ(2, report["mapped"]);
    EXPECT_EQ(6, report["restored"]);
    EXPECT_EQ("newer", ReadFileBytes(live.Path(LR"(sub\b.log)")));
    EXPECT_EQ(SampleBytes(8193), ReadFileBytes(other + L"\\b.log"));
    EXPECT_EQ(SampleBytes(100000), ReadFileBytes(other + LR"(\deeper\c.txt)"));
}

TEST_F(RestoreCommandTest, TheFirstMappingThatCoversAFileDecides)
{
    MakeLiveTree();
    MakeBackup();
    const std::wstring first = store.Path(L"first");
    const std::wstring second = store.Path(L"second");
    RunForJson({L"restore", Backup(), L"--map", live.Root() + L"=" + first + L";*.txt", L"--map",
                live.Root() + L"=" + second + L";*;recursive"},
               0);
    EXPECT_EQ("hello", ReadFileBytes(first + L"\\a.txt"));
    EXPECT_FALSE(PathExists(second + L"\\a.txt"));
    EXPECT_EQ(SampleBytes(8192), ReadFileBytes(second + L"\\block.bin"));
}

TEST_F(RestoreCommandTest, RejectsTwoFilesThatWouldGoToOnePlace)
{
    live.File(LR"(one\same.txt)", "1");
    live.File(LR"(two\same.txt)", "2");
    MakeBackup();
    const std::wstring other = store.Path(L"other");
    const auto report = RunForJson(
        {L"restore", Backup(), L"--map", live.Path(L"one") + L"=" + other, L"--map", live.Path(L"two") + L"=" + other},
        3);
    EXPECT_EQ(1, report["failed"]);
    EXPECT_EQ("1", ReadFileBytes(other + L"\\same.txt"));
}

TEST_F(RestoreCommandTest, NeverOverwritesWhereToldSo)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "mine");
    ::DeleteFileW(live.Path(L"empty").c_str());
    const auto report = RunForJson({L"restore", Backup(), L"--overwrite", L"never"}, 0);
    EXPECT_EQ(5, report["skipped"]);
    EXPECT_EQ("mine", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_TRUE(PathExists(live.Path(L"empty")));
}

TEST_F(RestoreCommandTest, IfNewerReplacesOlderFilesAlone)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "newer");
    const std::wstring old = live.File(L"block.bin", "older");
    const HANDLE file = ::CreateFileW(old.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr);
    const FILETIME longAgo = {0, 28000000};
    ::SetFileTime(file, nullptr, nullptr, &longAgo);
    ::CloseHandle(file);
    RunForJson({L"restore", Backup(), L"--overwrite", L"if-newer"}, 0);
    EXPECT_EQ("newer", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_EQ(SampleBytes(8192), ReadFileBytes(old));
}

TEST_F(RestoreCommandTest, ADryRunShowsThePlanAndChangesNothing)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "mine");
    const std::wstring other = store.Path(L"other");
    const auto report = RunForJson(
        {L"restore", Backup(), L"--dry-run", L"--unmapped", L"in-place", L"--map", live.Path(L"sub") + L"=" + other},
        0);
    EXPECT_EQ(6U, report["plan"].size());
    EXPECT_EQ("mine", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_FALSE(PathExists(other));
}

TEST_F(RestoreCommandTest, ADamagedCopyDoesNotReplaceTheLiveFile)
{
    MakeLiveTree();
    MakeBackup();
    WriteFileBytes(Copy(L"a.txt"), "HELLO");
    const auto report = RunForJson({L"restore", Backup()}, 3);
    EXPECT_EQ("hello", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_EQ(5, report["restored"]);
}

TEST_F(RestoreCommandTest, AMissingCopyIsNamedAndTheRestIsRestored)
{
    MakeLiveTree();
    MakeBackup();
    ::DeleteFileW((Copy(L"a.txt")).c_str());
    ::DeleteFileW(live.Path(L"block.bin").c_str());
    const auto report = RunForJson({L"restore", Backup()}, 3);
    EXPECT_EQ(Utf8(Copy(L"a.txt")), report["failures"][0]["file"]);
    EXPECT_TRUE(PathExists(live.Path(L"block.bin")));
}

TEST_F(RestoreCommandTest, ATruncatedManifestIsAnErrorThatNamesIt)
{
    MakeLiveTree();
    MakeBackup();
    const std::wstring manifest = ManifestPath();
    const std::string text = ReadFileBytes(manifest);
    for (const std::size_t length : {std::size_t{0}, std::size_t{1}, text.size() / 2, text.size() - 1}) {
        WriteFileBytes(manifest, text.substr(0, length));
        const auto report = RunForJson({L"restore", Backup()}, 1);
        EXPECT_EQ(Utf8(manifest), report["failures"][0]["file"]) << length;
    }
}

TEST_F(RestoreCommandTest, RejectsNamesThatLeaveTheirDirectory)
{
    live.File(L"good.txt", "good");
    MakeBackup();
    const std::wstring path = ManifestPath();
    auto manifest = nlohmann::json::parse(ReadFileBytes(path));
    const auto good = manifest["files"][0];
    for (const char* name : {"..\\evil", "sub\\..\\..\\evil", "C:\\evil", "\\evil", "good.txt:stream", "evil.", "evil ",
                             "../evil", "NUL", "sub\\com1.txt", "", "a\\\\b", "ev*l"}) {
        auto bad = good;
        bad["name"] = name;
        manifest["files"].push_back(bad);
    }
    WriteFileBytes(path, manifest.dump());
    ::DeleteFileW(live.Path(L"good.txt").c_str());
    const auto report = RunForJson({L"restore", Backup()}, 3);
    EXPECT_EQ(13, report["failed"]);
    EXPECT_EQ(1, report["restored"]);
    EXPECT_EQ("good", ReadFileBytes(live.Path(L"good.txt")));
}

TEST_F(RestoreCommandTest, APathThatDoesNotFitIsAnErrorThatNamesTheFile)
{
    live.File(L"a.txt", "a");
    live.File(L"b.txt", "b");
    MakeBackup();
    const std::wstring deep = store.Root() + L"\\" + std::wstring(240, L'd');
    const auto report = RunForJson(
        {L"restore", Backup(), L"--map", live.Root() + L"=" + deep + L";a.txt", L"--unmapped", L"in-place"}, 3);
    EXPECT_EQ(Utf8(deep + L"\\a.txt"), report["failures"][0]["file"]);
    EXPECT_EQ(1, report["restored"]);
    EXPECT_FALSE(PathExists(deep));
}
