// Free and total space, on the volumes of this machine and on simulated ones.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/SimulatedVolumes.h"

namespace {

constexpr double kBytesPerGigabyte = 1e9;
constexpr double kDrift = 2.0; // gigabytes that other programs may take or free between two queries

// Too long for a text to hold without memory of its own.
const std::wstring kLongMountPath = LR"(C:\a-mount-folder-with-a-name-of-some-length\)";

std::wstring VolumeNumber(int number)
{
    return LR"(\\?\Volume{00000000-0000-0000-0000-00000000000)" + std::to_wstring(number) + LR"(}\)";
}

struct Space {
    double available;
    double total;
};

// The system's own numbers, in gigabytes.
Space SystemSpace(const std::wstring& path)
{
    ULARGE_INTEGER available = {};
    ULARGE_INTEGER total = {};
    EXPECT_TRUE(::GetDiskFreeSpaceExW(path.c_str(), &available, &total, nullptr)) << Utf8(path);
    return {static_cast<double>(available.QuadPart) / kBytesPerGigabyte,
            static_cast<double>(total.QuadPart) / kBytesPerGigabyte};
}

class VolumeSpaceTest : public LibraryTest {
protected:
    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }
};

class GetAvailableVolumeSpaceTest : public VolumeSpaceTest {};
class GetTotalVolumeSpaceTest : public VolumeSpaceTest {};
class GetVolumeMaxFreeSpaceTest : public VolumeSpaceTest {};

// Simulations: exact numbers.
class GetAvailableVolumeSpaceSimulation : public VolumeSpaceTest {};
class GetTotalVolumeSpaceSimulation : public VolumeSpaceTest {};
class GetVolumeMaxFreeSpaceSimulation : public VolumeSpaceTest {};

struct SpaceCase {
    std::uint64_t bytes;
    double gigabytes;
    const char* why;
};

constexpr SpaceCase kSpaceCases[] = {
    {1500000000, 1.5, "decimal gigabytes"},
    {0, 0.0, "a full volume"},
    {1, 0.000000001, "one byte"},
    {5000000000000, 5000.0, "more than 32 bits"},
    {std::uint64_t{1} << 63U, -9223372036.854775808, "the count is taken as a signed number"},
    {~std::uint64_t{0}, -0.000000001, "the count is taken as a signed number"},
};

} // namespace

TEST_F(GetAvailableVolumeSpaceTest, IsTheSystemsNumberForEachKindOfPath)
{
    for (const std::wstring& path :
         {std::wstring(LR"(C:\)"), std::wstring(L"D:"), std::wstring(LR"(\\alpha\data\)"), tree.Root()}) {
        const double expected = SystemSpace(path).available;
        ASSERT_GT(expected, 0.0);
        EXPECT_NEAR(expected, GetAvailableVolumeSpace(path), kDrift) << Utf8(path);
    }
}

TEST_F(GetAvailableVolumeSpaceTest, IsZeroForAPathThatDoesNotExistAndLeavesTheErrorOfTheQuery)
{
    EXPECT_EQ(0.0, GetAvailableVolumeSpace(tree.Path(L"missing")));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    EXPECT_EQ(0.0, GetAvailableVolumeSpace(LR"(Q:\)"));
    EXPECT_EQ(0.0, GetAvailableVolumeSpace(L""));
    EXPECT_EQ(DWORD{ERROR_PATH_NOT_FOUND}, ::GetLastError());
}

TEST_F(GetTotalVolumeSpaceTest, IsTheSystemsNumberForEachKindOfPath)
{
    for (const std::wstring& path :
         {std::wstring(LR"(C:\)"), std::wstring(L"D:"), std::wstring(LR"(\\beta\data\)"), tree.Root()}) {
        const Space expected = SystemSpace(path);
        ASSERT_GT(expected.total - expected.available, kDrift) << "the two numbers must differ for this test";
        EXPECT_NEAR(expected.total, GetTotalVolumeSpace(path), kDrift) << Utf8(path);
    }
}

TEST_F(GetTotalVolumeSpaceTest, IsZeroForAPathThatDoesNotExistAfterASuccess)
{
    ASSERT_GT(GetTotalVolumeSpace(LR"(C:\)"), 0.0);
    EXPECT_EQ(0.0, GetTotalVolumeSpace(tree.Path(L"missing")));
    EXPECT_EQ(0.0, GetTotalVolumeSpace(L""));
}

