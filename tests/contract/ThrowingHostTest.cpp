// Every exported function with a host whose functions throw: the exception passes, and nothing is left behind.

#include "tests/support/ThrowingHost.h"
#include "tests/contract/EveryFunctionFixture.h"
#include "tests/support/SimulatedClock.h"

namespace {

constexpr int kEnough = 1000; // more lines than any call logs

class ThrowingHostTest : public EveryFunctionTest {
protected:
    void SetUp() override
    {
        EveryFunctionTest::SetUp();
        clock.Show(HoursApart());
    }

    // Each reading is later than a keep-alive period after the one before, so that every check of the clock sends one.
    static std::vector<std::uint32_t> HoursApart()
    {
        constexpr std::uint32_t kStep = 700000; // ticks
        std::vector<std::uint32_t> readings;
        for (std::uint32_t i = 0; i < 1000; ++i) {
            readings.push_back(i * kStep);
        }
        return readings;
    }

    // Makes the call with a host that throws at one line or keep-alive. Returns whether it came to that.
    bool Attempt(const SampleCall& call, int atLine, int atKeepAlive)
    {
        ground.Build();
        bool threw = false;
        bool cameOut = false;
        Make(call, [&](const std::function<void()>& function) {
            ::SetLastError(ERROR_ACCESS_DENIED); // for failures that are only logged with an error
            ThrowingHost::Throw(atLine, atKeepAlive);
            try {
                function();
            } catch (const HostFailure&) {
                cameOut = true;
            }
            threw = ThrowingHost::HasThrown();
            ThrowingHost::Throw(0, 0);
        });
        EXPECT_EQ(threw && GetParam().throws != Throws::kNothingAtAll, cameOut)
            << Title(call) << ", line " << atLine << ", keep-alive " << atKeepAlive;
        return threw;
    }

    SimulatedClock clock;
    const ThrowingHost throwing;
};

} // namespace

TEST_P(ThrowingHostTest, ExceptionOfALogLinePassesUnlessNoneIsDocumented)
{
    for (const SampleCall& call : GetParam().calls) {
        int line = 1;
        while (line < kEnough && Attempt(call, line, 0)) {
            ++line;
        }
        EXPECT_GT(kEnough, line) << Title(call);
    }
}

TEST_P(ThrowingHostTest, ExceptionOfAKeepAlivePassesUnlessNoneIsDocumented)
{
    for (const SampleCall& call : GetParam().calls) {
        int keepAlive = 1;
        while (keepAlive < kEnough && Attempt(call, 0, keepAlive)) {
            ++keepAlive;
        }
        EXPECT_GT(kEnough, keepAlive) << Title(call);
    }
}

INSTANTIATE_TEST_SUITE_P(Every, ThrowingHostTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);
