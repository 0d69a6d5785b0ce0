// A share that goes away while the agent works on it, and comes back.

#include "tests/support/AgentOutside.h"
#include "tests/support/AgentTest.h"

#include <cstdlib>
#include <functional>
#include <random>

class LostShareTest : public AgentTest {
protected:
    static constexpr int kFiles = 150;

    LostShareTest()
    {
        Outside("mkdir -p " + ServerFolder() + " && ln -s " + OutsidePath(live.Root()) + " " + ServerFolder() +
                "/data");
        WaitUntil([&] { return IsDirectory(Share()); });
        EXPECT_TRUE(IsDirectory(Share())) << Utf8(Share());
    }
    ~LostShareTest() override { Outside("rm -r " + ServerFolder()); }

    static int Rounds()
    {
        constexpr int kEveryRun = 3;
        const char* const rounds = std::getenv("KESTROVANE_SHARE_LOSSES");
        return rounds == nullptr ? kEveryRun : std::atoi(rounds);
    }

    static void Outside(const std::string& command)
    {
        const std::string line = "sh -c \"" + command + "\"";
        RunOutside(L"sh", std::wstring(line.begin(), line.end()));
    }

    static void WaitUntil(const std::function<bool()>& isSo)
    {
        constexpr int kPatience = 5000; // milliseconds
        for (int waited = 0; !isSo() && waited < kPatience; ++waited) {
            ::Sleep(1);
        }
    }

    // A server of this test's own: other tests use the others at the same time.
    std::string Server() const { return Utf8(UniquePartOf(live.Root())); }
    std::string ServerFolder() const
    {
        const std::string drive = OutsidePath(L"C:\\");
        return drive.substr(0, drive.rfind("/dosdevices/")) + "/dosdevices/unc/" + Server();
    }
    std::wstring Share() const
    {
        const std::string server = Server();
        return LR"(\\)" + std::wstring(server.begin(), server.end()) + LR"(\data)";
    }

    // The whole server goes: below one that is there, this platform would create a missing share as a directory.
    void TakeShareAway() const { Outside("mv -T " + ServerFolder() + " " + ServerFolder() + ".away"); }
    void BringShareBack() const
    {
        Outside("mv -T " + ServerFolder() + ".away " + ServerFolder());
        WaitUntil([&] { return IsDirectory(Share()); });
    }

    void MakeFiles(unsigned seed) const
    {
        for (int i = 0; i < kFiles; ++i) {
            live.File(Name(i), SampleBytes(static_cast<std::size_t>(i) * 100U, seed));
        }
    }
    static std::wstring Name(int number)
    {
        return L"tree\\" + std::to_wstring(number % 5) + L"\\f" + std::to_wstring(number);
    }

    bool IsWhole(int number, unsigned seed) const
    {
        return ReadFileBytes(live.Path(Name(number))) == SampleBytes(static_cast<std::size_t>(number) * 100U, seed);
    }

    // Takes the share away after some time. @return whether that was in the middle: then the agent must say so.
    bool RunWhileShareGoes(const std::vector<std::wstring>& arguments)
    {
        AgentProcess agent(arguments);
        ::Sleep(static_cast<DWORD>(random()) % 400U);
        TakeShareAway();
        const AgentResult result = agent.Wait();
        WaitUntil([&] { return !IsDirectory(Share()); });
        BringShareBack();
        EXPECT_TRUE(result.exitCode == 0 || result.exitCode == 1 || result.exitCode == 3) << result.exitCode;
        EXPECT_EQ(result.exitCode != 0, result.messages.find(Server()) != std::string::npos) << result.messages;
        return result.exitCode != 0;
    }

    std::mt19937 random{std::random_device()()};
};

TEST_F(LostShareTest, InABackupIsReportedAndTheNextOneCompletes)
{
    MakeFiles(1);
    RunForJson({L"backup", Share() + L"\\tree", Backup()}, 0);
    int noticed = 0;
    for (int round = 0; round < Rounds(); ++round) {
        SCOPED_TRACE(round);
        MakeFiles(static_cast<unsigned>(round) + 2U);
        if (RunWhileShareGoes({L"backup", Share() + L"\\tree", Backup()})) {
            ++noticed;
        } else {
            EXPECT_EQ(kFiles, RunForJson({L"verify", Backup()}, 0)["verified"]) << "files are lost in silence";
        }
        RunForJson({L"backup", Share() + L"\\tree", Backup(), L"--keep", L"2"}, 0);
        EXPECT_EQ(kFiles, RunForJson({L"verify", Backup()}, 0)["verified"]);
    }
    std::printf("share lost in a backup: %d times, %d in the middle, %s\n", Rounds(), noticed,
                HasFailure() ? "FINDINGS" : "each reported, each next one complete");
}

TEST_F(LostShareTest, InARestoreLeavesEachFileWholeAndTheNextOneCompletes)
{
    MakeFiles(1);
    RunForJson({L"backup", Share() + L"\\tree", Backup()}, 0);
    int noticed = 0;
    for (int round = 0; round < Rounds(); ++round) {
        SCOPED_TRACE(round);
        MakeFiles(2);
        const bool isNoticed = RunWhileShareGoes({L"restore", Backup()});
        noticed += isNoticed ? 1 : 0;
        for (int i = 0; i < kFiles; ++i) {
            EXPECT_TRUE(IsWhole(i, 1) || (isNoticed && IsWhole(i, 2))) << i;
        }
        RunForJson({L"restore", Backup()}, 0);
        for (int i = 0; i < kFiles; ++i) {
            EXPECT_TRUE(IsWhole(i, 1)) << i;
        }
    }
    std::printf("share lost in a restore: %d times, %d in the middle, %s\n", Rounds(), noticed,
                HasFailure() ? "FINDINGS" : "each reported, each file whole, each next one complete");
}
