// Registration of the host's functions, and the keep-alive call.

#include "tests/support/LibraryTest.h"

#include <cstdarg>
#include <cstdio>
#include <ctime>
#include <utility>

namespace {

// What two hosts, A and B, were told, in order: the host's letter and a format, or the seconds of a keep-alive.
std::vector<std::pair<char, std::string>> g_calls;

template <char Host>
int __cdecl Log(int /*level*/, const char* format, ...)
{
    g_calls.emplace_back(Host, format);
    return 0;
}

std::string g_text; // the level and the formatted text of the last line that LogText was given

int __cdecl LogText(int level, const char* format, ...)
{
    char text[256] = {};
    va_list arguments;
    va_start(arguments, format);
    static_cast<void>(std::vsnprintf(text, sizeof(text), format, arguments));
    va_end(arguments);
    g_text = std::to_string(level) + " " + text;
    return 0;
}

template <char Host>
int __cdecl KeepAlive(int seconds, ...)
{
    g_calls.emplace_back(Host, std::to_string(seconds));
    return 0;
}

template <char Host>
void Register()
{
    SetVssFileManagerLogger(&Log<Host>, &KeepAlive<Host>, &Log<Host>);
}

// Makes the file manager report access denied through its own logger.
void ReportAccessDenied()
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    isDirectoryExists(L"");
}

constexpr const char* kLocation = "%s::%d::%s\n";
const std::vector<std::pair<char, std::string>> kReportToA = {
    {'A', "   - %S: %d\n"}, {'A', "   - Returned HRESULT = 0x%08lx\n"}, {'A', "   - Error text: %S\n"}};

bool g_insideLine = false;

// Host B's logger; in the line of its registration it uses the library.
int __cdecl LogAndReport(int level, const char* format, ...)
{
    Log<'B'>(level, format);
    if (!std::exchange(g_insideLine, true)) {
        ReportAccessDenied();
        SendKA(nullptr);
    }
    return 0;
}

int __cdecl MinusOneLog(int level, const char* format, ...)
{
    Log<'A'>(level, format);
    return -1;
}

int __cdecl MinusOneKeepAlive(int seconds, ...)
{
    KeepAlive<'A'>(seconds);
    return -1;
}

std::clock_t g_now = 0; // ticks; never goes back, because the library remembers

std::clock_t __cdecl FakeClock()
{
    return g_now;
}

// Has a listing keep the host alive, after which its stamp is the simulated time.
void StampListings(const std::wstring& directory)
{
    g_now += 700000;
    ListFilesFilter(directory, L"*", false);
}

} // namespace

class SetVssFileManagerLoggerTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        g_calls.clear();
    }
};

class SendKATest : public LibraryTest {};

TEST_F(SetVssFileManagerLoggerTest, TellsTheNewLoggerItsLocationBeforeItReturns)
{
    SetVssFileManagerLogger(&LogText, &KeepAlive<'A'>, &Log<'A'>);
    EXPECT_EQ("2 frame/FileManager.cpp::147::SetVssFileManagerLogger\n", g_text);
}

