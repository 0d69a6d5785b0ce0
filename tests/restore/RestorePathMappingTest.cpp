// Mapping of restore paths to their alternate locations.

#include "tests/support/LibraryTest.h"

namespace {

using Mappings = std::vector<VSS_ALTERNATE_MAPPING>;

bool IsSame(const VSS_ALTERNATE_MAPPING& first, const VSS_ALTERNATE_MAPPING& second)
{
    return first.path == second.path && first.alternateLocation == second.alternateLocation &&
           first.fileSpec == second.fileSpec && first.recursive == second.recursive;
}

constexpr const wchar_t* kNotMapped = L"<not mapped>";

// Where a function maps a path to. What it only reads must stay as it is.
template <typename Function>
std::wstring Mapped(Function* function, const std::wstring& path, const std::wstring& spec, Mappings mappings)
{
    const Mappings mappingsBefore = mappings;
    std::wstring result = path;
    std::wstring specGiven = spec;
    const bool mapped = function(result, specGiven, mappings);
    EXPECT_EQ(spec, specGiven);
    EXPECT_TRUE(std::equal(mappings.begin(), mappings.end(), mappingsBefore.begin(), mappingsBefore.end(), &IsSame));
    EXPECT_TRUE(mapped || result == path) << "a path that is not mapped stays";
    return mapped ? result : kNotMapped;
}

std::wstring Mapped0(const std::wstring& path, const Mappings& mappings, const std::wstring& spec = L"a.txt")
{
    return Mapped(&MapRestorePath, path, spec, mappings);
}

std::wstring Mapped1(const std::wstring& path, const Mappings& mappings, const std::wstring& spec = L"a.txt")
{
    return Mapped(&MapRestorePath1, path, spec, mappings);
}

constexpr bool kRecursive = true;
constexpr bool kFlat = false;

struct MapCase {
    VSS_ALTERNATE_MAPPING mapping;
    std::wstring path;
    std::wstring result;  // of MapRestorePath
    std::wstring result1; // of MapRestorePath1
    const char* why;
};

const MapCase kMapCases[] = {
    {{LR"(C:\Data)", LR"(E:\New)", L"*", kFlat}, LR"(c:\data)", LR"(E:\New)", LR"(E:\New)", "case does not count"},
    {{LR"(C:\Data)", LR"(E:\New)", L"*", kFlat},
     LR"(C:\Data\)",
     LR"(E:\New\)",
     LR"(E:\New\)",
     "the input's backslash is its rest"},
    {{LR"(C:\Data)", LR"(D:\Restore)", L"*", kRecursive},
     LR"(C:\Data\Sub)",
     LR"(D:\Restore\Sub)",
     LR"(D:\Restore\Sub)",
     "no backslash at the mapping's end: both the same"},
    {{LR"(C:\Data\)", LR"(D:\Restore)", L"*", kRecursive},
     LR"(C:\Data\Sub)",
     LR"(D:\RestoreSub)",
     LR"(D:\Restore\Sub)",
     "a backslash at the mapping's end: names run together"},
    {{LR"(C:\Data\)", LR"(D:\Restore\)", L"*", kRecursive},
     LR"(C:\Data\Sub)",
     LR"(D:\Restore\Sub)",
     LR"(D:\Restore\\Sub)",
     "none is taken out either"},
    {{LR"(c:\DATA)", LR"(d:\reStore)", L"*", kRecursive},
     LR"(C:\data\suB\Deeper)",
     LR"(d:\reStore\suB\Deeper)",
     LR"(d:\reStore\suB\Deeper)",
     "the result keeps the case of both"},
    {{LR"(C:\Data)", LR"(D:\Restore)", L"*", kFlat},
     LR"(C:\Data\Sub\Deeper)",
     kNotMapped,
     kNotMapped,
     "a flat mapping does not cover what lies below"},
    {{LR"(C:\Data)", LR"(D:\Restore)", L"*", kRecursive},
     LR"(C:\Database)",
     kNotMapped,
     kNotMapped,
     "another directory with the same beginning"},
    {{LR"(C:\Data\Sub)", LR"(D:\Restore)", L"*", kRecursive},
     LR"(C:\Data)",
     kNotMapped,
     kNotMapped,
     "a parent is not covered"},
    {{LR"(C:\Data)", L"", L"*", kRecursive},
     LR"(C:\Data\Sub)",
     LR"(\Sub)",
     LR"(\Sub)",
     "no alternate location: the rest alone"},
    {{LR"(C:\Data)", L"", L"*", kFlat}, LR"(C:\Data)", L"", L"", "nor a rest: empty"},
    {{LR"(C:\Data)", L"a*?:<>|/", L"*", kFlat},
     LR"(C:\Data)",
     L"a*?:<>|/",
     L"a*?:<>|/",
     "the alternate location is not validated"},
    {{LR"(C:\Data)", LR"(D:\New)", L"*.doc", kFlat}, LR"(C:\Data)", kNotMapped, kNotMapped, "other files"},
    {{LR"(C:\Data)", LR"(D:\New)", L"A.T?T", kFlat}, LR"(C:\Data)", LR"(D:\New)", LR"(D:\New)", "these files"},
    {{LR"(C:\Data)", LR"(D:\New)", L"", kFlat}, LR"(C:\Data)", kNotMapped, kNotMapped, "no files"},
    {{LR"(C:\Data\)", LR"(D:\New)", L"*", kFlat},
     LR"(C:\Data)",
     LR"(D:\New)",
     LR"(D:\New)",
     "the mapping's path is the longer: nothing is left of the input"},
    {{LR"(C:\Data\\)", LR"(D:\New)", L"*", kFlat},
     LR"(C:\Data\)",
     kNotMapped,
     LR"(D:\New)",
     "one backslash of two is left out"},
    {{L"", LR"(D:\New)", L"*", kRecursive},
     LR"(\Sub)",
     LR"(D:\New\Sub)",
     LR"(D:\New\Sub)",
     "a mapping without path covers the root"},
    {{LR"(\)", LR"(D:\New)", L"*", kRecursive}, LR"(\Sub)", LR"(D:\NewSub)", LR"(D:\New\Sub)", "so does a backslash"},
    {{LR"(\)", LR"(D:\New)", L"*", kFlat}, L"", LR"(D:\New)", LR"(D:\New)", "an input without path is the root"},
    {{L"", L"", L"*", kFlat}, L"", L"", L"", "nothing to nothing"},
    {{L"C:", L"D:", L"*", kRecursive}, LR"(c:\x)", LR"(D:\x)", LR"(D:\x)", "a whole drive"},
    {{L"C:\\\u00E9", L"D:\\\u0416", L"*", kRecursive},
     L"C:\\\u00C9\\\U0001F600",
     L"D:\\\u0416\\\U0001F600",
     L"D:\\\u0416\\\U0001F600",
     "characters of every plane"},
};

} // namespace

