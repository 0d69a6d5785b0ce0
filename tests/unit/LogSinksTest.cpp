// The functions that stand in for a host.

#include "frame/LogSinks.h"

#include "tests/support/CapturedOutput.h"
#include "tests/support/MemoryMeters.h"

#include <gtest/gtest.h>

#include <string>

TEST(DefaultLogSink, PrintsThePrefixAndTheFormattedTextAtAnyLevel)
{
    for (const int level : {-1, 0, 2, 1000}) {
        CapturedOutput output;
        EXPECT_EQ(0, DefaultLogSink(level, "%s::%d::%s\n", "file", 147, "name"));
        EXPECT_EQ("Kestrovane: file::147::name\n", output.Text()) << level;
    }
}

TEST(DefaultLogSink, AddsNoLineEnd)
{
    CapturedOutput output;
    EXPECT_EQ(0, DefaultLogSink(0, "a"));
    EXPECT_EQ(0, DefaultLogSink(0, ""));
    EXPECT_EQ("Kestrovane: aKestrovane: ", output.Text());
}

TEST(DefaultLogSink, PrintsWideTextOfTheFirst256Characters)
{
    CapturedOutput output;
    DefaultLogSink(0, "<%S><%S>\n", L"abc", L"\u00E9");
    EXPECT_EQ("Kestrovane: <abc><\xE9>\n", output.Text());
}

// The platform's own printf ends at such a text; the toolchain's would go on after it.
TEST(DefaultLogSink, StopsAtAWideTextOutsideTheLocale)
{
    CapturedOutput output;
    EXPECT_EQ(0, DefaultLogSink(0, "<%S> and more\n", L"\u0416"));
    EXPECT_EQ("Kestrovane: <", output.Text());
}

TEST(DefaultLogSink, PrintsATextOfAnyLength)
{
    const std::string format(100000, 'f');
    CapturedOutput output;
    DefaultLogSink(0, format.c_str());
    EXPECT_EQ("Kestrovane: " + format, output.Text());
}

// A simulation: the prefixed format cannot be allocated.
TEST(DefaultLogSink, PrintsTheSameWithoutMemory)
{
    const HeapMeter memory;
    CapturedOutput output;
    HeapMeter::Run(1, HeapMeter::Shortage::kFromThenOn, [] { DefaultLogSink(2, "a long format with %d\n", 7); });
    EXPECT_TRUE(HeapMeter::HasFailed());
    EXPECT_EQ("Kestrovane: a long format with 7\n", output.Text());
}

TEST(PlainLogSink, PrintsTheFormattedTextAlone)
{
    CapturedOutput output;
    EXPECT_EQ(0, PlainLogSink(2, "%s=%d %S\n", "a", 7, L"wide"));
    EXPECT_EQ("a=7 wide\n", output.Text());
}

TEST(NullKeepAlive, DoesNothing)
{
    CapturedOutput output;
    EXPECT_EQ(0, NullKeepAlive(600));
    EXPECT_EQ(0, NullKeepAlive(-1, "more", 5));
    EXPECT_EQ("", output.Text());
}
