// Comparisons, list membership, cutting and upper-casing of wide strings.

#include "tests/support/LibraryTest.h"

namespace {

struct EqualCase {
    std::wstring first;
    std::wstring second;
    bool equal;
    const char* why;
};

const EqualCase kEqualCases[] = {
    {L"", L"", true, "nothing equals nothing"},
    {L"", L"a", false, "nothing and something"},
    {L"abc", L"abc", true, "the same"},
    {L"abcxyz", L"ABCXYZ", true, "all letters have case"},
    {L"aBc", L"AbC", true, "mixed"},
    {L"abc", L"abcd", false, "another length"},
    {L"abcd", L"abc", false, "another length, the other way round"},
    {L"abc", L"abd", false, "another letter"},
    {L"a_c", L"a?c", false, "no wildcards"},
    {L"\u00E9", L"\u00E9", true, "the same accented letter"},
    {L"\u00E9", L"\u00C9", false, "accented letters have no case in the default locale"},
    {L"\u0436", L"\u0416", false, "nor have Cyrillic ones"},
    {L"[", L"{", false, "32 apart like the cases of a letter, but none"},
    {L"@", L"`", false, "32 apart, just before the letters"},
    {std::wstring(L"a\0b", 3), std::wstring(L"A\0c", 3), true, "a comparison ends at a terminator"},
    {std::wstring(32000, L'a'), std::wstring(32000, L'A'), true, "long texts"},
};

// Every code unit, in order.
std::wstring AllCharacters()
{
    std::wstring all;
    for (unsigned character = 0; character <= 0xFFFF; ++character) {
        all += static_cast<wchar_t>(character);
    }
    return all;
}

} // namespace

TEST(IsEqual, IgnoresTheCaseOfTheLettersAToZ)
{
    for (const auto& [first, second, equal, why] : kEqualCases) {
        EXPECT_EQ(equal, IsEqual(first, second)) << why;
        EXPECT_EQ(equal, IsEqual(second, first)) << why;
    }
}

TEST(FindStringInList, FindsWhatIsEqualWithoutRegardToCase)
{
    for (const auto& [first, second, equal, why] : kEqualCases) {
        EXPECT_EQ(equal, FindStringInList(first, {second})) << why;
        EXPECT_EQ(equal, FindStringInList(first, {L"other", second, L"more"})) << why;
    }
}

TEST(FindStringInList, FindsWholeElementsAlone)
{
    EXPECT_FALSE(FindStringInList(L"a", {}));
    EXPECT_FALSE(FindStringInList(L"", {}));
    EXPECT_FALSE(FindStringInList(L"abc", {L"ab", L"bc", L"abcd", L"*"}));
    EXPECT_TRUE(FindStringInList(L"Abc", {L"x", L"aBC"})) << "the last";
    EXPECT_TRUE(FindStringInList(L"Abc", {L"aBC", L"x"})) << "the first";
    EXPECT_TRUE(FindStringInList(L"", {L"a", L""}));
}

TEST(FindMatchStringInList, FindsElementsInsideTheText)
{
    struct Case {
        std::wstring text;
        StringList fragments;
        bool found;
        const char* why;
    };
    const Case cases[] = {
        {LR"(C:\Windows\Temp\a.txt)", {L"WINDOWS"}, true, "a directory's name in upper case"},
        {LR"(C:\WINDOWS\a.txt)", {L"windows"}, true, "in small letters"},
        {L"abc", {L"abc"}, true, "the whole text"},
        {L"abc", {L"a"}, true, "its beginning"},
        {L"abc", {L"c"}, true, "its end"},
        {L"abc", {L"x", L"y", L"B"}, true, "the last element"},
        {L"abc", {L"B", L"x"}, true, "the first element"},
        {L"abc", {L"ac"}, false, "the letters are there, but not together"},
        {L"abc", {L"abcd"}, false, "longer than the text"},
        {L"", {L"a"}, false, "nothing in an empty text"},
        {L"abc", {}, false, "an empty list"},
        {L"", {}, false, "an empty list and an empty text"},
        {L"abc", {L""}, true, "an empty element"},
        {L"", {L""}, true, "an empty element and an empty text"},
        {L"abc", {L"x", L""}, true, "an empty element after another"},
        {L"abc", {L"a*"}, false, "a star is a star"},
        {L"abc", {L"a?c"}, false, "a question mark is a question mark"},
        {L"a*?c", {L"*?"}, true, "both as they are"},
        {L"caf\u00E9", {L"F\u00E9"}, true, "an accented letter as it is"},
        {L"caf\u00E9", {L"\u00C9"}, false, "an accented letter in other case"},
        {std::wstring(L"a\0bc", 4), {L"BC"}, true, "a text is searched beyond a terminator"},
    };
    for (const auto& [text, fragments, found, why] : cases) {
        EXPECT_EQ(found, FindMatchStringInList(text, fragments)) << why;
    }
}