TEST_F(SetVssFileManagerLoggerTest, CallsTheNewLoggerOnceAndNothingElse)
{
    Register<'A'>();
    g_calls.clear();
    Register<'B'>();
    EXPECT_EQ((decltype(g_calls){{'B', kLocation}}), g_calls);
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(SetVssFileManagerLoggerTest, LeavesTheFileManagerWithTheOldHostUntilTheLineIsLogged)
{
    Register<'A'>();
    g_calls.clear();
    g_insideLine = false;
    SetVssFileManagerLogger(&LogAndReport, &KeepAlive<'B'>, &Log<'B'>);
    std::vector<std::pair<char, std::string>> expected = {{'B', kLocation}};
    expected.insert(expected.end(), kReportToA.begin(), kReportToA.end());
    expected.emplace_back('B', kLocation); // of SendKA, which has the new functions already
    expected.emplace_back('B', "600");
    EXPECT_EQ(expected, g_calls);
}

TEST_F(SetVssFileManagerLoggerTest, ReplacesTheFunctionsOfTheModuleAndOfTheFileManagerEachTime)
{
    Register<'B'>();
    Register<'A'>();
    g_calls.clear();
    ReportAccessDenied();
    EXPECT_EQ(kReportToA, g_calls);
    g_calls.clear();
    SendKA(nullptr);
    EXPECT_EQ((decltype(g_calls){{'A', kLocation}, {'A', "600"}}), g_calls);
}

// The clock is a simulation.
TEST_F(SetVssFileManagerLoggerTest, ReplacesTheKeepAliveOfListings)
{
    const ImportPatch clock("clock", &FakeClock);
    StampListings(tree.Root());
    Register<'B'>();
    Register<'A'>();
    g_calls.clear();
    g_now += 600000;
    ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ((decltype(g_calls){{'A', "600"}}), g_calls);
}

// The clock is a simulation. A registration that took the time would put the keep-alive off.
TEST_F(SetVssFileManagerLoggerTest, DoesNotCountAsASignOfLife)
{
    const ImportPatch clock("clock", &FakeClock);
    StampListings(tree.Root());
    g_now += 599000;
    Register<'A'>();
    g_now += 1;
    g_calls.clear();
    ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ((decltype(g_calls){{'A', "600"}}), g_calls);
}

TEST_F(SetVssFileManagerLoggerTest, NeverCallsTheThirdFunction)
{
    const auto nowhere = reinterpret_cast<VssFileManagerLogFn>(1); // a call would end the process
    SetVssFileManagerLogger(&Log<'A'>, &KeepAlive<'A'>, nowhere);
    SendKA(nullptr);
    ReportAccessDenied();
    tree.File(L"a.txt");
    ListFilesFilter(tree.Root(), L"*", false);
    std::wstring path = LR"(C:\a)";
    std::wstring spec = L"*";
    std::vector<VSS_ALTERNATE_MAPPING> mappings = {{path, LR"(D:\a)", L"*", true}};
    MapRestorePath(path, spec, mappings);
    EXPECT_EQ(11U, g_calls.size()) << "every call above has logged";
    HostRecorder recorder;
    SendKA(nullptr);
    ReportAccessDenied();
    EXPECT_EQ(0, recorder.AuxCalls());
}

TEST_F(SetVssFileManagerLoggerTest, TakesAnyResultOfTheHostsFunctions)
{
    SetVssFileManagerLogger(&MinusOneLog, &MinusOneKeepAlive, &MinusOneLog);
    g_calls.clear();
    SendKA(nullptr);
    ReportAccessDenied();
    std::vector<std::pair<char, std::string>> expected = {{'A', kLocation}, {'A', "600"}};
    expected.insert(expected.end(), kReportToA.begin(), kReportToA.end());
    EXPECT_EQ(expected, g_calls);
}

// Without the fixture, because the processes in which these calls fault clean nothing up.
TEST(SetVssFileManagerLoggerDeathTest, FaultsOnANullLoggerAtOnce)
{
    EXPECT_DEATH(SetVssFileManagerLogger(nullptr, &KeepAlive<'A'>, &Log<'A'>), "");
}

TEST(SetVssFileManagerLoggerDeathTest, FaultsOnANullKeepAliveWhenItIsFirstDue)
{
    SetVssFileManagerLogger(&Log<'A'>, nullptr, nullptr);
    EXPECT_DEATH(SendKA(nullptr), "");
    Register<'A'>();
}

TEST_F(SendKATest, LogsItsLocationAndThenAsksFor600Seconds)
{
    SendKA("anything");
    const std::vector<HostEvent> expected = {
        {HostEvent::Kind::kLog, 2, "%s::%d::%s\n", L"frame/FileManager.cpp::154::SendKA\n"},
        {HostEvent::Kind::kKeepAlive, 600, {}, {}},
    };
    EXPECT_EQ(expected, host.Events());
}

TEST_F(SendKATest, NeverReadsItsArgument)
{
    SendKA("anything");
    const std::vector<HostEvent> withText = host.Events();
    host.Clear();
    SendKA(nullptr);
    EXPECT_EQ(withText, host.Events());
    host.Clear();
    SendKA(reinterpret_cast<const char*>(1)); // reading it would end the process
    EXPECT_EQ(withText, host.Events());
}

TEST_F(SendKATest, KeepsTheLastError)
{
    ::SetLastError(1234);
    SendKA(nullptr);
    EXPECT_EQ(1234U, ::GetLastError());
}
