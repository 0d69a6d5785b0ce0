// Backups and their readers while calls of Windows fail: no older version changes, nothing damaged counts as whole.

#include "tests/support/AgentFaultTest.h"

class BackupFaultTest : public AgentFaultTest {
protected:
    BackupFaultTest()
    {
        MakeTree(1);
        MakeBackup();
        first = Backup() + L"\\" + Versions()[0];
        before = Snapshot(first);
    }

    void MakeTree(unsigned seed) const
    {
        live.File(L"a.txt", SampleBytes(100, seed));
        live.File(LR"(sub\b.bin)", SampleBytes(9000, seed));
        live.File(LR"(sub\same)", "same");
    }

    void KeepFirstVersionAlone() const
    {
        for (const std::wstring& version : Versions()) {
            if (const std::wstring path = Backup() + L"\\" + version; path != first) {
                std::filesystem::remove_all(path);
            }
        }
    }

    void ExpectUnchanged() const
    {
        EXPECT_EQ(before, Snapshot(first)) << "the older version has changed";
        EXPECT_EQ(SampleBytes(100, 22), ReadFileBytes(live.Path(L"a.txt")));
        EXPECT_EQ(SampleBytes(9000, 22), ReadFileBytes(live.Path(LR"(sub\b.bin)")));
    }

    // A newer version is what the live tree is, or says that it is not complete, or has no manifest.
    void ExpectHonestVersion(bool mustExist) const
    {
        const Json manifest = Manifest();
        const bool isNewer = Versions().size() > 1;
        EXPECT_TRUE(isNewer || !mustExist);
        if (!isNewer || !manifest.is_object() || !manifest.value("complete", true)) {
            EXPECT_FALSE(mustExist);
            return;
        }
        EXPECT_EQ(3U, manifest["files"].size());
        for (const wchar_t* name : {L"a.txt", LR"(sub\b.bin)", LR"(sub\same)"}) {
            EXPECT_EQ(ReadFileBytes(live.Path(name)), ReadFileBytes(Copy(name))) << Utf8(name);
        }
    }

    std::wstring first;
    std::vector<std::pair<std::wstring, std::string>> before;
};

TEST_F(BackupFaultTest, ANewVersionIsWholeOrSaysThatItIsNot)
{
    const auto prepare = [this] {
        KeepFirstVersionAlone();
        MakeTree(22);
    };
    const auto check = [this](const AgentResult& result, const std::string& /*failing*/) {
        ExpectUnchanged();
        ExpectHonestVersion(result.exitCode == 0);
    };
    Sweep("a backup", {L"backup", live.Root(), Backup(), L"--security", L"--log", store.Path(L"log")}, prepare, check);
}

TEST_F(BackupFaultTest, TheLastCompleteVersionIsNeverRemoved)
{
    const auto prepare = [this] {
        for (const std::wstring& version : Versions()) {
            std::filesystem::remove_all(Backup() + L"\\" + version);
        }
        MakeBackup();
        first = Backup() + L"\\" + Versions()[0];
        MakeTree(22);
    };
    const auto check = [this](const AgentResult& /*result*/, const std::string& /*failing*/) {
        const StringList versions = Versions();
        EXPECT_TRUE(std::any_of(versions.begin(), versions.end(), [this](const std::wstring& version) {
            const std::wstring folder = Backup() + L"\\" + version;
            const std::string bytes = ReadFileBytes(folder + L"\\kestrovane-manifest.json");
            const Json manifest = Json::parse(bytes, nullptr, false);
            return manifest.is_object() && manifest.value("complete", false) && PathExists(folder + LR"(\sub\b.bin)") &&
                   PathExists(folder + L"\\a.txt");
        }));
    };
    Sweep("a backup that removes old versions", {L"backup", live.Root(), Backup(), L"--keep", L"1"}, prepare, check);
}

TEST_F(BackupFaultTest, ADamagedVersionIsNeverCalledWhole)
{
    WriteFileBytes(first + LR"(\sub\b.bin)", SampleBytes(9000, 3));
    Sweep(
        "the verification of a damaged version", {L"verify", Backup()}, [] {},
        [](const AgentResult& result, const std::string& /*failing*/) { EXPECT_NE(0U, result.exitCode); });
}

TEST_F(BackupFaultTest, CommandsThatReadChangeNothing)
{
    const auto live1 = Snapshot(live.Root());
    const auto check = [&](const AgentResult& /*result*/, const std::string& /*failing*/) {
        EXPECT_EQ(before, Snapshot(first));
        EXPECT_EQ(live1, Snapshot(live.Root()));
    };
    const std::pair<const char*, std::vector<std::wstring>> commands[] = {
        {"show", {L"show", Backup()}},
        {"versions", {L"versions", Backup()}},
        {"list", {L"list", live.Root(), L"--recursive"}},
        {"volumes", {L"volumes"}},
        {"resolve", {L"resolve", live.Path(L"a.txt")}},
        {"own without --yes", {L"own", live.Root(), L"Administrators"}},
        {"delete without --yes", {L"delete", live.Root()}},
        {"a dry run", {L"restore", Backup(), L"--dry-run", L"--security"}},
    };
    for (const auto& [what, arguments] : commands) {
        SCOPED_TRACE(what);
        Sweep(
            what, arguments, [] {}, check);
    }
}
