// Every exported function when memory runs short. Simulations: each allocation of each call fails in turn.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/support/MemoryMeters.h"
#include "tests/sweeps/CallOutcome.h"

namespace {

constexpr int kEnough = 1000; // more allocations than any call needs

class MemoryFaultTest : public EveryFunctionTest {
protected:
    // Lets each allocation fail in turn. `attempt` makes one call with the given failure and returns whether it happened.
    void FailEach(const SampleCall& call, const std::function<bool(int failing, Outcome& outcome)>& attempt)
    {
        for (int failing = 1; failing < kEnough; ++failing) {
            ground.Build();
            Outcome outcome = Outcome::kReturned;
            const bool happened = attempt(failing, outcome);
            EXPECT_TRUE(IsDocumented(outcome, GetParam().throws)) << Title(call) << ", allocation " << failing;
            m_thrown += outcome == Outcome::kReturned ? 0 : 1;
            if (!happened) {
                EXPECT_EQ(Outcome::kReturned, outcome) << Title(call) << " without a failure";
                return;
            }
        }
        ADD_FAILURE() << Title(call) << " does not end";
    }

    [[nodiscard]] int Thrown() const { return m_thrown; }

private:
    int m_thrown = 0;
};

} // namespace

TEST_P(MemoryFaultTest, ThrowsOnlyWhatIsDocumentedWhenTheHeapIsExhausted)
{
    const HeapMeter meter;
    for (const SampleCall& call : GetParam().calls) {
        FailEach(call, [&](int failing, Outcome& outcome) {
            Make(call, [&](const std::function<void()>& function) {
                HeapMeter::Run(failing, HeapMeter::Shortage::kOneAllocation, [&] { outcome = OutcomeOf(function); });
            });
            return HeapMeter::HasFailed();
        });
    }
}

TEST_P(MemoryFaultTest, ThrowsOnlyWhatIsDocumentedWhenABstrCannotBeAllocated)
{
    const BstrMeter meter;
    for (const SampleCall& call : GetParam().calls) {
        FailEach(call, [&](int failing, Outcome& outcome) {
            bool happened = false;
            Make(call, [&](const std::function<void()>& function) {
                BstrMeter::FailAt(failing);
                outcome = OutcomeOf(function);
                happened = BstrMeter::HasFailed();
                BstrMeter::FailAt(0);
            });
            return happened;
        });
    }
    EXPECT_EQ(IsDocumented(Outcome::kAtlException, GetParam().throws), Thrown() > 0)
        << "CAtlException is that of BSTR strings";
}

INSTANTIATE_TEST_SUITE_P(Every, MemoryFaultTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);
