// The fixture of the sweeps over all exported functions: what holds after every call, whatever failed in it.

#pragma once

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/support/MemoryMeters.h"
#include "tests/sweeps/CallOutcome.h"
#include "tests/sweeps/ImportFaults.h"
#include "tests/sweeps/SweepCalls.h"
#include "tests/sweeps/SweepGround.h"

#include <algorithm>
#include <cstring>
#include <set>

// Failed assertions of the current test.
inline int FindingsSoFar()
{
    const ::testing::TestResult& result = *::testing::UnitTest::GetInstance()->current_test_info()->result();
    return static_cast<int>(result.total_part_count());
}

// The calls without those of clock: it is read once more when the process has run for ten minutes and a keep-alive is due.
inline std::vector<int> WithoutClock(std::vector<int> calls)
{
    const std::span<const FailingImport> imports = FailingImports();
    for (std::size_t i = 0; i < calls.size(); ++i) {
        calls[i] = std::strcmp(imports[i].name, "clock") == 0 ? 0 : calls[i];
    }
    return calls;
}

class SweepTest : public EveryFunctionTest {
protected:
    static void SetUpTestSuite()
    {
        EveryFunctionTest::SetUpTestSuite();
        // The first failure of a process that Windows describes may cost it handles for good.
        RegisterSilentHost();
        ::SetLastError(ERROR_ACCESS_DENIED);
        GetFileName(L"*");
    }

    void SetUp() override
    {
        EveryFunctionTest::SetUp();
        faults.SetHome(ground.home);
    }

    // Whether the function creates, writes, deletes, registers or takes over files.
    [[nodiscard]] static bool Changes()
    {
        const std::vector<StringArgument>& strings = GetParam().strings;
        return std::any_of(strings.begin(), strings.end(),
                           [](const StringArgument& argument) { return argument.effect == Effect::kChanges; });
    }

    // Makes the call as `run` has it, and checks what it left.
    void MakeAndCheck(const SampleCall& call, const RunCall& run)
    {
        const int handlesBefore = OpenLowHandleCount();
        const int memoryBefore = HeapMeter::Outstanding();
        faults.StartCounting();
        Make(call, run);
        EXPECT_EQ(memoryBefore, HeapMeter::Outstanding()) << "blocks of memory were not freed";
        EXPECT_EQ("", faults.Unbalanced());
        EXPECT_EQ(handlesBefore, OpenLowHandleCount()) << "a handle was left open";
        files.CheckAndRestore(Changes());
    }

    // Makes the call with these failures. Returns how often each import was called.
    std::vector<int> MakeWith(const SampleCall& call, const std::vector<PlannedFailure>& failures)
    {
        Outcome outcome = Outcome::kReturned;
        MakeAndCheck(call, [&](const std::function<void()>& function) {
            faults.Arm(failures);
            outcome = OutcomeOf(function);
            faults.Disarm();
        });
        EXPECT_TRUE(IsDocumented(outcome, GetParam().throws)) << "an exception that is not documented";
        if (failures.empty()) {
            EXPECT_EQ(Outcome::kReturned, outcome);
        }
        return faults.Calls();
    }

    const HeapMeter memory;
    ImportFaults faults;
    SweepGround files{ground};
};
