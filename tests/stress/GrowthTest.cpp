// Allocations and memory of the calls that grow with their input. Counts, never times.

#include "tests/support/ImportPatch.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/MemoryMeters.h"
#include "tests/support/SilentHost.h"
#include "tests/support/SimulatedListing.h"

#include <malloc.h>

namespace {

// The greatest number of bytes that the C++ runtime holds at one time. One at a time.
class PeakMeter {
public:
    PeakMeter() : m_malloc("libstdc++-6.dll", "malloc", &Allocate), m_free("libstdc++-6.dll", "free", &Free)
    {
        s_now = 0;
        s_peak = 0;
    }

    static std::ptrdiff_t Now() { return s_now; }
    static std::ptrdiff_t Peak() { return s_peak; }

private:
    static void* Allocate(std::size_t size)
    {
        void* const block = std::malloc(size);
        s_now += static_cast<std::ptrdiff_t>(::_msize(block));
        s_peak = std::max(s_peak, s_now);
        return block;
    }
    static void Free(void* block)
    {
        s_now -= block == nullptr ? 0 : static_cast<std::ptrdiff_t>(::_msize(block));
        std::free(block);
    }

    inline static std::ptrdiff_t s_now = 0;
    inline static std::ptrdiff_t s_peak = 0;
    ImportPatch m_malloc;
    ImportPatch m_free;
};

std::vector<SimulatedEntry> Files(int count)
{
    std::vector<SimulatedEntry> entries;
    for (int i = 0; i < count; ++i) {
        std::wstring number = std::to_wstring(i);
        number.insert(0, 6 - number.size(), L'0');
        entries.push_back({L"a file with number " + number});
    }
    return entries;
}

} // namespace

class GrowthTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        RegisterSilentHost();
    }

    [[nodiscard]] int AllocationsOfListing(int files) const
    {
        SimulatedListing simulated;
        simulated.AnswerAll(Files(files));
        static_cast<void>(ListFilesFilter(tree.Root(), L"*", true)); // the library's own buffers grow once
        const MemoryFault counted;
        const StringList listed = ListFilesFilter(tree.Root(), L"*", true);
        EXPECT_EQ(static_cast<std::size_t>(files), listed.size());
        return MemoryFault::Allocations();
    }
};

TEST_F(GrowthTest, ListingAllocatesOnceForEachFile)
{
    constexpr int kFiles = 4000;
    constexpr int kListGrowth = 4; // the list doubles a few times more
    EXPECT_LE(AllocationsOfListing(2 * kFiles) - AllocationsOfListing(kFiles), kFiles + kListGrowth);
}

TEST_F(GrowthTest, ListingHoldsLittleMoreThanItReturns)
{
    constexpr double kMostOverhead = 1.15;
    SimulatedListing simulated;
    simulated.AnswerAll(Files(100000));
    const PeakMeter meter;
    const StringList listed = ListFilesFilter(tree.Root(), L"*", true);
    EXPECT_EQ(100000U, listed.size());
    EXPECT_LE(static_cast<double>(PeakMeter::Peak()), kMostOverhead * static_cast<double>(PeakMeter::Now()));
}

TEST_F(GrowthTest, DecompositionAllocatesItsResultAlone)
{
    const std::wstring path = LR"(C:\a directory with a name\a file with a long name.txt)";
    for (auto* const function : {&GetFileName, &GetPathFileName, &GetPathFileNameNoVolume, &GetVolume}) {
        const MemoryFault counted;
        static_cast<void>(function(path));
        EXPECT_EQ(1, MemoryFault::Allocations());
    }
}

TEST_F(GrowthTest, UnmatchedMappingAllocatesTwoStrings)
{
    std::vector<VSS_ALTERNATE_MAPPING> mappings;
    std::wstring path = LR"(C:\Live\Sub)";
    std::wstring spec = L"a.txt";
    const auto allocations = [&](std::size_t count) {
        mappings.resize(count, {LR"(C:\Other directory\)", L"D:", L"*", true});
        const BstrMeter meter;
        const MemoryFault counted;
        EXPECT_FALSE(MapRestorePath1(path, spec, mappings));
        EXPECT_GE(2, MemoryFault::Allocations()) << "one buffer for all mappings";
        return BstrMeter::Allocations();
    };
    const int few = allocations(10);
    EXPECT_EQ(2 * 90, allocations(100) - few);
}

TEST_F(GrowthTest, NoMappingsAllocateOneStringAlone)
{
    std::vector<VSS_ALTERNATE_MAPPING> none;
    std::wstring path = LR"(C:\Live)";
    std::wstring spec = L"a.txt";
    const BstrMeter meter;
    EXPECT_FALSE(MapRestorePath1(path, spec, none));
    EXPECT_EQ(1, BstrMeter::Allocations());
}

TEST_F(GrowthTest, CopyAllocatesNothingForItsBytes)
{
    const std::wstring small = tree.File(L"small", SampleBytes(1));
    const std::wstring large = tree.File(L"large", SampleBytes(1000000));
    const std::wstring target = tree.Directory(L"target");
    const auto allocations = [&](const std::wstring& source) {
        const MemoryFault counted;
        EXPECT_EQ(1, DoCopyComponentFileToDir(source, target));
        return MemoryFault::Allocations();
    };
    static_cast<void>(allocations(small));
    EXPECT_EQ(allocations(small), allocations(large));
}
