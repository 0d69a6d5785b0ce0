// What loading the library builds, in which order, and that unloading takes all of it away.

#include "tests/support/CapturedOutput.h"
#include "tests/support/ExportPatch.h"
#include "tests/support/HandleCount.h"
#include "tests/support/LoadedLibrary.h"
#include "tests/support/MemoryMeters.h"
#include "tests/support/TestDirectory.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <ctime>
#include <string>
#include <vector>

namespace {

// Values that nothing else in the library's data looks like.
constexpr std::clock_t kFirstReading = 0x2B5C7D11;  // ticks
constexpr std::clock_t kSecondReading = 0x2B7E9F33; // ticks
constexpr std::clock_t kLaterReading = 0x2B8A4C55;  // ticks

int g_readings = 0;
std::clock_t g_now = 0; // when not 0, what the clock says

std::clock_t __cdecl CountingClock()
{
    ++g_readings;
    if (g_now != 0) {
        return g_now;
    }
    constexpr std::clock_t kReadings[] = {kFirstReading, kSecondReading, kLaterReading};
    return kReadings[std::min(g_readings, 3) - 1];
}

// The clock is a simulation in all tests with this fixture.
class ModuleStart : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_readings = 0;
        g_now = 0;
    }

    ExportPatch clock{"msvcrt.dll", "clock", &CountingClock};
};

// How often a 32-bit value is in the data that the library may write to.
int CountInWritableData(HMODULE module, std::clock_t value)
{
    const auto* base = reinterpret_cast<const BYTE*>(module);
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(base);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(base + dos->e_lfanew);
    const IMAGE_SECTION_HEADER* section = IMAGE_FIRST_SECTION(headers);
    int count = 0;
    for (int i = 0; i < headers->FileHeader.NumberOfSections; ++i, ++section) {
        if ((section->Characteristics & IMAGE_SCN_MEM_WRITE) == 0) {
            continue;
        }
        const BYTE* data = base + section->VirtualAddress;
        for (DWORD at = 0; at + sizeof(value) <= section->Misc.VirtualSize; at += sizeof(value)) {
            count += std::memcmp(data + at, &value, sizeof(value)) == 0 ? 1 : 0;
        }
    }
    return count;
}

int g_logCalls = 0;
std::vector<int> g_keepAlives;

int __cdecl CountLog(int /*level*/, const char* /*format*/, ...)
{
    ++g_logCalls;
    return 0;
}

int __cdecl KeepSeconds(int seconds, ...)
{
    g_keepAlives.push_back(seconds);
    return 0;
}

void Register(const LoadedLibrary& library)
{
    library.SetVssFileManagerLogger(&CountLog, &KeepSeconds, &CountLog);
    g_logCalls = 0;
    g_keepAlives.clear();
}

// The library's own calls of the runtime's heap; those of the C++ runtime are counted by a HeapMeter.
int g_ownBlocks = 0; // taken less given back
int g_everTaken = 0;

void* __cdecl CountedMalloc(std::size_t size)
{
    ++g_ownBlocks;
    ++g_everTaken;
    return std::malloc(size);
}

void* __cdecl CountedCalloc(std::size_t count, std::size_t size)
{
    ++g_ownBlocks;
    ++g_everTaken;
    return std::calloc(count, size);
}

void* __cdecl CountedRealloc(void* block, std::size_t size)
{
    g_ownBlocks += block == nullptr ? 1 : 0;
    return std::realloc(block, size);
}

void __cdecl CountedFree(void* block)
{
    g_ownBlocks -= block == nullptr ? 0 : 1;
    std::free(block);
}

// A missing directory with a name too long for a string's own room: its text is the object's at the unload.
const std::wstring kMissing = L"C:\\" + std::wstring(200, L'm');

// A host's whole acquaintance with the library.
void LoadUseAndUnload(const std::wstring& directory)
{
    const LoadedLibrary library;
    Register(library);
    library.SendKA();
    EXPECT_EQ(1U, library.ListFilesFilter(directory, L"*", true).size());
    EXPECT_TRUE(library.ListFilesFilter(kMissing, L"*", true).empty());
}

} // namespace

TEST_F(ModuleStart, ReadsTheClockOnceForTheModuleAndOnceForTheFileManager)
{
    const LoadedLibrary library;
    EXPECT_EQ(2, g_readings);
}

TEST_F(ModuleStart, KeepsBothReadingsAsStamps)
{
    const LoadedLibrary library;
    EXPECT_EQ(1, CountInWritableData(library.Module(), kFirstReading));
    EXPECT_EQ(1, CountInWritableData(library.Module(), kSecondReading));
}

// A listing looks at the file manager's stamp: the first reading would be due earlier by more than half an hour.
TEST_F(ModuleStart, TakesTheStampOfTheModuleBeforeThatOfTheFileManager)
{
    const LoadedLibrary library;
    const TestDirectory tree;
    Register(library);
    g_now = kSecondReading + 599000;
    library.ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_TRUE(g_keepAlives.empty());
    g_now = kSecondReading + 599001;
    library.ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ(std::vector<int>{600}, g_keepAlives);
}

TEST(ModuleEnd, CallsNoneOfTheHostsFunctions)
{
    {
        const LoadedLibrary library;
        Register(library);
        library.ListFilesFilter(kMissing, L"*", true); // leaves the file manager an error text to free
        g_logCalls = 0;
        ::SetLastError(ERROR_ACCESS_DENIED);
    }
    EXPECT_EQ(0, g_logCalls);
    EXPECT_TRUE(g_keepAlives.empty());
}

TEST(ModuleEnd, ForgetsTheHost)
{
    {
        const LoadedLibrary library;
        Register(library);
    }
    const LoadedLibrary library;
    CapturedOutput output;
    library.SendKA();
    EXPECT_NE("", output.Text());
    EXPECT_EQ(0, g_logCalls);
    EXPECT_TRUE(g_keepAlives.empty());
}

TEST(ModuleEnd, LeavesNothingBehindAfterAThousandRounds)
{
    constexpr int kRounds = 1000;
    const TestDirectory tree;
    tree.File(L"a.txt");
    LoadUseAndUnload(tree.Root()); // what Windows and the runtime make once and keep is made now
    const ExportPatch malloc("msvcrt.dll", "malloc", &CountedMalloc);
    const ExportPatch calloc("msvcrt.dll", "calloc", &CountedCalloc);
    const ExportPatch realloc("msvcrt.dll", "realloc", &CountedRealloc);
    const ExportPatch free("msvcrt.dll", "free", &CountedFree);
    const HeapMeter heap;
    g_ownBlocks = 0;
    g_everTaken = 0;
    const int handles = OpenHandleCount();
    for (int round = 0; round < kRounds; ++round) {
        LoadUseAndUnload(tree.Root());
    }
    EXPECT_EQ(handles, OpenHandleCount());
    EXPECT_EQ(0, HeapMeter::Outstanding()) << "strings and containers";
    EXPECT_EQ(0, g_ownBlocks) << "blocks that the library took itself";
    EXPECT_LE(kRounds, g_everTaken) << "the count sees every round";
}
