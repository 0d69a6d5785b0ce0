// Overlap of two file specifications: the rules, and what becomes of patterns that are made to be slow.

#include "restore/SpecMatch.h"
#include "restore/FileDesc.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <random>
#include <string>

namespace {

// The rules themselves, as plain recursion. Too slow and too deep for a product, but easy to see through.
bool MatchByTheRules(const std::wstring& a, const std::wstring& b)
{
    if (a == b) {
        return true;
    }
    if (a.empty()) {
        return b[0] == L'*' && MatchByTheRules(a, b.substr(1));
    }
    if (b.empty()) {
        return a[0] == L'*' && MatchByTheRules(a.substr(1), b);
    }
    if (a[0] == L'*') {
        return MatchByTheRules(a, b.substr(1)) || MatchByTheRules(a.substr(1), b);
    }
    if (b[0] == L'*') {
        return MatchByTheRules(a.substr(1), b) || MatchByTheRules(a, b.substr(1));
    }
    return (a[0] == L'?' || b[0] == L'?' || a[0] == b[0]) && MatchByTheRules(a.substr(1), b.substr(1));
}

// Milliseconds that a call takes.
template <typename Function>
ULONGLONG Duration(Function function)
{
    const ULONGLONG start = ::GetTickCount64();
    function();
    return ::GetTickCount64() - start;
}

constexpr ULONGLONG kQuick = 5000; // milliseconds, generous: a machine may be busy

std::wstring Repeated(const std::wstring& text, std::size_t times)
{
    std::wstring repeated;
    for (std::size_t i = 0; i < times; ++i) {
        repeated += text;
    }
    return repeated;
}

bool IsMatch(const std::wstring& a, const std::wstring& b)
{
    return FileDesc::IsSpecMatch(a.c_str(), b.c_str());
}

} // namespace

TEST(IsSpecMatch, FollowsTheRules)
{
    struct Case {
        const wchar_t* a;
        const wchar_t* b;
        bool match;
        const char* why;
    };
    const Case cases[] = {
        {L"", L"", true, "both empty"},
        {L"A", L"A", true, "equal"},
        {L"*", L"*", true, "equal stars"},
        {L"?", L"?", true, "equal question marks"},
        {L"A", L"B", false, "other letters"},
        {L"A", L"a", false, "case counts here"},
        {L"", L"A", false, "empty against a letter"},
        {L"", L"?", false, "empty against a question mark"},
        {L"", L"*", true, "empty against a star"},
        {L"", L"***", true, "empty against stars"},
        {L"", L"*A", false, "empty against a star and a letter"},
        {L"A", L"?", true, "a letter against a question mark"},
        {L"A", L"??", false, "one letter against two"},
        {L"AB", L"*", true, "a star takes several"},
        {L"AB", L"*B", true, "a star takes one"},
        {L"B", L"*B", true, "a star takes none"},
        {L"A", L"*B", false, "a star cannot make a letter"},
        {L"?", L"*", true, "a question mark against a star"},
        {L"*.TXT", L"A*", true, "each star takes what the other pattern asks for"},
        {L"A?C", L"ABD", false, "the last letter"},
        {L"A?C", L"?BC", true, "two question marks in different places"},
        {L"A*", L"*B", true, "A...B"},
        {L"*A", L"*B", false, "two different ends"},
        {L"A*C", L"AC", true, "a star takes none in the middle"},
        {L"A*C", L"AB", false, "no C at the end"},
        {L"*?", L"?", true, "a star before a question mark"},
        {L"*?", L"", false, "a star before a question mark against nothing"},
        {L"*?*?*", L"A", false, "two characters at least"},
        {L"*?*?*", L"AB", true, "two characters"},
        {L"A*B*C", L"A?C", true, "the question mark is the B"},
        {L"A*BB*C", L"A?C", false, "one character for two letters"},
        {L"A*BB*C", L"A??C", true, "two characters for two letters"},
    };
    for (const auto& [a, b, match, why] : cases) {
        EXPECT_EQ(match, FileDesc::IsSpecMatch(a, b)) << why;
        EXPECT_EQ(match, FileDesc::IsSpecMatch(b, a)) << why << ", swapped";
        EXPECT_EQ(match, MatchByTheRules(a, b)) << why << ", by the rules themselves";
    }
}

