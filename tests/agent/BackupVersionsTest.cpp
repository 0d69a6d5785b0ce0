// The versions of a backup: how they are created, linked, listed and removed.

#include "tests/support/AgentTest.h"

class BackupVersionsTest : public AgentTest {
protected:
    Json BackUp(std::vector<std::wstring> options = {}, DWORD exitCode = 0) const
    {
        options.insert(options.begin(), {L"backup", live.Root(), Backup()});
        return RunForJson(options, exitCode);
    }

    // How many names a file has.
    static DWORD LinksOf(const std::wstring& path)
    {
        const HANDLE file = ::CreateFileW(path.c_str(), 0, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr);
        BY_HANDLE_FILE_INFORMATION information = {};
        ::GetFileInformationByHandle(file, &information);
        ::CloseHandle(file);
        return information.nNumberOfLinks;
    }

    std::wstring In(std::size_t version, const std::wstring& name) const
    {
        return Backup() + L"\\" + Versions().at(version) + L"\\" + name;
    }
};

TEST_F(BackupVersionsTest, EachRunWritesAnewOneAndLeavesTheOlderAsItWas)
{
    live.File(L"a.txt", "first");
    BackUp();
    const std::string manifest = ReadFileBytes(ManifestPath());
    live.File(L"a.txt", "second!");
    BackUp();
    ASSERT_EQ(2U, Versions().size());
    EXPECT_EQ("first", ReadFileBytes(In(0, L"a.txt")));
    EXPECT_EQ(manifest, ReadFileBytes(In(0, L"kestrovane-manifest.json")));
    EXPECT_EQ("second!", ReadFileBytes(In(1, L"a.txt")));
}

TEST_F(BackupVersionsTest, LinkWhatDidNotChangeAndCountTheRest)
{
    live.File(L"same.txt", "same");
    live.File(L"changed.txt", "old");
    live.File(L"removed.txt", "gone");
    const auto first = BackUp();
    EXPECT_EQ(3, first["new"]);
    live.File(L"changed.txt", "newer");
    live.File(L"added.txt", "added");
    ::DeleteFileW(live.Path(L"removed.txt").c_str());
    const auto second = BackUp();
    EXPECT_EQ(1, second["new"]);
    EXPECT_EQ(1, second["changed"]);
    EXPECT_EQ(1, second["unchanged"]);
    EXPECT_EQ(1, second["removed"]);
    EXPECT_EQ(3, second["files"]);
    EXPECT_EQ(2U, LinksOf(In(1, L"same.txt")));
    EXPECT_EQ(1U, LinksOf(In(1, L"changed.txt")));
    EXPECT_EQ("old", ReadFileBytes(In(0, L"changed.txt")));
}

TEST_F(BackupVersionsTest, CopyAnUnchangedFileWhoseFormerCopyWasCut)
{
    live.File(L"a.txt", "whole");
    BackUp();
    WriteFileBytes(In(0, L"a.txt"), "who");
    BackUp();
    EXPECT_EQ("whole", ReadFileBytes(In(1, L"a.txt")));
}

TEST_F(BackupVersionsTest, RejectATargetThatHoldsAnythingElse)
{
    live.File(L"a.txt");
    BackUp();
    WriteFileBytes(Backup() + L"\\letter.txt", "mine");
    const auto report = BackUp({}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("letter.txt"));
    EXPECT_EQ("mine", ReadFileBytes(Backup() + L"\\letter.txt"));
}

TEST_F(BackupVersionsTest, RejectATargetThatHoldsTheBackupOfAnotherDirectory)
{
    live.File(L"one\\a.txt");
    live.File(L"two\\b.txt");
    RunForJson({L"backup", live.Path(L"one"), Backup()}, 0);
    const auto report = RunForJson({L"backup", live.Path(L"two"), Backup()}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find(Utf8(live.Path(L"one"))));
    EXPECT_EQ(1U, Versions().size());
}

TEST_F(BackupVersionsTest, KeepRemovesTheOldestCompleteOnes)
{
    live.File(L"a.txt", "content");
    for (int run = 0; run < 4; ++run) {
        BackUp();
    }
    const StringList before = Versions();
    const auto report = BackUp({L"--keep", L"2"});
    EXPECT_EQ(3, report["removedVersions"]);
    const StringList after = Versions();
    ASSERT_EQ(2U, after.size());
    EXPECT_EQ(before[3], after[0]);
    EXPECT_EQ("content", ReadFileBytes(In(0, L"a.txt")));
    EXPECT_EQ("content", ReadFileBytes(In(1, L"a.txt")));
}

