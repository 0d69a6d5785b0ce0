// Random input for every string argument of every exported function, and random questions whose answers are known.
//
// KESTROVANE_FUZZ_CALLS and KESTROVANE_FUZZ_SEED set the number of calls and the seed; run has a verb for both.

#include "tests/sweeps/RandomInput.h"
#include "tests/contract/EveryFunctionFixture.h"
#include "tests/sweeps/FuzzSettings.h"
#include "tests/sweeps/MappingModel.h"
#include "tests/sweeps/SweepGround.h"

#include <cstdio>
#include <filesystem>
#include <iterator>
#include <set>

namespace {

constexpr int kShareOfArguments = 3; // these calls change files: the slow ones
constexpr int kShareOfPatterns = 4;
constexpr int kShareOfMappings = 3;

// For the case that the process ends: the call is then the last line of its output.
char g_call[100];

LONG WINAPI PrintCall(EXCEPTION_POINTERS* /*exception*/)
{
    std::fputs(g_call, stderr);
    return EXCEPTION_CONTINUE_SEARCH;
}

// Whether a change at `path` could happen outside the three directories of the tree that the process is in.
bool LeadsOut(const std::wstring& path)
{
    constexpr std::size_t kMostSteps = 2;
    std::size_t steps = 0;
    for (auto at = path.find(L".."); at != std::wstring::npos; at = path.find(L"..", at + 2)) {
        ++steps;
    }
    return path.starts_with(L'\\') || path.starts_with(L'/') || path.find(L':') != std::wstring::npos ||
           steps > kMostSteps || path.find(L"%") != std::wstring::npos;
}

// Names of devices, which exist everywhere: some rows expect a file that is missing. A test of its own passes them.
bool NamesDevice(const std::wstring& path)
{
    constexpr const wchar_t* kDevices[] = {L"NUL", L"CON", L"COM", L"AUX", L"PRN", L"LPT"};
    const std::wstring upper = WString2UpperCase(path);
    return std::any_of(std::begin(kDevices), std::end(kDevices),
                       [&](const wchar_t* device) { return upper.find(device) != std::wstring::npos; });
}

struct Argument {
    const char* function;
    StringArgument argument;
};

std::vector<Argument> AllArguments()
{
    std::vector<Argument> all;
    for (const ExportedFunction& function : AllFunctions()) {
        for (const StringArgument& argument : function.strings) {
            all.push_back({function.name, argument});
        }
    }
    return all;
}

BOOL WINAPI RegisterNothing(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    return TRUE;
}

class RandomInputTest : public LibraryTest {
protected:
    void SetUp() override
    {
        m_seed = FuzzSeed();
        std::printf("Random input: seed %llu\n", static_cast<unsigned long long>(m_seed));
        std::fflush(stdout);
        input = RandomInput(m_seed);
        ::SetUnhandledExceptionFilter(&PrintCall);
        EXPECT_FALSE(isDirectoryExists(L"\\\\none\\share")); // the first look at a share opens a handle that stays
        LibraryTest::SetUp();
        RegisterSilentHost();
    }

    void TearDown() override
    {
        ::SetUnhandledExceptionFilter(nullptr);
        LibraryTest::TearDown();
    }

    // For messages.
    [[nodiscard]] std::string Title(const char* what, int call) const
    {
        return std::string(what) + ", call " + std::to_string(call) + ", seed " + std::to_string(m_seed);
    }

