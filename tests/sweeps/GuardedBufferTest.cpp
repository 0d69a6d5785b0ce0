// Buffers of the library that Windows fills to the last character, with and without a terminator. Simulations.
//
// A buffer on the heap ends at an unreadable page; one on the stack is followed by the compiler's canary.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/sweeps/GuardedHeap.h"

#include <cstring>
#include <cwchar>

namespace {

constexpr std::size_t kReadBlock = 64; // characters: a multiple of the alignment

bool g_terminates = false;
int g_fills = 0; // since the call

// Fills the buffer with an absolute path that has no separator after its root.
void Fill(wchar_t* buffer, DWORD capacity)
{
    ++g_fills;
    std::wmemset(buffer, L'x', capacity);
    for (DWORD i = 0; i < 3 && i < capacity; ++i) {
        buffer[i] = LR"(C:\)"[i];
    }
    if (g_terminates && capacity > 0) {
        buffer[capacity - 1] = L'\0';
    }
}

BOOL WINAPI FillVolumePath(const wchar_t* /*path*/, wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return TRUE;
}

// After its capacity, a BSTR has a terminator.
BOOL WINAPI OverfillVolumePath(const wchar_t* /*path*/, wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity + 2);
    return TRUE;
}

BOOL WINAPI FillMountPaths(const wchar_t* /*name*/, wchar_t* buffer, DWORD capacity, DWORD* needed)
{
    Fill(buffer, capacity);
    *needed = capacity;
    return TRUE;
}

// Asks for a larger buffer first.
BOOL WINAPI FillLargerMountPaths(const wchar_t* /*name*/, wchar_t* buffer, DWORD capacity, DWORD* needed)
{
    constexpr DWORD kLarger = 1000; // characters
    *needed = kLarger;
    if (capacity < kLarger) {
        ::SetLastError(ERROR_MORE_DATA);
        return FALSE;
    }
    Fill(buffer, capacity);
    return TRUE;
}

HANDLE WINAPI FillFirstVolume(wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return reinterpret_cast<HANDLE>(1);
}

BOOL WINAPI FillNextVolume(HANDLE /*search*/, wchar_t* buffer, DWORD capacity)
{
    const bool isLast = g_fills > 20;
    Fill(buffer, capacity);
    ::SetLastError(ERROR_NO_MORE_FILES);
    return isLast ? FALSE : TRUE;
}

BOOL WINAPI CloseNoVolumes(HANDLE /*search*/)
{
    return TRUE;
}

DWORD WINAPI FillExpansion(const wchar_t* /*string*/, wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return capacity;
}

DWORD WINAPI FillTemporaryDirectory(DWORD capacity, wchar_t* buffer)
{
    Fill(buffer, capacity);
    return capacity - 1;
}

wchar_t* __cdecl FillCurrentDirectory(wchar_t* buffer, int capacity)
{
    Fill(buffer, static_cast<DWORD>(capacity));
    return buffer;
}

BOOL WINAPI FillSecurityDescriptor(const wchar_t* /*path*/, SECURITY_INFORMATION /*wanted*/, void* descriptor,
                                   DWORD size, DWORD* needed)
{
    constexpr DWORD kNeeded = 67; // bytes
    *needed = kNeeded;
    if (size < kNeeded) {
        ::SetLastError(ERROR_INSUFFICIENT_BUFFER);
        return FALSE;
    }
    std::memset(descriptor, 0, size);
    return TRUE;
}

// The directory of the simulation does not exist.
int __cdecl ChangeNowhere(const wchar_t* /*directory*/)
{
    return 0;
}

class GuardedBufferTest : public EveryFunctionTest {
protected:
    // Makes all calls with one import replaced, each time with and without a terminator.
    template <typename Function>
    void FillAll(const char* import, Function* replacement)
    {
        const ImportPatch patch(import, replacement);
        for (const SampleCall& call : GetParam().calls) {
            for (const bool terminates : {true, false}) {
                SCOPED_TRACE(Title(call) + ", " + import + (terminates ? "" : " without a terminator"));
                g_terminates = terminates;
                Make(call, [](const std::function<void()>& function) {
                    const GuardedHeap guarded;
                    g_fills = 0;
                    function();
                });
            }
        }
    }
};

std::vector<ExportedFunction> FunctionsThatChangeNothing()
{
    std::vector<ExportedFunction> functions = AllFunctions();
    std::erase_if(functions, [](const ExportedFunction& function) {
        return std::any_of(function.strings.begin(), function.strings.end(),
                           [](const StringArgument& argument) { return argument.effect == Effect::kChanges; });
    });
    return functions;
}