TEST_F(BackupVersionsTest, KeepRemovesNothingAfterAnIncompleteRun)
{
    live.File(L"a.txt");
    live.File(L"b.txt");
    BackUp();
    BackUp();
    const LockedFile held(live.File(L"a.txt", "busy"), GENERIC_READ, 0);
    BackUp({L"--keep", L"1"}, 3);
    EXPECT_EQ(3U, Versions().size());
    EXPECT_FALSE(Manifest()["complete"].get<bool>());
}

TEST_F(BackupVersionsTest, AfterAnIncompleteRunLinkWhatItAndTheCompleteOneHold)
{
    live.File(L"a.txt", "unchanged");
    live.File(L"b.txt", "first");
    live.File(L"c.txt", "first");
    BackUp();
    live.File(L"b.txt", "second!");
    live.File(L"c.txt", "second!");
    {
        const LockedFile held(live.Path(L"b.txt"), GENERIC_READ, 0);
        BackUp({L"--exclude", L"a.txt"}, 3); // holds c.txt alone
    }
    const auto report = BackUp();
    EXPECT_EQ(2, report["unchanged"]);
    EXPECT_EQ(1, report["changed"]);
    EXPECT_EQ(0, report["new"]);
    RunForJson({L"verify", Backup()}, 0);
}

TEST_F(BackupVersionsTest, ARestoreTakesTheNewestCompleteOne)
{
    live.File(L"a.txt", "complete");
    live.File(L"b.txt");
    BackUp();
    {
        const LockedFile held(live.File(L"b.txt", "busy"), GENERIC_READ, 0);
        live.File(L"a.txt", "incomplete");
        BackUp({}, 3);
    }
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("complete", ReadFileBytes(live.Path(L"a.txt")));
}

TEST_F(BackupVersionsTest, AreListedWithTheirStates)
{
    live.File(L"a.txt", "12345");
    BackUp();
    ::CreateDirectoryW((Backup() + L"\\2020-01-01T00-00-00Z").c_str(), nullptr); // what a killed backup leaves
    const auto report = RunForJson({L"versions", Backup()}, 0);
    ASSERT_EQ(2, report["count"]);
    EXPECT_EQ("unfinished", report["versions"][0]["state"]);
    EXPECT_EQ("complete", report["versions"][1]["state"]);
    EXPECT_EQ(1, report["versions"][1]["files"]);
    EXPECT_EQ(5, report["versions"][1]["bytes"]);
    EXPECT_EQ(Utf8(Versions()[1]), report["versions"][1]["name"]);
    RunForJson({L"versions", store.Path(L"missing")}, 1);
}

TEST_F(BackupVersionsTest, AKilledRunLeavesTheOlderOnesAndNoManifest)
{
    for (int i = 0; i < 40; ++i) {
        live.File(L"f" + std::to_wstring(i), SampleBytes(300000, static_cast<unsigned>(i)));
    }
    BackUp();
    const std::string manifest = ReadFileBytes(ManifestPath());
    for (int i = 0; i < 40; ++i) {
        live.File(L"f" + std::to_wstring(i), SampleBytes(300001, static_cast<unsigned>(i)));
    }
    {
        AgentProcess agent({L"backup", live.Root(), Backup()});
        while (Versions().size() < 2) {
            ::Sleep(1);
        }
        agent.Kill();
    }
    ASSERT_EQ(2U, Versions().size());
    EXPECT_FALSE(PathExists(ManifestPath()));
    EXPECT_EQ(manifest, ReadFileBytes(In(0, L"kestrovane-manifest.json")));
    EXPECT_EQ(40, RunForJson({L"verify", Backup()}, 0)["verified"]);
    EXPECT_EQ(40, BackUp()["files"]);
}

TEST_F(BackupVersionsTest, OfFormat1AreListedShownAndVerified)
{
    live.File(L"a.txt", "abc");
    BackUp();
    // A backup of format 1: the files and the manifest directly in the target, directories as strings.
    auto manifest = Manifest();
    manifest["format"] = 1;
    manifest.erase("manifestSha256");
    manifest["directories"] = {"sub"};
    store.File(L"flat\\a.txt", "abc");
    store.File(L"flat\\kestrovane-manifest.json", manifest.dump());
    EXPECT_EQ(1, RunForJson({L"versions", store.Path(L"flat")}, 0)["count"]);
    EXPECT_EQ(1, RunForJson({L"verify", store.Path(L"flat")}, 0)["verified"]);
    EXPECT_EQ("sub", RunForJson({L"show", store.Path(L"flat")}, 0)["directories"][0]["name"]);
    ::DeleteFileW(live.Path(L"a.txt").c_str());
    RunForJson({L"restore", store.Path(L"flat")}, 0);
    EXPECT_EQ("abc", ReadFileBytes(live.Path(L"a.txt")));
}
