// The keep-alive calls of listings. The clock is simulated: a test cannot wait for ten minutes.

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedClock.h"
#include "tests/support/SimulatedListing.h"
#include "tests/support/ThrowingHost.h"

namespace {

constexpr std::uint32_t kLongest = 599000; // ticks that may go by without a keep-alive

} // namespace

// The library's stamp, taken from the clock at the last keep-alive, is at kStamp when a test begins, and the clock
// shows that, too.
class ListingKeepAliveTest : public ThrowingTest {
protected:
    static constexpr std::uint32_t kStamp = 5000000;

    void SetUp() override
    {
        ThrowingTest::SetUp();
        SetStamp(kStamp);
    }

    void TearDown() override
    {
        SetStamp(0); // the other tests' clock has run for less than ten minutes from there
        ThrowingTest::TearDown();
    }

    // Lets a keep-alive be due whatever the stamp is, and moves it: of two clocks half a round apart, one is late.
    void SetStamp(std::uint32_t stamp)
    {
        constexpr std::uint32_t kHalfRound = 0x80000000U;
        constexpr std::uint32_t kQuarterRound = kHalfRound / 2;
        for (const std::uint32_t now : {stamp, stamp + kQuarterRound, stamp + kHalfRound, stamp - kQuarterRound}) {
            clock.Show({now, stamp});
            ListDirecoriesRecursive(tree.Path(L"missing")); // one reading
        }
        clock.Show({stamp});
        ListDirecoriesRecursive(tree.Path(L"missing"));
        host.Clear();
    }

    // How many keep-alives a listing of one search without entries sends when the clock shows `ticks`.
    std::size_t KeepAlivesAt(std::uint32_t ticks)
    {
        host.Clear();
        clock.Show({ticks});
        ListDirecoriesRecursive(tree.Path(L"missing"));
        return host.KeepAlives().size();
    }

    SimulatedClock clock;
};

TEST_F(ListingKeepAliveTest, IsDueAfter599Seconds)
{
    EXPECT_EQ(0U, KeepAlivesAt(kStamp + kLongest));
    EXPECT_EQ(1U, KeepAlivesAt(kStamp + kLongest + 1));
}

TEST_F(ListingKeepAliveTest, AsksFor600SecondsAndLogsNothing)
{
    clock.Show({kStamp + kLongest + 1});
    ListDirecoriesRecursive(tree.Path(L"missing"));
    EXPECT_EQ((std::vector<HostEvent>{{HostEvent::Kind::kKeepAlive, 600, {}, {}}}), host.Events());
}

TEST_F(ListingKeepAliveTest, CountsFromTheEndOfTheLastOne)
{
    constexpr std::uint32_t kDue = kStamp + kLongest + 1;
    constexpr std::uint32_t kAfterwards = kDue + 7000; // the host took its time
    clock.Show({kDue, kAfterwards});
    ListDirecoriesRecursive(tree.Path(L"missing"));
    EXPECT_EQ(1U, host.KeepAlives().size());
    EXPECT_EQ(0U, KeepAlivesAt(kAfterwards + kLongest));
    EXPECT_EQ(1U, KeepAlivesAt(kAfterwards + kLongest + 1));
}

TEST_F(ListingKeepAliveTest, IsSharedByAllListings)
{
    const auto list = [this](int kind) {
        switch (kind) {
        case 0:
            ListFilesFilter(tree.Root(), L"*", true);
            break;
        case 1:
            ListFilesFilterRecursive(tree.Root(), L"*", true);
            break;
        default:
            ListDirecoriesRecursive(tree.Root());
            break;
        }
    };
    for (int first = 0; first < 3; ++first) {
        for (int second = 0; second < 3; ++second) {
            SetStamp(kStamp);
            clock.Show({kStamp + kLongest + 1});
            list(first);
            EXPECT_EQ((std::vector<int>{600}), host.KeepAlives()) << first;
            clock.Show({kStamp + 2 * kLongest + 1});
            list(second);
            EXPECT_EQ((std::vector<int>{600}), host.KeepAlives()) << first << ", then " << second;
        }
    }
}

TEST_F(ListingKeepAliveTest, RegistrationOfAHostDoesNotMoveTheStamp)
{
    const HostRecorder another;
    clock.Show({kStamp + kLongest + 1});
    ListDirecoriesRecursive(tree.Path(L"missing"));
    EXPECT_EQ(1U, another.KeepAlives().size());
}

TEST_F(ListingKeepAliveTest, IsRightWhenTheTickCountWraps)
{
    for (const std::uint32_t stamp : {0x7FFFFF00U, 0x80000000U, 0xFFFFFF00U, 0U}) {
        SetStamp(stamp);
        EXPECT_EQ(0U, KeepAlivesAt(stamp + kLongest)) << stamp;
        EXPECT_EQ(1U, KeepAlivesAt(stamp + kLongest + 1)) << stamp;
    }
}

TEST_F(ListingKeepAliveTest, ClockThatGoesBackIsNotLate)
{
    EXPECT_EQ(0U, KeepAlivesAt(kStamp - 1));
    EXPECT_EQ(0U, KeepAlivesAt(kStamp - 10 * kLongest));
}

