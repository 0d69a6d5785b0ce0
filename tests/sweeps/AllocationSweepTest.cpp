// Every exported function when memory runs short. Simulations: each allocation of each call fails in turn, until the
// call needs no more.

#include "tests/sweeps/SweepTest.h"

#include <cstdio>
#include <cstring>

namespace {

constexpr int kEnough = 1000; // more allocations than any call needs

// What the sweep did, over all functions.
struct Tally {
    int scenarios = 0;
    int thrown = 0;
    int findings = 0;
};
Tally g_tally;

// Calls the function with the given allocation failing, and returns whether it came to that.
using Attempt = std::function<bool(int failing, const std::function<void()>& function)>;

class AllocationSweepTest : public SweepTest {
protected:
    static void TearDownTestSuite()
    {
        std::printf("Allocation sweep: %d failures injected, %d of them thrown to the host, %d findings.\n",
                    g_tally.scenarios, g_tally.thrown, g_tally.findings);
    }

    void FailEachOf(const char* kind, const Attempt& attempt)
    {
        for (const SampleCall& call : SweepCalls(GetParam())) {
            const std::vector<int> ordinary = MakeWith(call, {});
            int failing = 1;
            while (failing < kEnough && Fail(call, kind, failing, attempt)) {
                EXPECT_EQ(WithoutClock(ordinary), WithoutClock(MakeWith(call, {})))
                    << Title(call) << ": the next call differs";
                ++failing;
            }
            EXPECT_GT(kEnough, failing) << Title(call) << " does not end";
        }
    }

    // Makes the call with one failure. Returns whether it happened.
    bool Fail(const SampleCall& call, const char* kind, int failing, const Attempt& attempt)
    {
        SCOPED_TRACE(Title(call) + ", " + kind + " " + std::to_string(failing));
        const int before = FindingsSoFar();
        Outcome outcome = Outcome::kReturned;
        bool happened = false;
        MakeAndCheck(call, [&](const std::function<void()>& function) {
            faults.Arm({});
            happened = attempt(failing, [&] { outcome = OutcomeOf(function); });
        });
        EXPECT_TRUE(IsDocumented(outcome, GetParam().throws)) << "an exception that is not documented";
        EXPECT_TRUE(happened || outcome == Outcome::kReturned) << "an exception without a failure";
        m_thrown += outcome == Outcome::kReturned ? 0 : 1;
        g_tally.thrown += outcome == Outcome::kReturned ? 0 : 1;
        g_tally.scenarios += happened ? 1 : 0;
        g_tally.findings += FindingsSoFar() > before ? 1 : 0;
        return happened;
    }

    [[nodiscard]] int Thrown() const { return m_thrown; }

    void FailEachOfImports(std::initializer_list<const char*> imports)
    {
        for (const char* import : imports) {
            FailEachOf(import, [&](int failing, const std::function<void()>& function) {
                return FailImport(import, failing, function);
            });
        }
    }

    // Lets a call of one import fail.
    bool FailImport(const char* name, int failing, const std::function<void()>& function)
    {
        const std::span<const FailingImport> imports = FailingImports();
        const auto import = std::find_if(imports.begin(), imports.end(), [&](const FailingImport& candidate) {
            return std::strcmp(candidate.name, name) == 0;
        });
        faults.Arm({{static_cast<std::size_t>(import - imports.begin()), failing, false}});
        function();
        faults.Disarm();
        return faults.Injected() > 0;
    }

private:
    int m_thrown = 0;
};

bool ExhaustHeap(int failing, HeapMeter::Shortage shortage, const std::function<void()>& function)
{
    HeapMeter::Run(failing, shortage, function);
    return HeapMeter::HasFailed();
}

} // namespace

// One test: its tree takes longer than most of its calls.
TEST_P(AllocationSweepTest, LeavesNothingOverWhicheverAllocationFails)
{
    FailEachOf("allocation", [](int failing, const std::function<void()>& function) {
        return ExhaustHeap(failing, HeapMeter::Shortage::kOneAllocation, function);
    });
    FailEachOf("all allocations from", [](int failing, const std::function<void()>& function) {
        return ExhaustHeap(failing, HeapMeter::Shortage::kFromThenOn, function);
    });
    FailEachOfImports({"malloc", "calloc"});
    const int thrownBefore = Thrown();
    FailEachOfImports({"SysAllocString", "SysAllocStringLen"});
    EXPECT_EQ(IsDocumented(Outcome::kAtlException, GetParam().throws), Thrown() > thrownBefore)
        << "CAtlException is that of BSTR strings";
}

INSTANTIATE_TEST_SUITE_P(Every, AllocationSweepTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);
