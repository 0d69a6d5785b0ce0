// The keep-alives of the owner change, on a simulated clock.

#include "tests/security/ObjectOwnerFixture.h"

TEST_F(ChangeObjectOwnerSimulation, KeepsTheHostAliveAfterMoreThan570WholeSeconds)
{
    struct Row {
        std::int32_t ticks;
        bool sends;
        const char* why;
    };
    constexpr Row kRows[] = {
        {570000, false, "570 seconds"}, {570999, false, "not yet 571 whole seconds"},   {571000, true, "571 seconds"},
        {2000000000, true, "long ago"}, {-571000, false, "a clock that has gone back"},
    };
    for (const auto& [ticks, sends, why] : kRows) {
        HostRecorder recorder;
        SecurityCalls clocked(recorder);
        clocked.SetClock({ticks});
        EXPECT_FALSE(ChangeObjectOwner(L"", kUnknownAccount));
        Events expected = {ClockLine(ticks)};
        if (sends) {
            expected = expected + Events{SendKaLine(), KeepAlive(600)};
        }
        expected.push_back(SidLine(kUnknownAccount));
        ASSERT_GE(recorder.Events().size(), expected.size()) << why;
        EXPECT_EQ(expected, Events(recorder.Events().begin(),
                                   recorder.Events().begin() + static_cast<std::ptrdiff_t>(expected.size())))
            << why;
    }
}

TEST_F(ChangeObjectOwnerSimulation, ReadsTheClockForTheLineForTheTestAndForTheStamp)
{
    // Three readings with a keep-alive, two without.
    calls.SetClock({1000, 571000, 572000, 573000, 574000});
    ChangeObjectOwner(L"", kUnknownAccount);
    ChangeObjectOwner(L"", kUnknownAccount);
    EXPECT_EQ((StringList{L"clock ticks = 1000, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 1000, CLOCKS_PER_SEC = 1000, timeout = 570"}),
              (StringList{host.LinesAt(0).at(0), host.LinesAt(0).at(2)}))
        << "the second line counts from the new stamp";
    EXPECT_EQ((std::vector<int>{600}), host.KeepAlives());
}

TEST_F(ChangeObjectOwnerSimulation, KeepsTheHostAliveInTheMiddleOfATree)
{
    tree.Files({L"a", L"b"});
    // Two readings for the root; the time is up at the first file.
    calls.SetClock({0, 0, 571000});
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    EXPECT_EQ((std::vector<int>{10800, 600, 600, 10800, 600, 10800, 600}), host.KeepAlives());
    EXPECT_EQ((StringList{L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 571000, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570"}),
              host.LinesAt(0));
    const Events kept = {ClockLine(571000), SendKaLine(), KeepAlive(600), SidLine(kAccount)};
    EXPECT_NE(host.Events().end(), std::search(host.Events().begin(), host.Events().end(), kept.begin(), kept.end()))
        << "before anything else of that object";
}