TEST(IsSpecMatch, GivesTheAnswerOfTheRulesForEveryShortPair)
{
    constexpr wchar_t kAlphabet[] = L"AB*?";
    std::vector<std::wstring> patterns = {L""};
    for (std::size_t i = 0; patterns[i].size() < 5; ++i) {
        for (const wchar_t* character = kAlphabet; *character != L'\0'; ++character) {
            patterns.push_back(patterns[i] + *character);
        }
    }
    ASSERT_EQ(1365U, patterns.size()) << "1,863,225 pairs";
    for (const std::wstring& a : patterns) {
        for (const std::wstring& b : patterns) {
            ASSERT_EQ(MatchByTheRules(a, b), IsMatch(a, b))
                << ::testing::PrintToString(a) << " " << ::testing::PrintToString(b);
        }
    }
}

TEST(IsSpecMatch, ComparesLiteralsInOnePass)
{
    constexpr int kMostComparisons = 4; // for each character of both patterns
    const std::pair<std::wstring, std::wstring> cases[] = {
        {std::wstring(1000, L'A'), std::wstring(1000, L'A')},
        {std::wstring(999, L'A') + L"B", std::wstring(1000, L'A')},
        {L"*" + std::wstring(1000, L'A'), std::wstring(2000, L'A')},
        {Repeated(L"*A", 260), std::wstring(520, L'A')},
        {Repeated(L"*A", 260), Repeated(L"B*", 260)},
    };
    for (const auto& [a, b] : cases) {
        std::size_t comparisons = 0;
        const auto count = [&comparisons](wchar_t first, wchar_t second) {
            ++comparisons;
            return first == second;
        };
        EXPECT_EQ(IsMatch(a, b), SpecMatcher(count).Match(a, b));
        EXPECT_LE(comparisons, kMostComparisons * (a.size() + b.size()));
    }
}

TEST(IsSpecMatch, GivesTheAnswerOfTheRulesForRandomPairs)
{
    constexpr int kPairs = 150000;
    constexpr std::size_t kLongest = 9; // characters
    const auto seed = static_cast<unsigned>(::GetTickCount64());
    std::cout << "seed " << seed << '\n';
    std::mt19937 random(seed);
    const auto pattern = [&random] {
        std::wstring text(random() % (kLongest + 1), L'\0');
        for (wchar_t& character : text) {
            character = L"AAB.**?\xFFFF"[random() % 8];
        }
        return text;
    };
    int matches = 0;
    for (int i = 0; i < kPairs; ++i) {
        const std::wstring a = pattern();
        const std::wstring b = pattern();
        const bool expected = MatchByTheRules(a, b);
        matches += expected ? 1 : 0;
        ASSERT_EQ(expected, IsMatch(a, b))
            << "seed " << seed << ": " << ::testing::PrintToString(a) << " " << ::testing::PrintToString(b);
    }
    EXPECT_LT(kPairs / 20, matches) << "the pairs must show both answers";
    EXPECT_GT(kPairs - kPairs / 20, matches);
}

TEST(IsSpecMatch, IsQuickWithTwoPatternsOfManyStars)
{
    const std::wstring a = Repeated(L"*A", 1000) + L"B";
    const std::wstring b = Repeated(L"*A", 1000) + L"C";
    EXPECT_LT(Duration([&] { EXPECT_FALSE(IsMatch(a, b)); }), kQuick);
    EXPECT_LT(Duration([&] { EXPECT_TRUE(IsMatch(a + L"*", b + L"*")); }), kQuick);
    const std::wstring letters(2000, L'A');
    EXPECT_LT(Duration([&] { EXPECT_FALSE(IsMatch(a, letters)); }), kQuick) << "no B in it";
    EXPECT_LT(Duration([&] { EXPECT_TRUE(IsMatch(a, letters + L"B")); }), kQuick);
}

TEST(IsSpecMatch, TakesOneVeryLongPattern)
{
    const std::wstring letters(32000, L'A');
    const std::wstring stars(32000, L'*');
    const std::wstring marks(32000, L'?');
    EXPECT_LT(Duration([&] {
                  for (const std::wstring& pattern : {letters, stars, marks}) {
                      EXPECT_TRUE(IsMatch(pattern, L"*A*"));
                      EXPECT_EQ(pattern == stars, IsMatch(pattern, L"A"));
                      EXPECT_EQ(pattern == stars, IsMatch(pattern, L""));
                      EXPECT_EQ(pattern == stars, IsMatch(L"", pattern));
                      EXPECT_TRUE(IsMatch(pattern, pattern));
                  }
              }),
              4 * kQuick);
}