TEST_F(GetVolumeMaxFreeSpaceTest, IsAVolumeOfThisMachine)
{
    // Both lie on one disk, whose free space moves between the two queries: either may come out ahead.
    const std::wstring volume = GetVolumeMaxFreeSpace();
    EXPECT_TRUE(volume == LR"(C:\)" || volume == LR"(D:\)") << Utf8(volume);
}

TEST_F(GetAvailableVolumeSpaceSimulation, CountsDecimalGigabytesForTheCaller)
{
    for (const auto& [bytes, gigabytes, why] : kSpaceCases) {
        const SimulatedVolumes machine({{VolumeNumber(1), {LR"(E:\)"}, {}, bytes, 42}});
        EXPECT_EQ(gigabytes, GetAvailableVolumeSpace(LR"(E:\dir)")) << why;
        EXPECT_EQ((StringList{LR"(GetDiskFreeSpaceExW(E:\dir))"}), machine.Calls()) << "the path as it is given";
    }
}

TEST_F(GetAvailableVolumeSpaceSimulation, IsZeroWhenTheQueryFailsOrThrows)
{
    SimulatedVolumes machine({{VolumeNumber(1), {LR"(E:\)"}, {}, 1500000000, 2500000000}});
    machine.Fail(L"GetDiskFreeSpaceExW", 2, ERROR_NOT_READY);
    machine.Throw(L"GetDiskFreeSpaceExW", 3);
    EXPECT_EQ(1.5, GetAvailableVolumeSpace(L"E:\\"));
    EXPECT_EQ(0.0, GetAvailableVolumeSpace(L"E:\\"));
    EXPECT_EQ(DWORD{ERROR_NOT_READY}, ::GetLastError());
    double space = 1.0;
    EXPECT_NO_THROW(space = GetAvailableVolumeSpace(L"E:\\"));
    EXPECT_EQ(0.0, space);
}

TEST_F(GetTotalVolumeSpaceSimulation, CountsDecimalGigabytes)
{
    for (const auto& [bytes, gigabytes, why] : kSpaceCases) {
        const SimulatedVolumes machine({{VolumeNumber(1), {LR"(E:\)"}, {}, 42, bytes}});
        EXPECT_EQ(gigabytes, GetTotalVolumeSpace(LR"(E:\dir)")) << why;
        EXPECT_EQ((StringList{LR"(GetDiskFreeSpaceExW(E:\dir))"}), machine.Calls()) << "the path as it is given";
    }
}

