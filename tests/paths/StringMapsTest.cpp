// Lists and maps of strings in the host's log, and the look-ups that log what they see.

#include "tests/support/LibraryTest.h"

namespace {

using StringMap = std::map<std::wstring, std::wstring>;

HostEvent Detail(const char* format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 0, format, text};
}

HostEvent Rule()
{
    return Detail("------------------------------------\n", L"------------------------------------\n");
}

HostEvent Title(const std::wstring& title)
{
    return Detail("%s\n", title + L"\n");
}

HostEvent Element(const std::wstring& element)
{
    return Detail("%S\n", element + L"\n");
}

HostEvent Entry(const std::wstring& key, const std::wstring& value)
{
    return Detail("key: '%S' ---->  value: '%S'  \n", L"key: '" + key + L"' ---->  value: '" + value + L"'  \n");
}

HostEvent KeySought(const std::wstring& key)
{
    return Detail("Find a key: '%S'\n", L"Find a key: '" + key + L"'\n");
}

HostEvent ValueSought(const std::wstring& value)
{
    return Detail("Find a value :'%S'\n", L"Find a value :'" + value + L"'\n");
}

HostEvent Match()
{
    return Detail("Match !!! \n", L"Match !!! \n");
}

using Events = std::vector<HostEvent>;

const StringMap kDrives = {{L"C:", LR"(C:\Data)"}, {L"D:", LR"(D:\Mount)"}, {L"E:", L""}};

class PrintStringVectorTest : public LibraryTest {};
class PrintStringMapTest : public LibraryTest {};
class FindStringValueInMapTest : public LibraryTest {};
class FindStringKeyInMapTest : public LibraryTest {};

} // namespace

TEST_F(PrintStringVectorTest, LogsTheTitleBetweenRulesAndThenTheElementsInListOrder)
{
    PrintStringVector("Files", {L"b", L"A", L"", L"b"});
    EXPECT_EQ((Events{Rule(), Title(L"Files"), Rule(), Element(L"b"), Element(L"A"), Element(L""), Element(L"b")}),
              host.Events());
}

TEST_F(PrintStringVectorTest, LogsThreeHeadingLinesForAnEmptyList)
{
    PrintStringVector("", {});
    EXPECT_EQ((Events{Rule(), Title(L""), Rule()}), host.Events());
}

TEST_F(PrintStringVectorTest, PrintsAPercentSignInTheTitleAsItStands)
{
    PrintStringVector("100% of %s and %d", {L"%S"});
    EXPECT_EQ((Events{Rule(), Title(L"100% of %s and %d"), Rule(), Element(L"%S")}), host.Events());
}

TEST_F(PrintStringMapTest, LogsTheTitleBetweenRulesAndThenTheEntriesInKeyOrder)
{
    PrintStringMap("Drives", {{L"b", L"1"}, {L"a", L"2"}, {L"C", L"3"}});
    EXPECT_EQ((Events{Rule(), Title(L"Drives"), Rule(), Entry(L"C", L"3"), Entry(L"a", L"2"), Entry(L"b", L"1")}),
              host.Events())
        << "upper case comes first: keys are compared code unit by code unit";
}

TEST_F(PrintStringMapTest, LogsThreeHeadingLinesForAnEmptyMap)
{
    PrintStringMap("Nothing", {});
    EXPECT_EQ((Events{Rule(), Title(L"Nothing"), Rule()}), host.Events());
}

TEST_F(PrintStringMapTest, PrintsAPercentSignInTheTitleAsItStands)
{
    PrintStringMap("%S%n%s", {{L"%d", L"%S"}});
    EXPECT_EQ((Events{Rule(), Title(L"%S%n%s"), Rule(), Entry(L"%d", L"%S")}), host.Events());
}

