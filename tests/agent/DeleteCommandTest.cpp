// The agent's delete and pending commands.

#include "tests/support/AgentOutside.h"
#include "tests/support/AgentTest.h"
#include "tests/support/PendingList.h"

using DeleteCommandTest = AgentTest;

class PendingCommandTest : public AgentTest {
protected:
    PendingList pending;
};

TEST_F(DeleteCommandTest, WithoutYesShowsWhatWouldGoAndChangesNothing)
{
    MakeLiveTree();
    const auto report = RunForJson({L"delete", live.Path(L"sub")}, 0);
    EXPECT_EQ(2, report["files"]);
    EXPECT_EQ(2, report["directories"]);
    EXPECT_EQ(108193, report["bytes"]);
    EXPECT_EQ(0, report["deleted"]);
    EXPECT_TRUE(PathExists(live.Path(LR"(sub\deeper\c.txt)")));
}

TEST_F(DeleteCommandTest, DeletesATree)
{
    MakeLiveTree();
    const auto report = RunForJson({L"delete", live.Path(L"sub"), L"--yes"}, 0);
    EXPECT_EQ(2, report["deleted"]);
    EXPECT_FALSE(PathExists(live.Path(L"sub")));
    EXPECT_TRUE(PathExists(live.Path(L"a.txt")));
}

TEST_F(DeleteCommandTest, WithAFilterDeletesFilesOfTheDirectoryAlone)
{
    live.Files({L"a.log", L"b.txt", LR"(sub\c.log)"});
    RunForJson({L"delete", live.Root(), L"--filter", L"*.log", L"--yes"}, 0);
    EXPECT_FALSE(PathExists(live.Path(L"a.log")));
    EXPECT_TRUE(PathExists(live.Path(L"b.txt")));
    EXPECT_TRUE(PathExists(live.Path(LR"(sub\c.log)")));
}

TEST_F(DeleteCommandTest, RefusesRootsTheWindowsDirectoryAndAnEmptyPath)
{
    for (const wchar_t* path : {L"C:\\", L"C:", L"D:\\", L"C:\\windows", L"C:\\WINDOWS\\system32", L"\\",
                                LR"(\\alpha\data)", LR"(\\alpha\data\)"}) {
        const auto report = RunForJson({L"delete", path, L"--yes"}, 1);
        EXPECT_EQ(1U, report["failures"].size()) << Utf8(path);
    }
    EXPECT_TRUE(PathExists(L"C:\\windows\\system32\\kernel32.dll"));
}

TEST_F(DeleteCommandTest, RecognisesEverySpellingOfAProtectedDirectory)
{
    for (const wchar_t* path :
         {LR"(\\?\C:\windows)", LR"(\\.\C:\windows\system32)", LR"(\\?\C:\)", LR"(\\.\D:\)", L"C:/windows",
          LR"(C:\windows\system32\..\)", LR"(C:\WINDOWS\.\SYSTEM32)", LR"(C:\windows.)", LR"(\windows)"}) {
        const auto report = RunForJson({L"delete", path, L"--yes"}, 1);
        EXPECT_EQ(1U, report["failures"].size()) << Utf8(path);
        EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("never deleted"))
            << report["failures"][0];
    }
    EXPECT_TRUE(PathExists(L"C:\\windows\\system32\\kernel32.dll"));
}

TEST_F(DeleteCommandTest, DoesNotFollowALinkIntoAProtectedDirectory)
{
    live.Directory(L"tree");
    LinkFromOutside(L"C:\\windows", live.Path(LR"(tree\link)"));
    LinkFromOutside(L"C:\\windows\\system32", live.Path(L"direct"));
    RunForJson({L"delete", live.Path(L"tree"), L"--yes", L"--follow-links"}, 1);
    const auto report = RunForJson({L"delete", live.Path(L"direct"), L"--yes", L"--follow-links"}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("never deleted"));
    RunForJson({L"delete", live.Path(LR"(tree\link)"), L"--yes"}, 1);
    EXPECT_TRUE(PathExists(L"C:\\windows\\system32\\kernel32.dll"));
}

TEST_F(DeleteCommandTest, AFilterThatMatchesNothingIsDoneInPart)
{
    live.File(L"a.txt");
    const auto report = RunForJson({L"delete", live.Root(), L"--filter", L"*.none", L"--yes"}, 3);
    EXPECT_EQ(1U, report["notes"].size());
    EXPECT_TRUE(PathExists(live.Path(L"a.txt")));
}

TEST_F(DeleteCommandTest, NamesWhatStoppedIt)
{
    live.Files({LR"(sub\a)", LR"(sub\b)", LR"(sub\deep\c)"});
    const LockedFile held(live.Path(LR"(sub\b)"), GENERIC_READ, FILE_SHARE_READ);
    const auto tree = RunForJson({L"delete", live.Path(L"sub"), L"--yes"}, 3);
    EXPECT_EQ(Utf8(live.Path(LR"(sub\b)")), tree["failures"][0]["file"]);
    const auto filtered = RunForJson({L"delete", live.Path(L"sub"), L"--filter", L"*", L"--yes"}, 1);
    EXPECT_EQ(Utf8(live.Path(LR"(sub\b)")), filtered["failures"][0]["file"]);
}