class RestorePathMappingTest : public LibraryTest {
protected:
    void TearDown() override
    {
        LibraryTest::TearDown();
        EXPECT_TRUE(host.KeepAlives().empty());
    }
};

TEST_F(RestorePathMappingTest, PutsTheAlternateLocationInPlaceOfTheMappedPath)
{
    for (const MapCase& row : kMapCases) {
        EXPECT_EQ(row.result, Mapped0(row.path, {row.mapping})) << row.why;
    }
}

TEST_F(RestorePathMappingTest, LeavesOneBackslashOfTheMappingOutInTheSecondForm)
{
    for (const MapCase& row : kMapCases) {
        EXPECT_EQ(row.result1, Mapped1(row.path, {row.mapping})) << row.why;
    }
}

TEST_F(RestorePathMappingTest, MapsNothingWithoutMappings)
{
    EXPECT_EQ(kNotMapped, Mapped0(LR"(C:\Data)", {}));
    EXPECT_EQ(kNotMapped, Mapped1(LR"(C:\Data)", {}));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(RestorePathMappingTest, TakesTheFirstMappingThatCoversTheFile)
{
    const VSS_ALTERNATE_MAPPING wide = {L"C:", LR"(D:\Wide)", L"*", kRecursive};
    const VSS_ALTERNATE_MAPPING narrow = {LR"(C:\Data)", LR"(D:\Narrow)", L"a.txt", kFlat};
    EXPECT_EQ(LR"(D:\Wide\Data)", Mapped0(LR"(C:\Data)", {wide, narrow})) << "even if a later one fits better";
    EXPECT_EQ(LR"(D:\Wide\Data)", Mapped1(LR"(C:\Data)", {wide, narrow}));
    EXPECT_EQ(LR"(D:\Narrow)", Mapped0(LR"(C:\Data)", {narrow, wide}));
    EXPECT_EQ(LR"(D:\Narrow)", Mapped1(LR"(C:\Data)", {narrow, wide}));
}

TEST_F(RestorePathMappingTest, PassesOverMappingsThatDoNotCoverTheFile)
{
    const Mappings mappings = {
        {LR"(C:\Data)", LR"(D:\OtherFiles)", L"*.doc", kRecursive},
        {LR"(C:\Other)", LR"(D:\OtherDirectory)", L"*", kRecursive},
        {LR"(C:\Data\Sub)", LR"(D:\Below)", L"*", kRecursive},
        {LR"(C:\Dat)", LR"(D:\Shorter)", L"*", kRecursive},
        {LR"(C:\Data)", LR"(D:\Right)", L"*.txt", kFlat},
        {LR"(C:\Data)", LR"(D:\TooLate)", L"*", kRecursive},
    };
    EXPECT_EQ(LR"(D:\Right)", Mapped0(LR"(C:\Data)", mappings));
    EXPECT_EQ(LR"(D:\Right)", Mapped1(LR"(C:\Data)", mappings));
    EXPECT_EQ(kNotMapped, Mapped0(LR"(C:\Elsewhere)", mappings));
    EXPECT_EQ(kNotMapped, Mapped1(LR"(C:\Elsewhere)", mappings));
    EXPECT_EQ(LR"(D:\OtherFiles)", Mapped0(LR"(C:\Data)", mappings, L"*.doc")) << "the file may be a pattern, too";
}

TEST_F(RestorePathMappingTest, NeverTakesTheFileForARecursiveDescription)
{
    EXPECT_EQ(kNotMapped, Mapped0(LR"(C:\Data)", {{LR"(C:\Data\Sub)", LR"(D:\New)", L"*", kFlat}}));
    EXPECT_EQ(kNotMapped, Mapped0(LR"(C:\Data)", {{LR"(C:\Data\Sub)", LR"(D:\New)", L"*", kRecursive}}));
}

namespace {

HostEvent Line(const std::string& format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 2, format, text};
}

constexpr const char* kQueryFormat = "<query>   '%S', Spec = '%S',Recursive='%s'\n ";
constexpr const char* kMappingFormat = "<mapping> '%S', Spec = '%S',Recursive='%s'\n ";

} // namespace

