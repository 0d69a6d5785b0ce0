// Ctrl-C between two files, in commands that read or restore.

#include "tests/support/AgentOutside.h"
#include "tests/support/AgentTest.h"

class InterruptTest : public AgentTest {
protected:
    // Runs the agent, and interrupts it when the condition holds. The path of its log file is what no other process has.
    Json RunInterrupted(std::vector<std::wstring> arguments, const std::string& condition)
    {
        const std::wstring log = live.Path(L"agent.log");
        InterruptWhen(UniquePartOf(live.Root()), condition);
        arguments.insert(arguments.end(), {L"--json", L"--log", log});
        const AgentResult result = AgentProcess(arguments).Wait();
        EXPECT_EQ(130U, result.exitCode) << result.messages;
        const Json report = Json::parse(result.output, nullptr, false);
        EXPECT_TRUE(report.is_object() && report.value("interrupted", false)) << result.output;
        return report;
    }

    // The agent watches for Ctrl-C right after it has created its log file.
    std::string HasStarted() const { return "[ -e " + OutsidePath(live.Root()) + "/agent.log ]"; }
};

TEST_F(InterruptTest, EndsARestoreBetweenTwoFiles)
{
    constexpr int kFiles = 1000; // enough to be at work still when the interrupt comes
    for (int i = 0; i < kFiles; ++i) {
        live.File(L"tree\\" + std::to_wstring(10000 + i), "content");
    }
    RunForJson({L"backup", live.Path(L"tree"), Backup()}, 0);
    const std::wstring restored = store.Path(L"restored");
    const Json report = RunInterrupted({L"restore", Backup(), L"--to", restored},
                                       "[ -e " + OutsidePath(store.Root()) + "/restored/10000 ]");
    const auto whole = EntriesOf(restored);
    EXPECT_LT(0, report.value("restored", 0));
    EXPECT_LT(report.value("restored", kFiles), kFiles);
    EXPECT_EQ(static_cast<std::size_t>(report.value("restored", 0)), whole.size()) << "an unfinished file is left";
    EXPECT_EQ(kFiles, RunForJson({L"restore", Backup(), L"--to", restored}, 0)["restored"]);
}

TEST_F(InterruptTest, EndsAVerificationBetweenTwoFiles)
{
    constexpr int kFiles = 16;
    constexpr std::size_t kSize = 16U << 20U; // bytes: all files together take a second or more
    const std::string bytes(kSize, 'x');
    for (int i = 0; i < kFiles; ++i) {
        live.File(L"tree\\" + std::to_wstring(i), bytes);
    }
    RunForJson({L"backup", live.Path(L"tree"), Backup()}, 0);
    const Json report = RunInterrupted({L"verify", Backup()}, HasStarted());
    EXPECT_LT(report.value("verified", kFiles), kFiles);
    EXPECT_EQ(0, report.value("failed", -1));
}

TEST_F(InterruptTest, EndsAListing)
{
    RunInterrupted({L"list", L"C:\\windows", L"--recursive"}, HasStarted());
}
