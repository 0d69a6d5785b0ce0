// A restore that is killed at any moment, and the next one.

#include "tests/support/AgentTest.h"
#include "tests/support/FileLockerProcess.h"
#include "tests/support/PendingList.h"

#include <algorithm>
#include <cstdlib>
#include <random>

class KilledRestoreTest : public AgentTest {
protected:
    static constexpr int kFiles = 24;
    static constexpr int kInUse = kFiles / 2;

    KilledRestoreTest() { ::SetEnvironmentVariableW(L"TMP", temporary.Root().c_str()); }
    ~KilledRestoreTest() override { ::SetEnvironmentVariableW(L"TMP", nullptr); }

    static std::wstring Name(int number) { return L"f" + std::to_wstring(number); }
    static std::string NewBytes(int number) { return SampleBytes(static_cast<std::size_t>(number) * 40000U, 1); }
    static std::string OldBytes(int number) { return SampleBytes(static_cast<std::size_t>(number) * 30000U + 1U, 2); }

    static int Kills()
    {
        constexpr int kEveryRun = 20;
        const char* const kills = std::getenv("KESTROVANE_KILLS");
        return kills == nullptr ? kEveryRun : std::atoi(kills);
    }

    // Every fourth file is missing before the restore.
    static bool IsMissing(int number) { return number % 4 == 1; }

    void MakeOld() const
    {
        for (int i = 0; i < kFiles; ++i) {
            if (IsMissing(i)) {
                ::DeleteFileW(live.Path(Name(i)).c_str());
            } else {
                live.File(Name(i), OldBytes(i));
            }
        }
    }

    bool IsOld(int number) const
    {
        const std::wstring path = live.Path(Name(number));
        return IsMissing(number) ? !PathExists(path) : ReadFileBytes(path) == OldBytes(number);
    }

    bool IsNew(int number) const
    {
        const std::wstring path = live.Path(Name(number));
        return PathExists(path) && ReadFileBytes(path) == NewBytes(number);
    }

    static StringList NamesIn(const std::wstring& directory)
    {
        StringList names;
        WIN32_FIND_DATAW entry = {};
        const HANDLE search = ::FindFirstFileW((directory + L"\\*").c_str(), &entry);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                names.emplace_back(entry.cFileName);
            } while (::FindNextFileW(search, &entry));
            ::FindClose(search);
        }
        return names;
    }

    // Besides the restored files, only a cache file that is registered for the reboot.
    void ExpectNoLeftover() const
    {
        const auto registered = pending.Entries();
        for (const std::wstring& name : NamesIn(live.Root())) {
            const std::wstring path = LR"(\??\)" + live.Path(name);
            EXPECT_TRUE(
                name.starts_with(L".") || name.starts_with(L"f") ||
                std::any_of(registered.begin(), registered.end(),
                            [&](const auto& move) { return ::_wcsicmp(move.first.c_str(), path.c_str()) == 0; }))
                << Utf8(path);
        }
        EXPECT_EQ(2U, NamesIn(temporary.Root()).size()) << "the directory and its parent alone";
    }

    // The reboot that would use the cache files does not come.
    void ForgetRegistrations() const
    {
        for (const auto& [source, target] : pending.Entries()) {
            ::DeleteFileW(source.c_str());
        }
        pending.Write({});
    }

    void RunRound(DWORD milliseconds)
    {
        MakeOld();
        const FileLockerProcess holder(live.Path(Name(kInUse)), GENERIC_READ, FILE_SHARE_READ);
        {
            AgentProcess agent({L"restore", Backup()});
            ::Sleep(milliseconds);
            agent.Kill();
        }
        int restored = 0;
        for (int i = 0; i < kFiles; ++i) {
            EXPECT_TRUE(IsOld(i) || IsNew(i)) << "file " << i << " is neither whole old nor whole new";
            restored += IsNew(i) ? 1 : 0;
        }
        m_inTheMiddle += restored > 0 && restored < kFiles - 1 ? 1 : 0;
        RunForJson({L"restore", Backup()}, 4);
        for (int i = 0; i < kFiles; ++i) {
            EXPECT_TRUE(i == kInUse ? IsOld(i) : IsNew(i)) << i;
        }
        ExpectNoLeftover();
        ForgetRegistrations();
    }

    TestDirectory temporary;
    PendingList pending;
    int m_inTheMiddle = 0;
};

TEST_F(KilledRestoreTest, LeavesEachFileWholeAndTheNextOneCompletes)
{
    const unsigned seed = std::random_device()();
    for (int i = 0; i < kFiles; ++i) {
        live.File(Name(i), NewBytes(i));
    }
    MakeBackup();
    MakeOld();
    const ULONGLONG start = ::GetTickCount64();
    RunForJson({L"restore", Backup()}, 0);
    const auto whole = static_cast<DWORD>(::GetTickCount64() - start);
    std::mt19937 random(seed);
    for (int round = 0; round < Kills(); ++round) {
        const DWORD moment = static_cast<DWORD>(random()) % whole;
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) + ", killed after " +
                     std::to_string(moment) + " of " + std::to_string(whole) + " ms");
        RunRound(moment);
    }
    std::printf("killed restore: %d kills, %d between the first file and the last, %s\n", Kills(), m_inTheMiddle,
                HasFailure() ? "FINDINGS" : "each file whole, each next one complete");
}