    RandomInput input{0};

private:
    std::uint64_t m_seed = 0;
    const ImportPatch m_noMoves{"MoveFileExW", &RegisterNothing};
    const ImportPatch m_noMessages{"printf", &PrintNothing};
};

// Without doubled backslashes: Windows compares directories by the rules of a language, which may ignore one.
std::wstring RandomDirectory(RandomInput& input, std::size_t longest)
{
    std::wstring directory = input.Of(L"aAb\\", longest);
    directory.erase(std::unique(directory.begin(), directory.end(),
                                [](wchar_t first, wchar_t second) { return first == L'\\' && second == L'\\'; }),
                    directory.end());
    return directory;
}

std::string Described(const std::vector<VSS_ALTERNATE_MAPPING>& mappings, const std::wstring& path,
                      const std::wstring& spec)
{
    std::string described = "file " + Utf8(path) + " " + Utf8(spec);
    for (const VSS_ALTERNATE_MAPPING& mapping : mappings) {
        described += ", " + Utf8(mapping.path) + " " + Utf8(mapping.fileSpec) + (mapping.recursive ? " and below" : "");
    }
    return described;
}

StringList FilesBelow(const std::wstring& directory)
{
    StringList files;
    for (const auto& entry : std::filesystem::recursive_directory_iterator(directory)) {
        if (!entry.is_directory()) {
            files.push_back(entry.path().wstring());
        }
    }
    std::sort(files.begin(), files.end());
    return files;
}

StringList Sorted(StringList list)
{
    std::sort(list.begin(), list.end());
    return list;
}

} // namespace

TEST_F(RandomInputTest, IsHandledByEveryStringArgument)
{
    const CallGround ground(tree);
    SweepGround files(ground);
    const std::vector<Argument> arguments = AllArguments();
    const int handles = OpenHandleCount();
    int made = 0;
    for (int call = 0; made < FuzzShare(kShareOfArguments) && !HasFailure(); ++call) {
        const auto& [function, argument] = arguments[input.Below(arguments.size())];
        const std::wstring path = input.Path();
        if ((argument.effect == Effect::kChanges && LeadsOut(path)) || NamesDevice(path)) {
            continue;
        }
        const std::string title = Title(function, call) + ", " + argument.name + ": " + Utf8(path.substr(0, 300));
        SCOPED_TRACE(title);
        std::snprintf(g_call, sizeof(g_call), "%.90s\n", title.c_str());
        {
            const WorkingDirectory in(ground.home);
            ::SetLastError(ERROR_ACCESS_DENIED);
            EXPECT_NO_THROW(argument.call(ground, path));
        }
        if (argument.effect == Effect::kChanges) { // some rows expect a file that is missing
            files.Clean();
        }
        ++made;
    }
    EXPECT_EQ(handles, OpenHandleCount());
    std::printf("Random input: %d calls.\n", made);
    RecordProperty("calls", made);
}

TEST_F(RandomInputTest, DevicesAreReadLikeEmptyFilesOrNotAtAll)
{
    constexpr const wchar_t* kDevices[] = {L"NUL",   L"nul.txt", L"AUX",     L"PRN",        L"COM1",         L"LPT1.a",
                                           L"CON:x", L"CONIN$",  L"COM\xB9", LR"(\\.\NUL)", LR"(\\?\C:\NUL)"};
    constexpr const wchar_t* kBefore[] = {L"", LR"(C:\)", LR"(.\)", LR"(missing\)"};
    const std::wstring directory = tree.Directory(L"copies");
    const WorkingDirectory in(tree.Root());
    for (const wchar_t* before : kBefore) {
        for (const wchar_t* device : kDevices) {
            std::wstring path = std::wstring(before) + device;
            SCOPED_TRACE(Utf8(path));
            EXPECT_EQ(0, getFileSize(path));
            static_cast<void>(isDirectoryExists(path));
            static_cast<void>(isFileExists(path));
            static_cast<void>(IsCanReplaceFile(path));
            const std::wstring target = directory + LR"(\copy)";
            EXPECT_TRUE(DoCopyComponentFile(path, target) == 0 || ReadFileBytes(target).empty());
            ::DeleteFileW(target.c_str());
        }
    }
    EXPECT_TRUE(EntriesOf(directory).empty());
}