TEST(FindMatchStringInList, FoldsOnlyTheLettersAToZ)
{
    for (unsigned character = 1; character <= 0xFFFF; ++character) {
        const auto upper = static_cast<wchar_t>(character);
        const bool isCapital = character >= L'A' && character <= L'Z';
        const auto lower = static_cast<wchar_t>(isCapital ? character + 32 : character);
        ASSERT_TRUE(FindMatchStringInList(std::wstring(1, upper), {std::wstring(1, lower)})) << character;
        const auto other = static_cast<wchar_t>(character + 32);
        if (!isCapital && other != upper) {
            ASSERT_FALSE(FindMatchStringInList(std::wstring(1, upper), {std::wstring(1, other)})) << character;
        }
    }
}

struct CutCase {
    std::wstring text;
    wchar_t character;
    std::wstring before;
    std::wstring after;
    const char* why;
};

const CutCase kCutCases[] = {
    {L"a=b=c", L'=', L"a", L"b=c", "the first occurrence counts"},
    {L"=b", L'=', L"", L"b", "at the beginning"},
    {L"a=", L'=', L"a", L"", "at the end"},
    {L"=", L'=', L"", L"", "nothing else"},
    {L"==", L'=', L"", L"=", "twice"},
    {L"abc", L'=', L"abc", L"abc", "not there: the whole text both times"},
    {L"", L'=', L"", L"", "an empty text"},
    {L"aXb", L'x', L"aXb", L"aXb", "case counts"},
    {L"a\u0416b", L'\u0416', L"a", L"b", "any character"},
    {std::wstring(L"a\0b", 3), L'\0', L"a", L"b", "a terminator is a character"},
};

TEST(WStringAfterWCHAR, GivesWhatFollowsTheFirstOccurrence)
{
    for (const CutCase& row : kCutCases) {
        EXPECT_EQ(row.after, WStringAfterWCHAR(row.text, row.character)) << row.why;
    }
}

TEST(WStringBeforeWCHAR, GivesWhatPrecedesTheFirstOccurrence)
{
    for (const CutCase& row : kCutCases) {
        EXPECT_EQ(row.before, WStringBeforeWCHAR(row.text, row.character)) << row.why;
    }
}

TEST(WString2UpperCase, ChangesTheLettersAToZAlone)
{
    const std::wstring all = AllCharacters();
    std::wstring expected = all;
    for (wchar_t letter = L'a'; letter <= L'z'; ++letter) {
        expected[letter] = static_cast<wchar_t>(letter - 32);
    }
    EXPECT_TRUE(expected == WString2UpperCase(all));
    EXPECT_TRUE(all == AllCharacters());
}

TEST(WString2UpperCase, KeepsTheLengthAndTheArgument)
{
    const std::wstring text = L"C:\\stra\u00DFe 7\\\uFB01.txt";
    EXPECT_EQ(L"C:\\STRA\u00DFE 7\\\uFB01.TXT", WString2UpperCase(text));
    EXPECT_EQ(L"C:\\stra\u00DFe 7\\\uFB01.txt", text);
    EXPECT_EQ(L"", WString2UpperCase(L""));
    EXPECT_EQ(std::wstring(L"A\0B", 3), WString2UpperCase(std::wstring(L"a\0b", 3)));
}

class StringHelpersTest : public LibraryTest {};

TEST_F(StringHelpersTest, LogNothingAndChangeNoArgument)
{
    const std::wstring text = L"Abc";
    const StringList list = {L"x", L"aBC"};
    IsEqual(text, list[1]);
    FindStringInList(text, list);
    FindMatchStringInList(text, list);
    WStringAfterWCHAR(text, L'b');
    WStringBeforeWCHAR(text, L'b');
    WString2UpperCase(text);
    CComBSTR expanded(L"%NOPE%");
    DoExpandEnvironmentStrings(expanded);
    EXPECT_EQ(L"Abc", text);
    EXPECT_EQ((StringList{L"x", L"aBC"}), list);
    EXPECT_TRUE(host.Events().empty());
}