TEST_F(ListingKeepAliveTest, ComesBeforeTheSearchIsOpened)
{
    SimulatedListing simulated;
    std::size_t before = 0;
    simulated.OnOpen([&](const std::wstring&) { before = host.KeepAlives().size(); });
    for (int kind = 0; kind < 3; ++kind) {
        SetStamp(kStamp);
        before = 0;
        clock.Show({kStamp + kLongest + 1});
        if (kind == 0) {
            ListFilesFilter(tree.Root(), L"*", true);
        } else if (kind == 1) {
            ListFilesFilterRecursive(tree.Root(), L"*", true);
        } else {
            ListDirecoriesRecursive(tree.Root());
        }
        EXPECT_EQ(1U, before) << kind;
    }
}

// The tick is late for each entry in turn, before the entry is looked at.
TEST_F(ListingKeepAliveTest, ComesBeforeAnyEntryIsTaken)
{
    SimulatedListing simulated;
    simulated.AnswerAll({SimulatedDirectory(L"."), {L"a"}, {L"b"}});
    constexpr std::uint32_t kLate = kStamp + kLongest + 1;
    const HostEvent alive = {HostEvent::Kind::kKeepAlive, 600, {}, {}};
    const HostEvent a = {HostEvent::Kind::kLog, 2, "file =  %S\n", L"file =  a\n"};
    const HostEvent b = {HostEvent::Kind::kLog, 2, "file =  %S\n", L"file =  b\n"};
    const struct {
        std::vector<std::uint32_t> readings;
        std::vector<HostEvent> events;
    } cases[] = {
        {{kLate}, {alive, a, b}},                         // at the search
        {{kStamp, kLate}, {alive, a, b}},                 // at "."
        {{kStamp, kStamp, kLate}, {alive, a, b}},         // at a
        {{kStamp, kStamp, kStamp, kLate}, {a, alive, b}}, // at b
    };
    for (const auto& [readings, events] : cases) {
        SetStamp(kStamp);
        clock.Show(readings);
        ListFilesFilter(tree.Root(), L"*", false);
        EXPECT_EQ(events, host.Events()) << readings.size();
    }
}

TEST_F(ListingKeepAliveTest, ReadsTheClockOncePerSearchAndOncePerEntry)
{
    tree.Directory(L"d");
    SimulatedListing simulated;
    simulated.Answer(tree.Path(L"*.*"), {SimulatedDirectory(L"."), {L"a"}, SimulatedDirectory(L"d")});
    simulated.Answer(tree.Path(LR"(d\*.*)"), {SimulatedDirectory(L"."), {L"b"}});
    const int before = clock.Reads();
    ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ(4, clock.Reads() - before);
    ListDirecoriesRecursive(tree.Root());
    EXPECT_EQ(8, clock.Reads() - before);
    ListFilesFilterRecursive(tree.Root(), L"*", false);
    EXPECT_EQ(8 + 4 + 4 + 3 + 3, clock.Reads() - before) << "scan, walk of two levels, scan";
}

TEST_F(ListingKeepAliveTest, LongListingKeepsTheHostAliveAgainAndAgain)
{
    SimulatedListing simulated;
    simulated.AnswerAll(std::vector<SimulatedEntry>(1000, {L"file"}));
    std::vector<std::uint32_t> readings;
    for (std::uint32_t reading = 0; reading < 2000; ++reading) {
        readings.push_back(kStamp + reading * 5000);
    }
    clock.Show(readings);
    ListFilesFilter(tree.Root(), L"*", false);
    // Of the readings, five seconds apart, the one at 600 seconds is late and the next one is the new stamp: one
    // keep-alive for every 121 of the 1,001 and some readings.
    EXPECT_EQ(std::vector<int>(8, 600), host.KeepAlives());
}

TEST_F(ListingKeepAliveTest, ExceptionOfTheKeepAliveArrivesAndClosesAllSearches)
{
    tree.Directory(L"d");
    SimulatedListing simulated;
    simulated.Answer(tree.Path(L"*.*"), {SimulatedDirectory(L"d"), {L"a"}});
    simulated.Answer(tree.Path(LR"(d\*.*)"), {{L"b"}});
    const ThrowingHost throwing;
    constexpr std::uint32_t kLate = kStamp + kLongest + 1;
    constexpr std::size_t kReadings = 10; // scan 3, walk 3 and 2, scan 2
    for (std::size_t reading = 0; reading < kReadings; ++reading) {
        std::vector<std::uint32_t> readings(reading, kStamp);
        readings.push_back(kLate);
        clock.Show(readings);
        ThrowingHost::Throw(0, 1);
        EXPECT_THROW(ListFilesFilterRecursive(tree.Root(), L"*", true), HostFailure) << reading;
        EXPECT_EQ(0U, simulated.OpenSearches()) << reading;
    }
    ThrowingHost::Throw(0, 0);
    const HostRecorder again;
    clock.Show({kLate});
    ListDirecoriesRecursive(tree.Path(L"missing"));
    EXPECT_EQ(1U, again.KeepAlives().size()) << "what the host threw at is still due";
}
