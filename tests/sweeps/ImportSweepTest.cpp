// Every exported function while calls of the platform fail. Simulations: the 1st, 2nd and 3rd call of every import that
// a call reaches fails in turn, once and from then on.
//
// The imports come from the DLL: a new one fails the test until tests/sweeps/ImportTable.cpp says how it fails.

#include "tests/sweeps/SweepTest.h"

#include <cstdio>

namespace {

constexpr int kMostCalls = 3; // of one import that fail in turn

// What the sweep did, over all functions.
struct Tally {
    int functions = 0;
    int scenarios = 0;
    int injected = 0;
    int findings = 0;
    std::set<std::size_t> reached;
};
Tally g_tally;

std::string Described(const std::vector<PlannedFailure>& failures)
{
    std::string described;
    for (const auto& [import, call, thenOn] : failures) {
        described += std::string(", ") + FailingImports()[import].name + " " + std::to_string(call) +
                     (thenOn ? " and later" : "");
    }
    return described;
}

// For the case that the process ends: the scenario is then the last line of its output.
char g_scenario[200];

LONG WINAPI PrintScenario(EXCEPTION_POINTERS* /*exception*/)
{
    std::fputs(g_scenario, stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}

class ImportSweepTest : public SweepTest {
protected:
    static void SetUpTestSuite()
    {
        SweepTest::SetUpTestSuite();
        ::SetUnhandledExceptionFilter(&PrintScenario);
    }

    static void TearDownTestSuite()
    {
        ::SetUnhandledExceptionFilter(nullptr);
        std::size_t there = 0;
        std::string missed;
        for (std::size_t i = 0; i < FailingImports().size(); ++i) {
            if (FailingImports()[i].canFail) {
                ++there;
                missed += g_tally.reached.contains(i) ? "" : std::string(" ") + FailingImports()[i].name;
            }
        }
        std::printf("Import sweep: %d scenarios, %u of %u imports reached, %d failures injected, %d findings.\n",
                    g_tally.scenarios, static_cast<unsigned>(g_tally.reached.size()), static_cast<unsigned>(there),
                    g_tally.injected, g_tally.findings);
        if (g_tally.functions == static_cast<int>(AllFunctions().size())) {
            EXPECT_EQ("", missed) << "no call reaches these imports";
        }
    }

    // Makes the call with these failures, then without. Returns how often the imports were called with them.
    std::vector<int> Try(const SampleCall& call, const std::vector<PlannedFailure>& failures,
                         const std::vector<int>& ordinary)
    {
        const std::string title = Title(call) + Described(failures);
        SCOPED_TRACE(title);
        std::snprintf(g_scenario, sizeof(g_scenario), "%s\n", title.c_str());
        const int before = FindingsSoFar();
        const std::vector<int> calls = MakeWith(call, failures);
        EXPECT_LT(0, faults.Injected());
        g_tally.injected += faults.Injected();
        ++g_tally.scenarios;
        Note(calls);
        EXPECT_EQ(WithoutClock(ordinary), WithoutClock(MakeWith(call, {}))) << "the next call differs";
        g_tally.findings += FindingsSoFar() > before ? 1 : 0;
        return calls;
    }

    static void Note(const std::vector<int>& calls)
    {
        for (std::size_t i = 0; i < calls.size(); ++i) {
            if (calls[i] > 0 && FailingImports()[i].canFail) {
                g_tally.reached.insert(i);
            }
        }
    }

    void FailEach(const SampleCall& call, const std::vector<int>& ordinary)
    {
        for (std::size_t import = 0; import < ordinary.size(); ++import) {
            const int most = FailingImports()[import].canFail ? std::min(kMostCalls, ordinary[import]) : 0;
            for (int number = 1; number <= most; ++number) {
                Try(call, {{import, number, false}}, ordinary);
                Try(call, {{import, number, true}}, ordinary);
            }
        }
    }

    // The second import is one that the call reaches while the first fails.
    void FailPairs(const SampleCall& call, const std::vector<int>& ordinary)
    {
        for (std::size_t first = 0; first < ordinary.size(); ++first) {
            if (ordinary[first] == 0 || !FailingImports()[first].canFail) {
                continue;
            }
            const PlannedFailure failure = {first, 1, true};
            const std::vector<int> calls = Try(call, {failure}, ordinary);
            for (std::size_t second = 0; second < calls.size(); ++second) {
                const bool wasFirst = second < first && ordinary[second] > 0; // the pair was tried
                if (second != first && calls[second] > 0 && FailingImports()[second].canFail && !wasFirst) {
                    Try(call, {failure, {second, 1, true}}, ordinary);
                }
            }
        }
    }
};

} // namespace

TEST_P(ImportSweepTest, LeavesNothingOverWhicheverCallFails)
{
    ++g_tally.functions;
    for (const SampleCall& call : SweepCalls(GetParam())) {
        const std::vector<int> ordinary = MakeWith(call, {});
        Note(ordinary);
        FailEach(call, ordinary);
        if (Changes()) {
            FailPairs(call, ordinary);
        }
    }
    RecordProperty("scenarios", g_tally.scenarios);
    RecordProperty("failures", g_tally.injected);
}

INSTANTIATE_TEST_SUITE_P(Every, ImportSweepTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);

TEST(ImportTable, SaysHowEachImportOfTheLibraryFails)
{
    std::set<std::string> known;
    for (const FailingImport& import : FailingImports()) {
        known.insert(import.name);
    }
    for (const SoundImport& import : SoundImports()) {
        EXPECT_TRUE(known.insert(import.name).second) << import.name << " is in both tables";
        EXPECT_STRNE("", import.reason) << import.name;
    }
    for (const std::string& name : NamesOfImports()) {
        EXPECT_TRUE(known.contains(name)) << name << " is in no table";
    }
}