TEST_F(GetTotalVolumeSpaceSimulation, IsZeroWhenTheQueryFailsOrThrows)
{
    SimulatedVolumes machine({{VolumeNumber(1), {LR"(E:\)"}, {}, 1500000000, 2500000000}});
    machine.Fail(L"GetDiskFreeSpaceExW", 2, ERROR_NOT_READY);
    machine.Throw(L"GetDiskFreeSpaceExW", 3);
    EXPECT_EQ(2.5, GetTotalVolumeSpace(L"E:\\"));
    EXPECT_EQ(0.0, GetTotalVolumeSpace(L"E:\\"));
    double space = 1.0;
    EXPECT_NO_THROW(space = GetTotalVolumeSpace(L"E:\\"));
    EXPECT_EQ(0.0, space);
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, IsThePathWithTheMostSpaceForTheCaller)
{
    const SimulatedVolumes machine({{VolumeNumber(1), {LR"(C:\)"}, {}, 10, 900},
                                    {VolumeNumber(2), {LR"(D:\)", LR"(C:\mnt\)"}, {}, 30, 300},
                                    {VolumeNumber(3), {LR"(E:\)"}, {}, 20, 800}});
    EXPECT_EQ(LR"(D:\)", GetVolumeMaxFreeSpace()) << "the first path of its volume, whatever the sizes";
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, IsTheVolumeEnumeratedFirstAmongEquals)
{
    const SimulatedVolumes machine({{VolumeNumber(1), {LR"(E:\)"}, {}, 4},
                                    {VolumeNumber(2), {LR"(D:\)"}, {}, 123456789012},
                                    {VolumeNumber(3), {LR"(C:\)"}, {}, 123456789012}});
    EXPECT_EQ(LR"(D:\)", GetVolumeMaxFreeSpace());
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, TellsVolumesThatDifferByOneByteApart)
{
    const SimulatedVolumes machine(
        {{VolumeNumber(1), {LR"(E:\)"}, {}, 123456789012}, {VolumeNumber(2), {LR"(D:\)"}, {}, 123456789013}});
    EXPECT_EQ(LR"(D:\)", GetVolumeMaxFreeSpace());
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, NeverTakesAVolumeThatIsFullOrCannotBeAsked)
{
    SimulatedVolumes machine({{VolumeNumber(1), {LR"(C:\)"}, {}, 0, 100},
                              {VolumeNumber(2), {LR"(D:\)"}, {}, 90, 100},
                              {VolumeNumber(3), {LR"(E:\)"}, {}, 1, 100},
                              {VolumeNumber(4), {LR"(F:\)"}, {}, ~std::uint64_t{0}, 100}});
    machine.Fail(L"GetDiskFreeSpaceExW", 2, ERROR_NOT_READY);
    EXPECT_EQ(LR"(E:\)", GetVolumeMaxFreeSpace()) << "a count beyond 63 bits is negative";
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, IsEmptyWhenNoVolumeHasSpace)
{
    const SimulatedVolumes machine(
        {{VolumeNumber(1), {LR"(C:\)"}, {}, 0, 100}, {VolumeNumber(2), {LR"(D:\)"}, {}, 0, 100}});
    EXPECT_EQ(L"", GetVolumeMaxFreeSpace());
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, IsEmptyWithoutMountedVolumes)
{
    const SimulatedVolumes unmounted({{VolumeNumber(1), {}, {}, 5, 100}});
    EXPECT_EQ(L"", GetVolumeMaxFreeSpace());
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, IsEmptyWithoutAMessageWhenTheSearchCannotBeOpened)
{
    SimulatedVolumes machine({{VolumeNumber(1), {LR"(C:\)"}, {}, 5, 100}});
    machine.Fail(L"FindFirstVolumeW", 1, ERROR_ACCESS_DENIED);
    CapturedOutput output;
    EXPECT_EQ(L"", GetVolumeMaxFreeSpace());
    EXPECT_EQ("", output.Text());
    EXPECT_EQ((StringList{L"FindFirstVolumeW(1024)"}), machine.Calls());
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, TakesTheBestOfTheVolumesThatWereListedBeforeAFailure)
{
    SimulatedVolumes machine({{VolumeNumber(1), {LR"(C:\)"}, {}, 5, 100}, {VolumeNumber(2), {LR"(D:\)"}, {}, 9, 100}});
    machine.Throw(L"FindNextVolumeW", 1);
    std::wstring volume;
    EXPECT_NO_THROW(volume = GetVolumeMaxFreeSpace());
    EXPECT_EQ(LR"(C:\)", volume);
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, PassesOverAVolumeWhoseQueryThrowsOrFails)
{
    // The numbers of the query before must not count for it.
    for (const bool throws : {true, false}) {
        SimulatedVolumes machine(
            {{VolumeNumber(1), {LR"(C:\)"}, {}, 99, 100}, {VolumeNumber(2), {LR"(D:\)"}, {}, 9, 100}});
        ASSERT_GT(GetAvailableVolumeSpace(LR"(C:\)"), 0.0);
        if (throws) {
            machine.Throw(L"GetDiskFreeSpaceExW", 2);
        } else {
            machine.Fail(L"GetDiskFreeSpaceExW", 2, ERROR_NOT_READY);
        }
        std::wstring volume;
        EXPECT_NO_THROW(volume = GetVolumeMaxFreeSpace());
        EXPECT_EQ(LR"(D:\)", volume);
    }
}

TEST_F(GetVolumeMaxFreeSpaceSimulation, GivesTheBestPathSoFarWhenMemoryRunsShort)
{
    // The simulation's own allocations fail like all others, as if Windows had thrown. The last one of a whole call is
    // the copy of the roomier path.
    StringList answers;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        const SimulatedVolumes machine(
            {{VolumeNumber(1), {LR"(C:\)"}, {}, 5, 100}, {VolumeNumber(2), {kLongMountPath}, {}, 9, 100}});
        std::wstring volume;
        {
            const MemoryFault fault(allocation);
            EXPECT_NO_THROW(volume = GetVolumeMaxFreeSpace());
            happened = MemoryFault::HasStruck();
        }
        answers.push_back(volume);
    }
    ASSERT_GE(answers.size(), 3U);
    EXPECT_EQ(kLongMountPath, answers.back()) << "no allocation failed";
    EXPECT_EQ(LR"(C:\)", answers[answers.size() - 2]) << "the copy of the roomier path failed";
    EXPECT_EQ(L"", answers.front()) << "the list failed";
}