TEST_F(RandomInputTest, SharesOfVolumesBecomeLocalPaths)
{
    for (int call = 0; call < FuzzShare(1) && !HasFailure(); ++call) {
        const std::wstring drive = input.Of(L"CDe", 1) + L"F";
        const std::wstring rest = L"\\" + input.Of(L"aB. $\\\xE9", 20);
        const std::wstring share = LR"(\\server)" + input.Of(L"a.-", 5) + LR"(\volume$)" + drive + rest;
        EXPECT_EQ(drive + L":" + rest, GetPathFileTranslate(share)) << Title(Utf8(share).c_str(), call);
    }
}

TEST_F(RandomInputTest, PatternsOverlapAsThePlainRecursionSays)
{
    int overlaps = 0;
    for (int call = 0; call < FuzzShare(kShareOfPatterns) && !HasFailure(); ++call) {
        std::wstring first = input.Of(L"aAb.*?", 8);
        std::wstring second = input.Of(L"aAb.*?", 8);
        std::wstring path = L"C:";
        const bool expected = SomeNameMatches(first, second);
        EXPECT_EQ(expected, IsFileDescMatch(path, first, false, path, second, false))
            << Title("IsFileDescMatch", call) << ": " << Utf8(first) << " and " << Utf8(second);
        overlaps += expected ? 1 : 0;
    }
    EXPECT_LT(FuzzShare(kShareOfPatterns) / 20, overlaps) << "the patterns hardly ever overlap";
}

TEST_F(RandomInputTest, MappingsCoverWhatTheirDescriptionSays)
{
    int covered = 0;
    for (int call = 0; call < FuzzShare(kShareOfMappings) / 2 && !HasFailure(); ++call) {
        std::vector<VSS_ALTERNATE_MAPPING> mappings(input.Below(4));
        for (VSS_ALTERNATE_MAPPING& mapping : mappings) {
            mapping = {RandomDirectory(input, 4), input.Of(L"XY\\", 3), input.Of(L"a.*?", 3), input.OneIn(2)};
        }
        const std::wstring path = RandomDirectory(input, 6);
        std::wstring spec = input.Of(L"a.*?", 3);
        SCOPED_TRACE(Title("mapping", call));
        for (const bool ignoresBackslash : {false, true}) {
            const auto expected = Mapped(mappings, path, spec, ignoresBackslash);
            std::wstring mapped = path;
            const bool found = (ignoresBackslash ? MapRestorePath1 : MapRestorePath)(mapped, spec, mappings);
            EXPECT_EQ(expected.has_value(), found) << Described(mappings, path, spec);
            EXPECT_EQ(expected.value_or(path), mapped) << Described(mappings, path, spec);
            covered += found ? 1 : 0;
        }
    }
    EXPECT_LT(FuzzShare(kShareOfMappings) / 20, covered) << "the mappings hardly ever cover a file";
}

TEST_F(RandomInputTest, ListingsAreThoseOfTheStandardLibrary)
{
    constexpr int kCallsOfOneTree = 2500;
    constexpr int kFiles = 20;
    for (int round = 0; round <= FuzzShare(10) / kCallsOfOneTree && !HasFailure(); ++round) {
        SCOPED_TRACE(Title("tree", round));
        const std::wstring top = L"top" + std::to_wstring(round);
        std::wstring directory = top;
        for (int file = 0; file < kFiles; ++file) {
            directory = input.OneIn(3) ? directory + L"\\d" + input.Of(L"ab\xE9\x416", 4) : directory;
            directory = input.OneIn(4) ? top : directory;
            tree.File(directory + L"\\f" + input.Of(L"aZ_9.\xE9\x416", 8) + L"x");
        }
        const std::wstring root = tree.Path(top);
        const StringList expected = FilesBelow(root);
        EXPECT_EQ(expected, Sorted(ListFilesFilterRecursive(root, L"*", true)));
        StringList ofTop;
        for (const std::wstring& file : expected) {
            if (file.find(L'\\', root.size() + 1) == std::wstring::npos) {
                ofTop.push_back(file);
            }
        }
        EXPECT_EQ(ofTop, ListFilesFilter(root, L"*", true));
    }
}
