// The functions that share no state: they change no data of the module, and four threads may call them at once.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/sweeps/FuzzSettings.h"

#include <atomic>
#include <map>
#include <set>
#include <thread>

namespace {

// These touch nothing but their arguments and Windows.
const std::set<std::string> kWithoutSharedState = {
    "AppendBackslash",
    "BuildSnapshotFilePath",
    "DeleteCacheFileList, a list",
    "DeleteCacheFileList, a map",
    "DoExpandEnvironmentStrings",
    "EnumVolumes",
    "FindMatchStringInList",
    "FindStringInList",
    "GetDisplayNameForVolumeNoThrow",
    "GetNQUniqueVolumeNameForPath",
    "GetUniqueVolumeNameForPath",
    "GetUniqueVolumeNameForPathNoThrow",
    "IsEqual",
    "IsFileDescMatch",
    "IsFileExistsSnap",
    "IsRunOnWin2003SP1Up",
    "IsRunsOnWinXP",
    "IsVolume",
    "MapRestorePath1",
    "WString2UpperCase",
    "WStringAfterWCHAR",
    "WStringBeforeWCHAR",
    "getFileSize",
};

// These read the host's functions as well, and call them: they must be safe in several threads.
const std::set<std::string> kWithHostFunctionsAlone = {
    "DeleteDirectoryRecursive",
    "FindStringKeyInMap",
    "FindStringValueInMap",
    "MapRestorePath",
    "PrintStringMap",
    "PrintStringVector",
    "SendKA",
};

bool IsThreadSafe(const ExportedFunction& function)
{
    return kWithoutSharedState.contains(function.name) || kWithHostFunctionsAlone.contains(function.name);
}

// The sections that the library may write to. The addresses of its imports are among them: no test may patch one
// between two readings.
std::string WritableData()
{
    const auto* base = reinterpret_cast<const BYTE*>(::GetModuleHandleW(L"Kestrovane.dll"));
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    std::string data;
    for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) != 0) {
            data.append(reinterpret_cast<const char*>(base + section->VirtualAddress), section->Misc.VirtualSize);
        }
    }
    return data;
}

class SharedStateTest : public EveryFunctionTest {
protected:
    // Makes every sample call, and one with an odd string for each argument that is only read.
    void MakeAll() const
    {
        for (const SampleCall& call : GetParam().calls) {
            Make(call, [](const std::function<void()>& function) { function(); });
        }
        ground.Build();
        for (const StringArgument& argument : GetParam().strings) {
            if (argument.effect == Effect::kReads) {
                argument.call(ground, LR"(Q:\missing\x)");
            }
        }
    }
};

std::vector<ExportedFunction> FunctionsWith(bool threadSafe)
{
    std::vector<ExportedFunction> functions = AllFunctions();
    std::erase_if(functions, [&](const ExportedFunction& function) { return IsThreadSafe(function) != threadSafe; });
    return functions;
}

// Does not count handles, unlike LibraryTest: threads that wait for each other open one, once in a process, and keep it.
class ThreadsTest : public ::testing::Test {
protected:
    HostRecorder host;
    TestDirectory tree;
};

std::atomic<int> g_lines = 0;

using StringMap = std::map<std::wstring, std::wstring>;

// What the functions of strings, lists and patterns return for inputs of one thread.
std::wstring StringResults(const std::wstring& own)
{
    std::wstring results = AppendBackslash(own) + WStringAfterWCHAR(own, L'|') + WStringBeforeWCHAR(own, L'|') +
                           WString2UpperCase(own) + FindStringValueInMap(own, {{own, L"value"}}) +
                           FindStringKeyInMap(L"VALUE", {{own, L"value"}});
    results += IsEqual(own, own) ? L'1' : L'0';
    results += FindStringInList(own, {L"other", own}) ? L'1' : L'0';
    results += FindMatchStringInList(own, {L"other", own}) ? L'1' : L'0';
    PrintStringVector("title", {own});
    PrintStringMap("title", {{own, own}});
    SendKA(nullptr);
    std::wstring first = own;
    std::wstring second = own;
    std::wstring spec = L"*.txt";
    results += IsFileDescMatch(first, spec, true, second, spec, false) ? L'1' : L'0';
    std::vector<VSS_ALTERNATE_MAPPING> mappings = {{own, L"D:", L"*", true}};
    results += MapRestorePath(first, spec, mappings) ? first : L"0";
    results += MapRestorePath1(second, spec, mappings) ? second : L"0";
    CComBSTR expanded((L"%SystemRoot%" + own).c_str());
    DoExpandEnvironmentStrings(expanded);
    return results + expanded.m_str;
}

