// Where the agent's restore writes: its own places, mappings, one directory, and never anywhere else.

#include "tests/support/AgentOutside.h"
#include "tests/support/AgentTest.h"

class RestorePlaceTest : public AgentTest {
protected:
    static constexpr const char* kSecret = "a file that no restore may touch";

    // Changes the manifest of the newest version.
    template <typename Change>
    void EditManifest(Change change) const
    {
        Json manifest = Manifest();
        change(manifest);
        WriteFileBytes(ManifestPath(), manifest.dump());
    }

    std::wstring other = store.Path(L"other");
};

TEST_F(RestorePlaceTest, AMappingThatCoversNoFileChangesNothing)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "live");
    for (const std::wstring& from : {live.Path(L"missing"), live.Root() + L"x", std::wstring(L"Q:\\")}) {
        const auto report =
            RunForJson({L"restore", Backup(), L"--unmapped", L"in-place", L"--map", from + L"=" + other}, 1);
        EXPECT_EQ(Utf8(from), report["failures"][0]["file"]);
    }
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_FALSE(PathExists(other));
}

TEST_F(RestorePlaceTest, AMappingWrittenWithSlashesChangesNothingAndSaysWhy)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "live");
    std::wstring from = live.Root();
    std::replace(from.begin(), from.end(), L'\\', L'/');
    const auto report = RunForJson({L"restore", Backup(), L"--map", from + L"=" + other + L";*;recursive"}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("backslashes"));
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_FALSE(PathExists(other));
}

TEST_F(RestorePlaceTest, FilesThatNoMappingCoversAreListedAndLeftOut)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "live");
    const std::vector<std::wstring> arguments = {L"restore", Backup(), L"--map",
                                                 live.Path(L"sub") + L"=" + other + L";*;recursive"};
    const auto report = RunForJson(arguments, 3);
    EXPECT_EQ(4, report["leftOut"]);
    EXPECT_EQ(4U, report["leftOutFiles"].size());
    EXPECT_EQ(2, report["restored"]);
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_NE(std::string::npos, RunAgent(arguments).output.find(Utf8(live.Path(L"a.txt"))));
}

TEST_F(RestorePlaceTest, ToTakesEverythingBelowOneDirectory)
{
    MakeLiveTree();
    live.Directory(L"nothing in it");
    MakeBackup();
    live.File(L"a.txt", "live");
    EditManifest([](Json& manifest) { manifest["original"] = R"(Q:\some\where)"; });
    // Done in part: the manifest is not what the backup has written.
    EXPECT_EQ(6, RunForJson({L"restore", Backup(), L"--to", other}, 3)["restored"]);
    for (const auto& [name, bytes] : LiveFiles()) {
        EXPECT_EQ(bytes, ReadFileBytes(other + L"\\" + name)) << Utf8(name);
    }
    EXPECT_TRUE(IsDirectory(other + L"\\nothing in it"));
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a.txt")));
}

TEST_F(RestorePlaceTest, ToAndMappingsExcludeEachOther)
{
    MakeLiveTree();
    MakeBackup();
    RunForJson({L"restore", Backup(), L"--to", other, L"--map", live.Root() + L"=" + other}, 2);
    EXPECT_FALSE(PathExists(other));
}

TEST_F(RestorePlaceTest, OnlyRestoresTheFilesThatFit)
{
    MakeLiveTree();
    live.Directory(L"nothing in it");
    MakeBackup();
    const auto report = RunForJson({L"restore", Backup(), L"--to", other, L"--only", L"*.LOG", L"--only", L"a.*"}, 0);
    EXPECT_EQ(2, report["restored"]);
    EXPECT_EQ("hello", ReadFileBytes(other + L"\\a.txt"));
    EXPECT_TRUE(PathExists(other + LR"(\sub\b.log)"));
    EXPECT_FALSE(PathExists(other + L"\\nothing in it"));
    EXPECT_FALSE(PathExists(other + L"\\empty"));
}

TEST_F(RestorePlaceTest, OnlyWithAPatternThatFitsNothingIsDoneInPartWithANote)
{
    MakeLiveTree();
    MakeBackup();
    const auto report = RunForJson({L"restore", Backup(), L"--to", other, L"--only", L"*.none"}, 3);
    EXPECT_EQ(0, report["restored"]);
    EXPECT_NE(std::string::npos, report["notes"].dump().find("*.none"));
    EXPECT_EQ(
        1, RunForJson({L"restore", Backup(), L"--to", other, L"--only", L"*.none", L"--only", L"a.*"}, 3)["restored"]);
    RunForJson({L"restore", Backup(), L"--only", LR"(sub\*)"}, 2);
}

TEST_F(RestorePlaceTest, AnOriginalDirectoryThatLeavesItsMappingIsRejected)
{
    live.File(L"a.txt", "evil");
    MakeBackup();
    for (const char* original : {R"(C:\HT\..\..\esc)", R"(C:\HT\..)", R"(C:\HT\.\x)", R"(C:/HT)", "HT", R"(\HT)", "C:",
                                 R"(C:\HT\a:b)", R"(C:\HT\NUL)", R"(C:\HT\\x)", R"(\\?\C:\HT)", R"(\\.\C:\HT)", ""}) {
        EditManifest([&](Json& manifest) { manifest["original"] = original; });
        RunForJson({L"restore", Backup(), L"--map", L"C:\\HT=" + other + L";*;recursive"}, 1);
        EXPECT_FALSE(PathExists(other)) << original;
        EXPECT_FALSE(PathExists(L"C:\\esc")) << original;
        EXPECT_FALSE(PathExists(store.Path(L"esc"))) << original;
    }
    EditManifest([&](Json& manifest) { manifest["original"] = std::string("C:\\HT\0\\x", 8); });
    RunForJson({L"restore", Backup(), L"--to", other}, 1);
}