TEST_F(RestorePathMappingTest, LogsTheFileAndTheMappingAsTheyAreCompared)
{
    Mapped0(LR"(c:\data\x)", {{LR"(C:\Other)", L"", L"*", kFlat}, {LR"(c:\Data)", LR"(d:\new)", L"*.t?t", kRecursive}});
    const std::vector<HostEvent> expected = {
        Line(kQueryFormat, L"<query>   'C:\\DATA\\X\\', Spec = 'A.TXT',Recursive='false'\n "),
        Line(kMappingFormat, L"<mapping> 'C:\\DATA\\', Spec = '*.T?T',Recursive='true'\n "),
        Line("Condition 1\n", L"Condition 1\n"),
        Line("Condition 2\n", L"Condition 2\n"),
    };
    EXPECT_EQ(expected, host.Events());
}

TEST_F(RestorePathMappingTest, LogsTheConditionsThatHold)
{
    struct Case {
        std::wstring mapping;
        bool recursive;
        std::wstring path;
        StringList conditions;
        const char* why;
    };
    const Case cases[] = {
        {LR"(C:\Data)", kFlat, LR"(C:\Data)", {L"Condition 1\n", L"Condition 2\n"}, "equal lengths"},
        {LR"(C:\Data)", kRecursive, LR"(C:\Data\x)", {L"Condition 1\n", L"Condition 2\n"}, "recursive, input longer"},
        {LR"(C:\Data)", kRecursive, LR"(C:\Data)", {L"Condition 1\n", L"Condition 2\n"}, "recursive, equal lengths"},
        {LR"(C:\Data)", kFlat, LR"(C:\Data\)", {L"Condition 2\n"}, "flat, input longer"},
        {LR"(C:\Data\)", kFlat, LR"(C:\Data)", {}, "flat, mapping longer"},
        {LR"(C:\Data\)", kRecursive, LR"(C:\Data)", {L"Condition 1\n"}, "recursive, mapping longer"},
    };
    for (const auto& [mapping, recursive, path, conditions, why] : cases) {
        host.Clear();
        Mapped0(path, {{mapping, LR"(D:\New)", L"*", recursive}});
        StringList lines = host.LinesAt(2);
        ASSERT_LE(2U, lines.size()) << why;
        EXPECT_EQ(recursive, lines[1].ends_with(L"Recursive='true'\n ")) << why;
        EXPECT_EQ(!recursive, lines[1].ends_with(L"Recursive='false'\n ")) << why;
        lines.erase(lines.begin(), lines.begin() + 2);
        EXPECT_EQ(conditions, lines) << why;
        EXPECT_EQ(lines.size() + 2, host.Events().size()) << "all lines have level 2";
    }
}