// The same for volumes and versions, and for files below one thread's directory.
std::wstring FileResults(const TestDirectory& tree)
{
    std::wstring file = tree.File(L"file", "12345");
    std::string narrow(file.begin(), file.end());
    std::wstring results = std::to_wstring(getFileSize(file)) + (IsFileExistsSnap(narrow.data()) ? L"1" : L"0");
    std::wstring name;
    results += GetUniqueVolumeNameForPath(file) + GetNQUniqueVolumeNameForPath(file);
    results += GetUniqueVolumeNameForPathNoThrow(file, name) ? name : L"0";
    results += GetDisplayNameForVolumeNoThrow(GetUniqueVolumeNameForPath(L"C:"), name) ? name : L"0";
    results += std::to_wstring(EnumVolumes().size()) + (IsVolume(L"C:") ? L"1" : L"0");
    results += std::to_wstring(IsRunsOnWinXP()) + std::to_wstring(IsRunOnWin2003SP1Up());
    CComBSTR snapshot;
    StringMap devices = {{GetUniqueVolumeNameForPath(L"C:"), L"device"}};
    BuildSnapshotFilePath(file.c_str(), snapshot, devices);
    std::vector<std::wstring> list = {tree.File(L"listed")};
    StringMap map = {{L"live", tree.File(L"mapped")}};
    results += DeleteCacheFileList(list) && DeleteCacheFileList(map, L'\0') ? L'1' : L'0';
    tree.File(LR"(top\sub\file)");
    results += DeleteDirectoryRecursive(tree.Path(L"top").c_str()) != 0 ? L'1' : L'0';
    return results + snapshot.m_str;
}

// Calls all functions again and again. Returns how often a result was not the expected one.
int Differences(const TestDirectory& tree, const std::wstring& own, int rounds)
{
    const std::wstring strings = StringResults(own);
    const std::wstring files = FileResults(tree);
    int differences = 0;
    for (int round = 0; round < rounds; ++round) {
        differences += StringResults(own) == strings ? 0 : 1;
        differences += FileResults(tree) == files ? 0 : 1;
    }
    return differences;
}

int __cdecl CountLine(int /*level*/, const char* /*format*/, ...)
{
    ++g_lines;
    return 0;
}

int __cdecl CountKeepAlive(int /*seconds*/, ...)
{
    ++g_lines;
    return 0;
}

} // namespace

TEST_P(SharedStateTest, IsNotChanged)
{
    MakeAll();
    const std::string before = WritableData();
    MakeAll();
    EXPECT_TRUE(before == WritableData()) << "data of the module was changed";
}

INSTANTIATE_TEST_SUITE_P(Every, SharedStateTest, ::testing::ValuesIn(FunctionsWith(true)), &TestNameOf);

TEST(SharedState, ListsNameFunctionsOfTheLibrary)
{
    EXPECT_EQ(kWithoutSharedState.size() + kWithHostFunctionsAlone.size(), FunctionsWith(true).size());
}

TEST_F(ThreadsTest, FourThreadsGetTheResultsOfOne)
{
    constexpr int kThreads = 4;
    constexpr int kUsualCalls = 1000;
    const int rounds = static_cast<int>(FuzzSetting("KESTROVANE_LONG_CALLS", kUsualCalls)) / 50;
    const ImportPatch noMessages("printf", &PrintNothing);
    SetVssFileManagerLogger(&CountLine, &CountKeepAlive, &CountLine);
    g_lines = 0;
    const TestDirectory trees[kThreads];
    int differences[kThreads] = {};
    std::vector<std::thread> threads;
    for (int i = 0; i < kThreads; ++i) {
        threads.emplace_back(
            [&, i] { differences[i] = Differences(trees[i], L"C:\\own|of thread " + std::to_wstring(i), rounds); });
    }
    for (std::thread& thread : threads) {
        thread.join();
    }
    const int lines = g_lines;
    for (const int difference : differences) {
        EXPECT_EQ(0, difference);
    }
    g_lines = 0;
    EXPECT_EQ(0, Differences(trees[0], LR"(C:\own|of thread 0)", rounds));
    EXPECT_EQ(kThreads * g_lines, lines) << "log lines were lost";
}

// What shows that the comparison finds a change.
TEST_F(ThreadsTest, OtherFunctionsChangeSharedState)
{
    isDirectoryExists(LR"(Q:\a)"); // the file manager keeps the error's string
    GetTotalVolumeSpace(LR"(C:\)");
    const std::string before = WritableData();
    RecursivelyCreateDirectory(tree.Root());
    EXPECT_FALSE(before == WritableData());
    const std::string afterCreation = WritableData();
    ListFilesFilter(LR"(Q:\a directory that is missing)", L"*", true);
    EXPECT_FALSE(afterCreation == WritableData());
}