std::wstring Filled(std::size_t length)
{
    return LR"(C:\)" + std::wstring(length - 3, L'x');
}

} // namespace

TEST_P(GuardedBufferTest, HoldsAllThatWindowsMayWrite)
{
    FillAll("GetVolumePathNameW", &FillVolumePath);
    FillAll("GetVolumeNameForVolumeMountPointW", &FillVolumePath);
    FillAll("GetVolumePathNamesForVolumeNameW", &FillMountPaths);
    FillAll("GetVolumePathNamesForVolumeNameW", &FillLargerMountPaths);
    FillAll("ExpandEnvironmentStringsW", &FillExpansion);
    FillAll("GetFileSecurityW", &FillSecurityDescriptor);
    const ImportPatch change("_wchdir", &ChangeNowhere);
    FillAll("_wgetcwd", &FillCurrentDirectory);
    const ImportPatch next("FindNextVolumeW", &FillNextVolume);
    const ImportPatch close("FindVolumeClose", &CloseNoVolumes);
    FillAll("FindFirstVolumeW", &FillFirstVolume);
}

INSTANTIATE_TEST_SUITE_P(Every, GuardedBufferTest, ::testing::ValuesIn(FunctionsThatChangeNothing()), &TestNameOf);

TEST(GuardedBuffer, OfVolumeNamesIsReadToItsEnd)
{
    const ImportPatch path("GetVolumePathNameW", &FillVolumePath);
    const ImportPatch name("GetVolumeNameForVolumeMountPointW", &FillVolumePath);
    const std::wstring given = L"C:";
    for (const bool terminates : {true, false}) {
        g_terminates = terminates;
        EXPECT_EQ(Filled(MAX_PATH - (terminates ? 1 : 0)), GetUniqueVolumeNameForPath(given));
    }
}

TEST(GuardedBuffer, OfExpansionsIsReadToItsEnd)
{
    const ImportPatch expansion("ExpandEnvironmentStringsW", &FillExpansion);
    for (const bool terminates : {true, false}) {
        g_terminates = terminates;
        CComBSTR string(L"%a%");
        DoExpandEnvironmentStrings(string);
        EXPECT_EQ(Filled(MAX_PATH - (terminates ? 1 : 0)), std::wstring(string.m_str, string.Length()));
    }
}

class GuardedTemporaryDirectoryTest : public LibraryTest {};

TEST_F(GuardedTemporaryDirectoryTest, FillsItsBuffer)
{
    const ImportPatch directory("GetTempPathW", &FillTemporaryDirectory);
    for (const bool terminates : {true, false}) {
        g_terminates = terminates;
        const GuardedHeap guarded;
        std::wstring cacheFile;
        EXPECT_FALSE(CreateCacheFile(tree.File(L"a.txt"), cacheFile, L"kvt", true, false)) << "the path is too long";
    }
}

TEST(GuardedHeap, ServesTheStringsOfTheLibrary)
{
    const GuardedHeap guarded;
    EXPECT_FALSE(AppendBackslash(std::wstring(kReadBlock, L'x')).empty());
    EXPECT_LT(1, GuardedHeap::Blocks());
}

TEST(GuardedHeap, ServesTheBstrStringsOfTheLibrary)
{
    const GuardedHeap guarded;
    CComBSTR path;
    std::map<std::wstring, std::wstring> snapshots;
    const int before = GuardedHeap::Blocks();
    EXPECT_TRUE(BuildSnapshotFilePath(LR"(C:\a)", path, snapshots));
    EXPECT_LT(before + 3, GuardedHeap::Blocks()) << "the path, the volume path, the key and the result";
}

TEST(GuardedHeap, EndsTheProcessWhenWindowsFillsABstrByOneCharacterTooMany)
{
    const ImportPatch volumePath("GetVolumePathNameW", &OverfillVolumePath);
    const auto build = [] {
        const GuardedHeap guarded;
        CComBSTR path;
        std::map<std::wstring, std::wstring> snapshots;
        BuildSnapshotFilePath(LR"(C:\a)", path, snapshots);
    };
    EXPECT_DEATH(build(), "");
}

TEST(GuardedHeap, EndsTheProcessAtAReadAfterABlock)
{
    const auto readAfterABlock = [] {
        const GuardedHeap guarded;
        const std::vector<wchar_t> block(kReadBlock, L'x');
        const volatile wchar_t* end = block.data() + block.size();
        return static_cast<int>(*end);
    };
    EXPECT_DEATH(readAfterABlock(), "");
}