TEST_F(DeleteCommandTest, EndsBetweenTwoFilesAtAnInterrupt)
{
    constexpr int kFiles = 6000; // enough to be at work still when the interrupt comes
    for (int i = 0; i < kFiles; ++i) {
        live.File(L"many\\" + std::to_wstring(10000 + i), "");
    }
    InterruptWhen(UniquePartOf(live.Root()), "! [ -e " + OutsidePath(live.Path(LR"(many\10000)")) + " ]");
    AgentProcess agent({L"--json", L"delete", live.Path(L"many"), L"--yes"});
    const AgentResult result = agent.Wait();
    EXPECT_EQ(130U, result.exitCode);
    const Json report = Json::parse(result.output, nullptr, false);
    ASSERT_TRUE(report.is_object()) << result.output;
    EXPECT_LT(0, report["deleted"].get<int>());
    EXPECT_LT(report["deleted"].get<int>(), kFiles);
    EXPECT_TRUE(PathExists(live.Path(L"many")));
}

TEST_F(DeleteCommandTest, RefusesADirectoryThatIsTooLong)
{
    const std::wstring deep = live.Root() + L"\\" + std::wstring(120, L'a') + L"\\" + std::wstring(120, L'b');
    const auto report = RunForJson({L"delete", deep, L"--yes"}, 1);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("257"));
}

TEST_F(DeleteCommandTest, StopsAtAReadOnlyFileUnlessToldToClearIt)
{
    const std::wstring file = live.File(LR"(sub\a.txt)");
    ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY);
    const auto stopped = RunForJson({L"delete", live.Path(L"sub"), L"--yes"}, 1);
    EXPECT_NE(std::string::npos, stopped["failures"][0]["reason"].get<std::string>().find("(error 5)"));
    EXPECT_EQ(Utf8(file), stopped["left"][0]);
    RunForJson({L"delete", live.Path(L"sub"), L"--yes", L"--clear-readonly"}, 0);
    EXPECT_FALSE(PathExists(live.Path(L"sub")));
}

TEST_F(DeleteCommandTest, ALockedFileIsDoneInPart)
{
    live.Files({LR"(sub\a)", LR"(sub\b)"});
    const LockedFile locked(live.Path(LR"(sub\b)"), GENERIC_READ, FILE_SHARE_READ);
    const auto report = RunForJson({L"delete", live.Path(L"sub"), L"--yes"}, 3);
    EXPECT_EQ(1, report["deleted"]);
    EXPECT_EQ(1U, report["left"].size());
}

TEST_F(PendingCommandTest, OfAnEmptyListIsEmpty)
{
    EXPECT_EQ(0, RunForJson({L"pending"}, 0)["count"]);
}

TEST_F(PendingCommandTest, ReadsEveryFormThatWindowsWrites)
{
    pending.Write({{LR"(\??\C:\a)", LR"(!\??\C:\b)"},
                   {LR"(\??\C:\c)", LR"(\??\C:\d)"},
                   {LR"(\??\C:\e)", L""},
                   {LR"(*1\??\C:\f)", L""},
                   {LR"(*12\??\C:\g)", LR"(*12!\??\C:\h)"},
                   {LR"(\??\UNC\server\share\i)", LR"(!\??\UNC\server\share\j)"}});
    const auto list = RunForJson({L"pending"}, 0)["pending"];
    const nlohmann::json expected = {
        {{"operation", "move"}, {"source", "C:\\a"}, {"target", "C:\\b"}, {"replaces", true}},
        {{"operation", "move"}, {"source", "C:\\c"}, {"target", "C:\\d"}, {"replaces", false}},
        {{"operation", "delete"}, {"source", "C:\\e"}, {"target", ""}, {"replaces", false}},
        {{"operation", "delete"}, {"source", "C:\\f"}, {"target", ""}, {"replaces", false}},
        {{"operation", "move"}, {"source", "C:\\g"}, {"target", "C:\\h"}, {"replaces", true}},
        {{"operation", "move"},
         {"source", "\\\\server\\share\\i"},
         {"target", "\\\\server\\share\\j"},
         {"replaces", true}}};
    EXPECT_EQ(expected, list);
}

TEST_F(PendingCommandTest, ShowsATable)
{
    pending.Write({{LR"(\??\C:\a)", LR"(!\??\C:\b)"}, {LR"(\??\C:\e)", L""}});
    const std::string table = RunAgent({L"pending"}).output;
    EXPECT_NE(std::string::npos, table.find("replace  C:\\b  by  C:\\a\n"));
    EXPECT_NE(std::string::npos, table.find("delete   C:\\e\n"));
}