TEST_F(FindStringValueInMapTest, FindsAKeyInOtherCaseAndLogsTheEntriesUpToIt)
{
    EXPECT_EQ(LR"(D:\Mount)", FindStringValueInMap(L"d:", kDrives));
    EXPECT_EQ((Events{KeySought(L"d:"), Entry(L"C:", LR"(C:\Data)"), Entry(L"D:", LR"(D:\Mount)"), Match()}),
              host.Events());
}

TEST_F(FindStringValueInMapTest, GivesNAAndLogsEveryEntryWhenNoKeyMatches)
{
    EXPECT_EQ(L"NA", FindStringValueInMap(L"F:", kDrives));
    EXPECT_EQ((Events{KeySought(L"F:"), Entry(L"C:", LR"(C:\Data)"), Entry(L"D:", LR"(D:\Mount)"), Entry(L"E:", L"")}),
              host.Events());
}

TEST_F(FindStringValueInMapTest, GivesNAAndLogsOnlyTheKeyForAnEmptyMap)
{
    EXPECT_EQ(L"NA", FindStringValueInMap(L"C:", {}));
    EXPECT_EQ((Events{KeySought(L"C:")}), host.Events());
}

TEST_F(FindStringValueInMapTest, TakesTheFirstInKeyOrderOfKeysThatDifferInCaseOnly)
{
    const StringMap map = {{L"key", L"small"}, {L"KEY", L"capital"}, {L"Key", L"mixed"}};
    EXPECT_EQ(L"capital", FindStringValueInMap(L"key", map)) << "not the key that is spelled alike";
    EXPECT_EQ((Events{KeySought(L"key"), Entry(L"KEY", L"capital"), Match()}), host.Events());
}

TEST_F(FindStringValueInMapTest, GivesAStoredEmptyValueAsItIs)
{
    EXPECT_EQ(L"", FindStringValueInMap(L"E:", kDrives));
    EXPECT_EQ(Match(), host.Events().back());
}

TEST_F(FindStringValueInMapTest, GivesNAForAnEntryThatHoldsItToo)
{
    EXPECT_EQ(L"NA", FindStringValueInMap(L"k", {{L"K", L"NA"}}));
    EXPECT_EQ((Events{KeySought(L"k"), Entry(L"K", L"NA"), Match()}), host.Events()) << "only the log tells a hit";
}

TEST_F(FindStringValueInMapTest, LooksAtKeysAndNotAtValues)
{
    EXPECT_EQ(L"NA", FindStringValueInMap(LR"(C:\Data)", kDrives));
}

TEST_F(FindStringKeyInMapTest, GivesTheStoredSpellingOfTheValueAndNotItsKey)
{
    EXPECT_EQ(LR"(C:\Data)", FindStringKeyInMap(LR"(c:\data)", kDrives));
    EXPECT_EQ((Events{ValueSought(LR"(c:\data)"), Entry(L"C:", LR"(C:\Data)"), Match()}), host.Events());
}

TEST_F(FindStringKeyInMapTest, GivesNAAndLogsEveryEntryWhenNoValueMatches)
{
    EXPECT_EQ(L"NA", FindStringKeyInMap(L"C:", kDrives)) << "a key is not a value";
    EXPECT_EQ(
        (Events{ValueSought(L"C:"), Entry(L"C:", LR"(C:\Data)"), Entry(L"D:", LR"(D:\Mount)"), Entry(L"E:", L"")}),
        host.Events());
}

TEST_F(FindStringKeyInMapTest, GivesNAAndLogsOnlyTheValueForAnEmptyMap)
{
    EXPECT_EQ(L"NA", FindStringKeyInMap(L"", {}));
    EXPECT_EQ((Events{ValueSought(L"")}), host.Events());
}

TEST_F(FindStringKeyInMapTest, TakesTheFirstInKeyOrderOfValuesThatDifferInCaseOnly)
{
    EXPECT_EQ(L"VALUE", FindStringKeyInMap(L"value", {{L"2", L"value"}, {L"1", L"VALUE"}}));
    EXPECT_EQ((Events{ValueSought(L"value"), Entry(L"1", L"VALUE"), Match()}), host.Events());
}
