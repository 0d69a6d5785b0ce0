// Restores and deletions while calls of Windows fail: each file is whole, and nothing else is touched.

#include "tests/support/AgentFaultTest.h"

class RestoreFaultTest : public AgentFaultTest {
protected:
    static std::string Backed(const wchar_t* name) { return SampleBytes(9000, name[0]); }

    void MakeBackupOfTree()
    {
        for (const wchar_t* name : kNames) {
            live.File(name, Backed(name));
        }
        RunForJson({L"backup", live.Root(), Backup(), L"--security"}, 0);
    }

    // Changed, missing, read-only and unchanged files.
    void MakeOld() const
    {
        std::error_code error;
        std::filesystem::remove_all(live.Path(L"new"), error);
        for (const WIN32_FIND_DATAW& left : EntriesOf(live.Root())) { // of the run before
            ::DeleteFileW(live.Path(left.cFileName).c_str());
        }
        live.File(L"changed", "old");
        ::SetFileAttributesW(live.File(L"readonly", "old").c_str(), FILE_ATTRIBUTE_READONLY);
        live.File(L"same", Backed(L"same"));
    }

    void ExpectWholeFiles(bool allNew) const
    {
        for (const wchar_t* name : kNames) {
            const std::wstring path = live.Path(name);
            const std::string bytes = ReadFileBytes(path);
            const bool isMissing = name[0] == L'n' && !PathExists(path);
            EXPECT_TRUE(bytes == Backed(name) || (!allNew && (isMissing || bytes == "old"))) << Utf8(name);
        }
    }

    // What a restore did not finish is deleted, unless the deletion itself fails.
    void ExpectNothingElse(const std::string& failing) const
    {
        if (failing == "DeleteFileW" || failing == "SetFileAttributesW") {
            return;
        }
        for (const WIN32_FIND_DATAW& entry : EntriesOf(live.Root())) {
            const std::wstring name = entry.cFileName;
            EXPECT_TRUE(name == L"changed" || name == L"readonly" || name == L"same" || name == L"new") << Utf8(name);
        }
    }

    static constexpr const wchar_t* kNames[] = {L"changed", L"readonly", L"same", LR"(new\file)"};
};

TEST_F(RestoreFaultTest, EachFileIsTheOldOrTheNewOne)
{
    MakeBackupOfTree();
    Sweep(
        "a restore", {L"restore", Backup(), L"--security"}, [this] { MakeOld(); },
        [this](const AgentResult& result, const std::string& failing) {
            ExpectWholeFiles(result.exitCode == 0);
            ExpectNothingElse(failing);
        });
}

TEST_F(RestoreFaultTest, NothingLeavesTheMappedPlace)
{
    MakeBackupOfTree();
    const auto before = Snapshot(live.Root());
    const std::wstring place = store.Path(L"mapped");
    Sweep(
        "a mapped restore", {L"restore", Backup(), L"--map", live.Root() + L"=" + place + L";*;recursive"},
        [&] { std::filesystem::remove_all(place); },
        [&](const AgentResult& result, const std::string& /*failing*/) {
            EXPECT_EQ(before, Snapshot(live.Root()));
            if (result.exitCode == 0) {
                EXPECT_EQ(before, Snapshot(place));
            }
        });
}

TEST_F(RestoreFaultTest, ADeletionTouchesItsTreeAlone)
{
    const std::wstring neighbour = live.File(L"neighbour", "stays");
    Sweep(
        "a deletion", {L"delete", live.Path(L"tree"), L"--yes", L"--clear-readonly"},
        [this] {
            live.Files({LR"(tree\a)", LR"(tree\sub\b)"});
            ::SetFileAttributesW(live.File(LR"(tree\readonly)").c_str(), FILE_ATTRIBUTE_READONLY);
        },
        [&](const AgentResult& result, const std::string& /*failing*/) {
            EXPECT_EQ("stays", ReadFileBytes(neighbour));
            EXPECT_TRUE(result.exitCode != 0 || !PathExists(live.Path(LR"(tree\a)")));
            ::SetFileAttributesW(live.Path(LR"(tree\readonly)").c_str(), FILE_ATTRIBUTE_NORMAL);
        });
}

TEST_F(RestoreFaultTest, EveryImportOfWindowsIsKnown)
{
    const AgentFaultRun run = RunAgentWithout(nullptr, {L"--json", L"platform"});
    for (std::size_t i = 0; i < run.calls.size(); ++i) {
        EXPECT_LE(0, run.calls[i]) << "the agent no longer imports " << FailingAgentCalls()[i].name;
    }
    const auto sound = SoundAgentCalls();
    for (const std::string& name : run.others) {
        EXPECT_TRUE(std::any_of(sound.begin(), sound.end(), [&](const char* known) { return name == known; }))
            << name << " is new: can it fail?";
    }
}
