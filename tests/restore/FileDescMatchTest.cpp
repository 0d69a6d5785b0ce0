// Whether two file descriptions overlap.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryMeters.h"

#include <optional>

namespace {

struct Description {
    std::wstring path;
    std::wstring spec;
    bool recursive;
};

// The answer, which must not depend on the order of the descriptions; neither may change.
bool Match(const Description& first, const Description& second)
{
    Description a = first;
    Description b = second;
    const bool answer = IsFileDescMatch(a.path, a.spec, a.recursive, b.path, b.spec, b.recursive);
    EXPECT_EQ(answer, IsFileDescMatch(b.path, b.spec, b.recursive, a.path, a.spec, a.recursive)) << "swapped";
    EXPECT_EQ(first.path, a.path);
    EXPECT_EQ(first.spec, a.spec);
    EXPECT_EQ(second.path, b.path);
    EXPECT_EQ(second.spec, b.spec);
    return answer;
}

struct PathCase {
    std::wstring first;
    std::wstring second;
    // How the directories stand to each other.
    enum class Relation { kEqual, kSecondBelowFirst, kApart } relation;
    const char* why;
};

using enum PathCase::Relation;

const PathCase kPathCases[] = {
    {LR"(C:\data)", LR"(C:\data)", kEqual, "the same"},
    {LR"(c:\data)", LR"(C:\DATA)", kEqual, "in other case"},
    {LR"(C:\DATA\)", LR"(C:\DATA)", kEqual, "with a backslash at the end"},
    {LR"(c:\data)", LR"(C:\DATA\)", kEqual, "both"},
    {L"C:", LR"(C:\)", kEqual, "a drive and its root"},
    {L"", LR"(\)", kEqual, "no path is the root"},
    {L"", L"", kEqual, "no path twice"},
    {L"C:\\d\u00E9\u0436\u00FF", L"C:\\D\u00C9\u0416\u0178", kEqual, "letters outside A to Z in other case"},
    {LR"(C:\DATA)", LR"(C:\DATA\SUB)", kSecondBelowFirst, "a subdirectory"},
    {LR"(c:\data\)", LR"(C:\Data\Sub\Deeper\)", kSecondBelowFirst, "in other case, deeper"},
    {L"C:", LR"(C:\A)", kSecondBelowFirst, "below a drive"},
    {L"", LR"(\A)", kSecondBelowFirst, "below the root"},
    {LR"(\\srv\share)", LR"(\\SRV\SHARE\dir)", kSecondBelowFirst, "on a share"},
    {LR"(C:\DATA)", LR"(C:\DATABASE)", kApart, "the same beginning, but another name"},
    {LR"(C:\A)", LR"(C:\B)", kApart, "siblings"},
    {LR"(A\B)", LR"(C:\A\B\C)", kApart, "the first occurs in the second, but not at its start"},
    {LR"(B)", LR"(A\B)", kApart, "the first ends the second"},
    {LR"(C:\DATA)", LR"(D:\DATA)", kApart, "other drives"},
    {LR"(C:\DATA\\)", LR"(C:\DATA\SUB)", kApart, "a doubled backslash is a directory of its own"},
    {LR"(C:\D*)", LR"(C:\DATA)", kApart, "paths know no wildcards"},
    {L"C:\\stra\u00DFe", L"C:\\strafe", kApart, "a letter without capital"},
};

} // namespace

TEST(IsFileDescMatch, ComparesThePathsAsFarAsTheFlagsReach)
{
    for (const auto& [first, second, relation, why] : kPathCases) {
        const auto match = [&a = first, &b = second](bool firstRecursive, bool secondRecursive) {
            return Match({a, L"*", firstRecursive}, {b, L"*", secondRecursive});
        };
        EXPECT_EQ(relation == kEqual, match(false, false)) << why;
        EXPECT_EQ(relation != kApart, match(true, false)) << why;
        EXPECT_EQ(relation == kEqual, match(false, true)) << why;
        EXPECT_EQ(relation != kApart, match(true, true)) << why;
    }
}

TEST(IsFileDescMatch, WantsTheSpecificationsToOverlap)
{
    struct Case {
        std::wstring first;
        std::wstring second;
        bool match;
        const char* why;
    };
    const Case cases[] = {
        {L"", L"", true, "nothing and nothing"},
        {L"*", L"", true, "a star covers nothing, too"},
        {L"", L"X", false, "nothing and something"},
        {L"?", L"", false, "a question mark is one character"},
        {L"*.DOC", L"*.TXT", false, "other extensions"},
        {L"*.*", L"FILE", false, "the dot is required"},
        {L"*.*", L"FILE.", true, "the dot is there"},
        {L"*", L"FILE", true, "a star covers everything"},
        {L"*.TXT", L"A*", true, "both cover A.TXT"},
        {L"?", L"*", true, "both cover A"},
        {L"A?C", L"ABD", false, "another last letter"},
        {L"a.txt", L"A.TXT", true, "case does not count"},
        {L"\u00E9*", L"\u00C9x", true, "nor outside A to Z"},
        {L"a?c", L"ABC", true, "one character for the question mark"},
        {L"a?c", L"AC", false, "none for it"},
    };
    for (const auto& [first, second, match, why] : cases) {
        for (const bool recursive : {false, true}) {
            EXPECT_EQ(match, Match({LR"(C:\A)", first, recursive}, {LR"(C:\A)", second, recursive})) << why;
            EXPECT_FALSE(Match({LR"(C:\A)", first, recursive}, {LR"(C:\B)", second, recursive})) << why;
        }
    }
}

