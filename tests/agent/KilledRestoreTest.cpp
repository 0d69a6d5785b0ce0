// A restore that is killed at any moment, and the next one.

#include "tests/support/AgentTest.h"
#include "tests/support/FileLockerProcess.h"
#include "tests/support/PendingList.h"

#include <algorithm>
#include <random>

class KilledRestoreTest : public AgentTest {
protected:
    static constexpr int kFiles = 24;

    KilledRestoreTest() { ::SetEnvironmentVariableW(L"TMP", temporary.Root().c_str()); }
    ~KilledRestoreTest() override { ::SetEnvironmentVariableW(L"TMP", nullptr); }

    static std::wstring Name(int number) { return L"f" + std::to_wstring(number); }
    static std::string NewBytes(int number) { return SampleBytes(static_cast<std::size_t>(number) * 40000U, 1); }
    static std::string OldBytes(int number) { return SampleBytes(static_cast<std::size_t>(number) * 30000U + 1U, 2); }

    void MakeOld() const
    {
        for (int i = 0; i < kFiles; ++i) {
            live.File(Name(i), OldBytes(i));
        }
    }

    // The targets that are neither whole old nor whole new.
    std::vector<std::string> HalfWritten() const
    {
        std::vector<std::string> names;
        for (int i = 0; i < kFiles; ++i) {
            const std::string bytes = ReadFileBytes(live.Path(Name(i)));
            if (bytes != OldBytes(i) && bytes != NewBytes(i)) {
                names.push_back(Utf8(live.Path(Name(i))));
            }
        }
        return names;
    }

    void ExpectNoUnregisteredCacheFile(const std::wstring& directory) const
    {
        WIN32_FIND_DATAW entry = {};
        const HANDLE search = ::FindFirstFileW((directory + L"\\kv*.tmp").c_str(), &entry);
        if (search == INVALID_HANDLE_VALUE) {
            return;
        }
        const auto registered = pending.Entries();
        do {
            const std::wstring path = LR"(\??\)" + directory + L"\\" + entry.cFileName;
            EXPECT_TRUE(std::any_of(registered.begin(), registered.end(), [&](const auto& move) {
                return ::_wcsicmp(move.first.c_str(), path.c_str()) == 0;
            })) << Utf8(path);
        } while (::FindNextFileW(search, &entry));
        ::FindClose(search);
    }

    // The restart that would use the cache files up does not come.
    void ForgetRegistrations() const
    {
        for (const auto& [source, target] : pending.Entries()) {
            ::DeleteFileW(source.c_str());
        }
        pending.Write({});
    }

    void RunRound(DWORD milliseconds, bool protects)
    {
        MakeOld();
        const FileLockerProcess holder(live.Path(Name(kFiles / 2)), GENERIC_READ, FILE_SHARE_READ);
        std::vector<std::wstring> arguments = {L"restore", Backup()};
        if (protects) {
            arguments.push_back(L"--protect-live");
        }
        {
            AgentProcess agent(arguments);
            ::Sleep(milliseconds);
            agent.Kill();
        }
        const auto half = HalfWritten();
        const auto report = RunForJson(arguments, 4);
        const auto unfinished = report.value("unfinished", std::vector<std::string>());
        for (const std::string& name : half) {
            EXPECT_NE(unfinished.end(), std::find(unfinished.begin(), unfinished.end(), name)) << name;
        }
        for (int i = 0; i < kFiles; ++i) {
            EXPECT_EQ(i == kFiles / 2 ? OldBytes(i) : NewBytes(i), ReadFileBytes(live.Path(Name(i)))) << i;
        }
        ExpectNoUnregisteredCacheFile(live.Root());
        ExpectNoUnregisteredCacheFile(temporary.Root());
        ForgetRegistrations();
        m_halfWritten += static_cast<int>(half.size());
    }

    TestDirectory temporary;
    PendingList pending;
    int m_halfWritten = 0;
};

TEST_F(KilledRestoreTest, LeavesEachFileOldNewOrNamedAndTheNextOneCompletes)
{
    constexpr int kRounds = 20;
    constexpr unsigned kSeed = 20;
    for (int i = 0; i < kFiles; ++i) {
        live.File(Name(i), NewBytes(i));
    }
    MakeBackup();
    MakeOld();
    const ULONGLONG start = ::GetTickCount64();
    RunForJson({L"restore", Backup(), L"--protect-live"}, 0);
    const auto whole = static_cast<DWORD>(::GetTickCount64() - start);
    std::mt19937 random(kSeed);
    for (int round = 0; round < kRounds; ++round) {
        const DWORD moment = static_cast<DWORD>(random()) % whole;
        SCOPED_TRACE("seed " + std::to_string(kSeed) + ", round " + std::to_string(round) + ", killed after " +
                     std::to_string(moment) + " of " + std::to_string(whole) + " ms");
        RunRound(moment, round % 2 == 0);
    }
    RecordProperty("half-written", m_halfWritten);
}

// Made by hand, because a kill hits the middle of a copy only now and then.
TEST_F(KilledRestoreTest, AFileThatTheJournalNamesIsRestoredWhateverTheOptionsSay)
{
    live.File(L"a.txt", "whole");
    MakeBackup();
    live.File(L"a.txt", "who");
    WriteFileBytes(Backup() + L"\\kestrovane-restore.journal",
                   nlohmann::json{{"target", Utf8(live.Path(L"a.txt"))}, {"sites", nlohmann::json::array()}}.dump());
    const auto report = RunForJson({L"restore", Backup(), L"--overwrite", L"never"}, 0);
    EXPECT_EQ(Utf8(live.Path(L"a.txt")), report["unfinished"][0]);
    EXPECT_EQ("whole", ReadFileBytes(live.Path(L"a.txt")));
    EXPECT_FALSE(PathExists(Backup() + L"\\kestrovane-restore.journal"));
}

TEST_F(KilledRestoreTest, CacheFilesThatWaitForNothingAreRemovedByTheNextOne)
{
    live.File(L"a.txt", "a");
    MakeBackup();
    live.File(L"kvr1.tmp", "somebody's own");
    live.File(L"kvr2.tmp", "left over");
    const nlohmann::json site = {{"directory", Utf8(live.Root())}, {"prefix", "kvr"}, {"before", {"kvr1.tmp"}}};
    WriteFileBytes(Backup() + L"\\kestrovane-restore.journal",
                   nlohmann::json{{"target", ""}, {"sites", {site}}}.dump());
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_TRUE(PathExists(live.Path(L"kvr1.tmp")));
    EXPECT_FALSE(PathExists(live.Path(L"kvr2.tmp")));
}