TEST_F(RestorePlaceTest, HostileNamesStayBelowTheDirectory)
{
    live.File(L"good.txt", "good");
    MakeBackup();
    store.File(L"evil", kSecret);
    const Json good = Manifest()["files"][0];
    const std::vector<std::string> names = {
        R"(..\evil)", R"(sub\..\..\evil)", R"(C:\evil)",           R"(\evil)", "good.txt:s",    "NUL", "sub\\com1.x",
        "a\\\\b",     "../evil",           std::string("a\0b", 3), "evil.",    R"(\\?\C:\evil)"};
    EditManifest([&](Json& manifest) {
        for (const std::string& name : names) {
            for (const char* key : {"name", "stored"}) {
                Json bad = good;
                bad[key] = name;
                manifest["files"].push_back(bad);
            }
            manifest["directories"].push_back({{"name", name}});
        }
    });
    const auto report = RunForJson({L"restore", Backup(), L"--to", other}, 3);
    EXPECT_EQ(1, report["restored"]);
    EXPECT_EQ(3 * names.size(), report["failed"].get<std::size_t>());
    EXPECT_EQ(kSecret, ReadFileBytes(store.Path(L"evil")));
    EXPECT_EQ("good", ReadFileBytes(other + L"\\good.txt"));
}

TEST_F(RestorePlaceTest, NothingIsRestoredIntoTheBackupItself)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const std::wstring copy = Copy(L"a.txt");
    RunForJson({L"restore", Backup(), L"--to", Backup()}, 1);
    EXPECT_FALSE(PathExists(Backup() + L"\\a.txt"));
    EXPECT_EQ("hello", ReadFileBytes(copy));
}

TEST_F(RestorePlaceTest, NothingIsRestoredThroughALinkBelowTheDirectory)
{
    live.Files({LR"(sub\a.txt)", LR"(sub\deeper\b.txt)", L"c.txt"});
    MakeBackup();
    const std::wstring outside = store.Directory(L"outside");
    store.Directory(L"other");
    LinkFromOutside(outside, other + L"\\sub");
    const auto report = RunForJson({L"restore", Backup(), L"--to", other}, 3);
    EXPECT_EQ(1, report["restored"]);
    EXPECT_EQ(2, report["failed"]);
    EXPECT_FALSE(PathExists(outside + L"\\a.txt"));
    EXPECT_FALSE(PathExists(outside + L"\\deeper"));
}

TEST_F(RestorePlaceTest, AtTakesAnOlderVersion)
{
    live.File(L"a.txt", "first");
    MakeBackup();
    const std::wstring first = Versions().back();
    live.File(L"a.txt", "second");
    MakeBackup();
    RunForJson({L"restore", Backup(), L"--at", first}, 0);
    EXPECT_EQ("first", ReadFileBytes(live.Path(L"a.txt")));
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("second", ReadFileBytes(live.Path(L"a.txt")));
    RunForJson({L"restore", Backup(), L"--at", L"2000-01-01T00-00-00Z"}, 1);
    RunForJson({L"restore", Backup(), L"--at", L"..\\x"}, 1);
}

TEST_F(RestorePlaceTest, AnIncompleteBackupIsRestoredInPart)
{
    MakeLiveTree();
    MakeBackup();
    EditManifest([](Json& manifest) { manifest["complete"] = false; });
    EXPECT_EQ(6, RunForJson({L"restore", Backup()}, 3)["restored"]);
}

using MappingOptionsTest = RestorePlaceTest;

TEST_F(MappingOptionsTest, TakeEveryCharacterInGroups)
{
    live.File(L"a=b;c\\f.txt", "odd");
    live.File(L"a=b;c\\sub\\g.log", "log");
    live.File(L"plain\\h.txt", "plain");
    MakeBackup();
    const auto report =
        RunForJson({L"restore", Backup(), L"--map-from", live.Path(L"a=b;c"), L"--map-to", other + L";1=2",
                    L"--map-spec", L"*.txt", L"--map", live.Path(L"plain") + L"=" + other + L"\\plain", L"--map-from",
                    live.Root(), L"--map-to", other + L"\\rest", L"--map-recursive"},
                   0);
    EXPECT_EQ(3, report["mapped"]);
    EXPECT_EQ("odd", ReadFileBytes(other + L";1=2\\f.txt"));
    EXPECT_EQ("plain", ReadFileBytes(other + L"\\plain\\h.txt"));
    EXPECT_EQ("log", ReadFileBytes(other + L"\\rest\\a=b;c\\sub\\g.log"));
}

TEST_F(MappingOptionsTest, OutsideAGroupAreWrongUsage)
{
    const std::vector<std::vector<std::wstring>> wrong = {
        {L"--map-from", L"C:\\a"},
        {L"--map-to", L"C:\\b"},
        {L"--map-to", L"C:\\b", L"--map-from", L"C:\\a"},
        {L"--map-recursive", L"--map-from", L"C:\\a", L"--map-to", L"C:\\b"},
        {L"--map-from", L"C:\\a", L"--map-to", L"C:\\b", L"--map", L"C:\\c=C:\\d", L"--map-spec", L"*.txt"},
        {L"--map-from", L"", L"--map-to", L"C:\\b"},
    };
    for (const auto& options : wrong) {
        for (const wchar_t* command : {L"restore", L"map"}) {
            std::vector<std::wstring> arguments = {command, L"C:\\a"};
            arguments.insert(arguments.end(), options.begin(), options.end());
            EXPECT_EQ(2U, RunAgent(arguments).exitCode) << Utf8(command) << Utf8(options.front());
        }
    }
}
