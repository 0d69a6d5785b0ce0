// The state of the module as it comes up, and the measure of its stamps.

#include "frame/ModuleState.h"

#include "frame/FileManager.h"
#include "frame/LogSinks.h"
#include "tests/support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <climits>
#include <cstdint>
#include <ctime>

namespace {

int __cdecl Logger(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

int __cdecl AuxLogger(int level, const char* /*format*/, ...)
{
    return level;
}

int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

} // namespace

TEST(ModuleState, ComesUpWithTheBuiltInSinks)
{
    EXPECT_EQ(&DefaultLogSink, g_pfnLogger);
    EXPECT_EQ(&PlainLogSink, g_pfnAuxLogger);
    EXPECT_EQ(&NullKeepAlive, g_pfnKeepAlive);
}

TEST(ModuleState, GivesDetailLinesLevel0)
{
    EXPECT_EQ(0, g_detailLevel);
    EXPECT_EQ(0, g_errorReportLevel);
}

TEST(ModuleState, HasAStampFromTheStartOfTheProcess)
{
    EXPECT_LE(0, g_keepAliveStamp);
    EXPECT_GE(std::clock(), g_keepAliveStamp);
}

TEST(ModuleState, KeepsTheFunctionsOfAHost)
{
    SetVssFileManagerLogger(&Logger, &KeepAlive, &AuxLogger);
    EXPECT_EQ(&Logger, g_pfnLogger);
    EXPECT_EQ(&KeepAlive, g_pfnKeepAlive);
    EXPECT_EQ(&AuxLogger, g_pfnAuxLogger);
    const CapturedOutput line; // of the registration
    SetVssFileManagerLogger(&DefaultLogSink, &NullKeepAlive, &PlainLogSink);
}

struct TicksCase {
    std::clock_t stamp;
    std::clock_t now;
    std::int32_t ticks;
    const char* why;
};

constexpr TicksCase kTicksCases[] = {
    {0, 0, 0, "no time has passed"},
    {1000, 600000, 599000, "as a difference"},
    {INT_MAX, INT_MIN, 1, "the count has wrapped"},
    {INT_MAX - 99, INT_MIN + 900, 1000, "some time before and after the wrap"},
    {5000, 4000, -1000, "a clock that went back"},
};

TEST(TicksSince, IsTheTimeBetweenAlsoWhenTheCountWraps)
{
    for (const auto& [stamp, now, ticks, why] : kTicksCases) {
        EXPECT_EQ(ticks, TicksSince(stamp, now)) << why;
    }
}