class LeftoversTest : public KilledRestoreTest {
protected:
    LeftoversTest()
    {
        ::GetEnvironmentVariableW(L"LOCALAPPDATA", m_before, MAX_PATH);
        ::SetEnvironmentVariableW(L"LOCALAPPDATA", store.Path(L"local").c_str());
    }
    ~LeftoversTest() override { ::SetEnvironmentVariableW(L"LOCALAPPDATA", m_before); }

    std::wstring Record() const { return store.Path(LR"(local\Kestrovane\Restores\0123456789ab.restore)"); }

    // What a killed restore leaves: its record, and a file under the name that it writes to.
    void MakeRecord(const std::string& lines) const
    {
        store.File(LR"(local\Kestrovane\Restores\0123456789ab.restore)", lines);
    }

private:
    wchar_t m_before[MAX_PATH] = {};
};

TEST_F(LeftoversTest, AreDeletedByTheNextRestoreOfTheirDirectory)
{
    live.File(L"a.txt", "a");
    MakeBackup();
    live.File(L"kv0123456789ab.7", "left over");
    live.File(L"kvr1.tmp", "left over");
    live.File(L"kvr2.tmp", "");
    MakeRecord("D" + Utf8(live.Root()) + "\nC" + Utf8(live.Path(L"kvr1.tmp")) + "\nS" + Utf8(live.Root()) + "\n");
    live.File(L"kvr2.tmp", "");
    EXPECT_EQ(3, RunForJson({L"restore", Backup()}, 0)["leftovers"]);
    EXPECT_FALSE(PathExists(live.Path(L"kv0123456789ab.7")));
    EXPECT_FALSE(PathExists(live.Path(L"kvr1.tmp")));
    EXPECT_FALSE(PathExists(live.Path(L"kvr2.tmp")));
    EXPECT_FALSE(PathExists(Record()));
}

TEST_F(LeftoversTest, AreOnlyWhatTheRecordNames)
{
    live.File(L"a.txt", "a");
    MakeBackup();
    const StringList others = {L"kv0123456789ac.7", L"kvr1.tmp", L"kvr2.tmp", L"other.tmp"};
    for (const std::wstring& name : others) {
        live.File(name, "somebody's own");
    }
    MakeRecord("D" + Utf8(live.Root()) + "\nC" + Utf8(live.Path(L"other.tmp")) + "\nS" + Utf8(live.Root()) + "\n");
    RunForJson({L"restore", Backup()}, 0);
    for (const std::wstring& name : others) {
        EXPECT_TRUE(PathExists(live.Path(name))) << Utf8(name);
    }
}

TEST_F(LeftoversTest, OfOtherDirectoriesAndRegisteredOnesStay)
{
    live.File(L"a.txt", "a");
    MakeBackup();
    const std::wstring elsewhere = temporary.File(LR"(sub\kv0123456789ab.7)", "elsewhere");
    const std::wstring registered = live.File(L"kvr1.tmp", "registered");
    pending.Write({{LR"(\??\)" + registered, LR"(!\??\)" + live.Path(L"b.txt")}});
    MakeRecord("D" + Utf8(temporary.Path(L"sub")) + "\nC" + Utf8(registered) + "\n");
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_TRUE(PathExists(elsewhere));
    EXPECT_TRUE(PathExists(registered));
    EXPECT_TRUE(PathExists(Record())) << "a later restore of that directory needs it";
}

TEST_F(LeftoversTest, OfARestoreThatStillRunsStay)
{
    live.File(L"a.txt", "a");
    MakeBackup();
    live.File(L"kv0123456789ab.7", "being written");
    MakeRecord("D" + Utf8(live.Root()) + "\n");
    const LockedFile running(Record(), GENERIC_WRITE, FILE_SHARE_READ);
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_TRUE(PathExists(live.Path(L"kv0123456789ab.7")));
}

TEST_F(LeftoversTest, AFileInTheBackupDeletesNothing)
{
    live.File(L"a.txt", "a");
    live.File(L"b.tmp", "mine");
    MakeBackup();
    const nlohmann::json site = {{"directory", Utf8(live.Root())}, {"prefix", ""}, {"before", nlohmann::json::array()}};
    const nlohmann::json journal = {{"target", Utf8(live.Path(L"a.txt"))}, {"sites", {site}}};
    WriteFileBytes(Copy(L"kestrovane-restore.journal"), journal.dump());
    WriteFileBytes(Backup() + L"\\kestrovane-restore.journal", journal.dump());
    live.File(L"a.txt", "live");
    live.File(L"c.tmp", "mine");
    RunForJson({L"restore", Backup(), L"--overwrite", L"never"}, 0);
    EXPECT_EQ("live", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_EQ("mine", ReadFileBytes(live.Path(L"c.tmp")));
}

TEST_F(LeftoversTest, AreNoneAfterARestoreThatEnds)
{
    MakeLiveTree();
    MakeBackup();
    live.File(L"a.txt", "old");
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ(2U, NamesIn(store.Path(LR"(local\Kestrovane\Restores)")).size()) << "the directory and its parent alone";
    EXPECT_EQ(6U, NamesIn(live.Root()).size() - 1);
}
