// A backup and a deletion that are killed at any moment, and the next ones.

#include "tests/support/AgentTest.h"

#include <cstdlib>
#include <functional>
#include <map>
#include <random>

class KilledAgentTest : public AgentTest {
protected:
    static int Kills()
    {
        constexpr int kEveryRun = 6;
        const char* const kills = std::getenv("KESTROVANE_KILLS");
        return kills == nullptr ? kEveryRun : std::atoi(kills);
    }

    static DWORD MillisecondsOf(const std::function<void()>& work)
    {
        const ULONGLONG start = ::GetTickCount64();
        work();
        return static_cast<DWORD>(::GetTickCount64() - start) + 1;
    }

    static void RunAndKill(const std::vector<std::wstring>& arguments, DWORD milliseconds)
    {
        AgentProcess agent(arguments);
        ::Sleep(milliseconds);
        agent.Kill();
    }

    std::mt19937 random{std::random_device()()};
};

class KilledBackupTest : public KilledAgentTest {
protected:
    static constexpr int kFiles = 24;

    void MakeFiles(unsigned seed) const
    {
        for (int i = 0; i < kFiles; ++i) {
            const auto size = static_cast<std::size_t>(i) * 20000U + seed % 100U;
            live.File(L"d" + std::to_wstring(i % 3) + L"\\f" + std::to_wstring(i), SampleBytes(size, seed));
        }
    }

    // All files of a version, the manifest included.
    static std::map<std::wstring, std::string> ContentOf(const std::wstring& version)
    {
        std::map<std::wstring, std::string> content;
        content[L"manifest"] = ReadFileBytes(version + L"\\kestrovane-manifest.json");
        for (int i = 0; i < kFiles; ++i) {
            const std::wstring name = L"d" + std::to_wstring(i % 3) + L"\\f" + std::to_wstring(i);
            content[name] = ReadFileBytes(version + L"\\" + name);
        }
        return content;
    }

    // @return whether the kill came before the manifest was there.
    bool RunRound(unsigned seed, DWORD milliseconds)
    {
        const std::wstring before = Backup() + L"\\" + Versions().back();
        const auto content = ContentOf(before);
        MakeFiles(seed);
        RunAndKill({L"backup", live.Root(), Backup()}, milliseconds);
        EXPECT_TRUE(content == ContentOf(before)) << "an older version has changed";
        const bool isUnfinished = !PathExists(ManifestPath());
        RunForJson({L"backup", live.Root(), Backup(), L"--keep", L"2"}, 0);
        for (const auto& [name, bytes] : ContentOf(live.Root())) {
            EXPECT_TRUE(name == L"manifest" || bytes == ReadFileBytes(Copy(name))) << Utf8(name);
        }
        return isUnfinished;
    }
};

TEST_F(KilledBackupTest, LeavesTheOlderVersionsAndTheNextOneCompletes)
{
    MakeFiles(1);
    MakeBackup();
    MakeFiles(2);
    const DWORD whole = MillisecondsOf([&] { MakeBackup(); });
    int inTheMiddle = 0;
    for (int round = 0; round < Kills(); ++round) {
        const DWORD moment = static_cast<DWORD>(random()) % whole;
        SCOPED_TRACE("round " + std::to_string(round) + ", killed after " + std::to_string(moment) + " ms");
        inTheMiddle += RunRound(static_cast<unsigned>(round) + 3U, moment) ? 1 : 0;
    }
    RunForJson({L"verify", Backup()}, 0);
    std::printf("killed backup: %d kills, %d before the manifest, %s\n", Kills(), inTheMiddle,
                HasFailure() ? "FINDINGS" : "no older version changed, each next one complete");
}

class KilledDeletionTest : public KilledAgentTest {
protected:
    static constexpr int kFiles = 400;

    static std::wstring Name(int number)
    {
        return L"tree\\" + std::to_wstring(number % 7) + L"\\f" + std::to_wstring(number);
    }

    // @return how many files of the tree are left; each of them must be whole.
    int CountWhole() const
    {
        int left = 0;
        for (int i = 0; i < kFiles; ++i) {
            if (PathExists(live.Path(Name(i)))) {
                EXPECT_EQ("content", ReadFileBytes(live.Path(Name(i))));
                ++left;
            }
        }
        return left;
    }

    void MakeTree() const
    {
        for (int i = 0; i < kFiles; ++i) {
            live.File(Name(i), "content");
        }
    }
};

TEST_F(KilledDeletionTest, TakesNothingElseAndTheNextOneCompletes)
{
    live.File(L"tree.txt", "beside the tree");
    live.File(L"tree2\\f0", "beside the tree");
    MakeTree();
    const DWORD whole = MillisecondsOf([&] { RunForJson({L"delete", live.Path(L"tree"), L"--yes"}, 0); });
    int inTheMiddle = 0;
    for (int round = 0; round < Kills(); ++round) {
        MakeTree();
        const DWORD moment = static_cast<DWORD>(random()) % whole;
        SCOPED_TRACE("round " + std::to_string(round) + ", killed after " + std::to_string(moment) + " ms");
        RunAndKill({L"delete", live.Path(L"tree"), L"--yes"}, moment);
        const int left = CountWhole();
        inTheMiddle += left > 0 && left < kFiles ? 1 : 0;
        RunForJson({L"delete", live.Path(L"tree"), L"--yes"}, PathExists(live.Path(L"tree")) ? 0 : 1);
        EXPECT_FALSE(PathExists(live.Path(L"tree")));
        EXPECT_EQ("beside the tree", ReadFileBytes(live.Path(L"tree.txt")));
        EXPECT_EQ("beside the tree", ReadFileBytes(live.Path(L"tree2\\f0")));
    }
    std::printf("killed deletion: %d kills, %d in the middle, %s\n", Kills(), inTheMiddle,
                HasFailure() ? "FINDINGS" : "nothing else deleted, each next one complete");
}