TEST(IsFileDescMatch, NeverHoldsWithoutOverlappingSpecificationsWhateverTheFlags)
{
    for (const auto& [first, second, relation, why] : kPathCases) {
        for (const int flags : {0, 1, 2, 3}) {
            EXPECT_FALSE(Match({first, L"*.doc", (flags & 1) != 0}, {second, L"*.txt", (flags & 2) != 0})) << why;
        }
    }
}

TEST(IsFileDescMatch, FindsARecursiveDirectoryInEitherOrder)
{
    EXPECT_TRUE(Match({LR"(C:\DATA)", L"*", true}, {LR"(C:\DATA\SUB)", L"*", false}));
    EXPECT_FALSE(Match({LR"(C:\DATA)", L"*", false}, {LR"(C:\DATA\SUB)", L"*", true}));
    EXPECT_TRUE(Match({LR"(C:\A)", L"*", true}, {LR"(C:\A\B)", L"*", true}));
}

TEST(IsFileDescMatch, EndsAStringAtAnEmbeddedNul)
{
    EXPECT_TRUE(Match({std::wstring(L"C:\\A\0x", 6), L"*", false}, {LR"(C:\A)", L"*", false}));
    EXPECT_TRUE(Match({LR"(C:\A)", std::wstring(L"b\0x", 3), false}, {LR"(C:\A)", L"B", false}));
}

TEST(IsFileDescMatch, TakesLongTexts)
{
    const std::wstring path = L"C:\\" + std::wstring(32000, L'p');
    const std::wstring spec(32000, L's');
    EXPECT_TRUE(Match({path, spec, false}, {path, L"s*", false}));
    EXPECT_TRUE(Match({L"C:", L"?*", true}, {path, spec, false}));
    EXPECT_FALSE(Match({path, spec, false}, {path, L"t*", false}));
}

class IsFileDescMatchTest : public LibraryTest {};

TEST_F(IsFileDescMatchTest, LogsNothing)
{
    EXPECT_TRUE(Match({LR"(C:\A)", L"*", true}, {LR"(C:\A)", L"*", true}));
    EXPECT_FALSE(Match({LR"(C:\A)", L"*", true}, {LR"(C:\B)", L"*", true}));
    EXPECT_TRUE(host.Events().empty());
}

namespace {

struct Comparison {
    std::wstring first;
    std::wstring second;
    LCID locale;
    ULONG flags;
};

std::vector<Comparison> g_comparisons;
std::optional<HRESULT> g_comparisonResult;

HRESULT WINAPI RecordVarBstrCmp(BSTR first, BSTR second, LCID locale, ULONG flags)
{
    g_comparisons.push_back({first, second, locale, flags});
    return g_comparisonResult.value_or(::VarBstrCmp(first, second, locale, flags));
}

} // namespace

// Simulation: the comparisons are recorded on their way to Windows, or answered.
TEST_F(IsFileDescMatchTest, ComparesTheNormalisedPathsInTheUsersLocale)
{
    const ImportPatch compare("VarBstrCmp", &RecordVarBstrCmp);
    g_comparisons.clear();
    g_comparisonResult.reset();
    Description a = {LR"(c:\a)", L"*", false};
    Description b = {LR"(C:\B\)", L"*", false};
    EXPECT_FALSE(IsFileDescMatch(a.path, a.spec, false, b.path, b.spec, false));
    ASSERT_EQ(1U, g_comparisons.size());
    EXPECT_EQ(LR"(C:\A\)", g_comparisons[0].first);
    EXPECT_EQ(LR"(C:\B\)", g_comparisons[0].second);
    EXPECT_EQ(0x400U, g_comparisons[0].locale);
    EXPECT_EQ(0U, g_comparisons[0].flags);
    const std::pair<HRESULT, bool> answers[] = {{0, false}, {1, true}, {2, false}, {3, false}, {E_INVALIDARG, false}};
    for (const auto& [answer, match] : answers) {
        g_comparisonResult = answer;
        EXPECT_EQ(match, IsFileDescMatch(a.path, a.spec, false, b.path, b.spec, false)) << answer;
    }
}

// Simulation: memory runs short at each allocation in turn.
TEST_F(IsFileDescMatchTest, ThrowsOnlyOutOfMemoryAndFreesItsStrings)
{
    Description a = {LR"(C:\A)", L"*.a", true};
    Description b = {LR"(C:\A\B)", L"b.*", true};
    const auto attempt = [&]() -> HRESULT {
        try {
            return IsFileDescMatch(a.path, a.spec, true, b.path, b.spec, true) ? S_OK : S_FALSE;
        } catch (const CAtlException& exception) {
            return exception.m_hr;
        }
    };
    {
        const BstrMeter meter;
        for (int failing = 1;; ++failing) {
            BstrMeter::FailAt(failing);
            const HRESULT result = attempt();
            EXPECT_EQ(0, BstrMeter::Outstanding()) << failing;
            if (!BstrMeter::HasFailed()) {
                EXPECT_EQ(S_OK, result);
                EXPECT_EQ(5, failing) << "two strings for each description";
                break;
            }
            EXPECT_EQ(E_OUTOFMEMORY, result) << failing;
        }
    }
    const HeapMeter meter;
    HRESULT result = E_FAIL;
    HeapMeter::Run(1, HeapMeter::Shortage::kFromThenOn, [&] { result = attempt(); });
    EXPECT_FALSE(HeapMeter::HasFailed()) << "the comparison itself allocates nothing";
    EXPECT_EQ(S_OK, result);
}