TEST_F(RestorePathMappingTest, LogsNothingWithoutAMatchAndNothingInTheSecondForm)
{
    const Mappings mappings = {{LR"(C:\Data\)", LR"(D:\New)", L"*", kRecursive}};
    Mapped0(LR"(C:\Other)", mappings);
    Mapped1(LR"(C:\Other)", mappings);
    EXPECT_EQ(LR"(D:\New\x)", Mapped1(LR"(C:\Data\x)", mappings));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(RestorePathMappingTest, EndsStringsAtAnEmbeddedNul)
{
    const std::wstring path(L"C:\\Data\\x\0y", 11);
    EXPECT_EQ(LR"(D:\New\x)", Mapped0(path, {{LR"(C:\Data)", LR"(D:\New)", L"*", kRecursive}}));
    const std::wstring location(L"D:\\New\0y", 8);
    EXPECT_EQ(LR"(D:\New\x)", Mapped0(LR"(C:\Data\x)", {{LR"(C:\Data)", location, L"*", kRecursive}}));
    const std::wstring mapped(L"C:\\Data\0"
                              L"more than the input",
                              27);
    EXPECT_EQ(LR"(D:\New)", Mapped0(LR"(C:\Data\x)", {{mapped, LR"(D:\New)", L"*", kRecursive}}))
        << "the length of the mapping's path counts whole";
}

TEST_F(RestorePathMappingTest, TakesLongTexts)
{
    const std::wstring deep = LR"(C:\Data\)" + std::wstring(32000, L'x');
    const std::wstring location = LR"(D:\)" + std::wstring(32000, L'y');
    EXPECT_TRUE(location + deep.substr(7) == Mapped0(deep, {{LR"(C:\Data)", location, L"*", kRecursive}}));
    EXPECT_TRUE(location == Mapped1(deep, {{deep + L"\\", location, L"*", kFlat}}));
}
