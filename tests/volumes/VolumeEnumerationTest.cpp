// Enumeration of volumes, on the volumes of this machine and on simulated ones.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/SimulatedVolumes.h"

#include <cwchar>

namespace {

const std::wstring kFirst = LR"(\\?\Volume{11111111-0000-0000-0000-000000000001}\)";
const std::wstring kSecond = LR"(\\?\Volume{22222222-0000-0000-0000-000000000002}\)";
const std::wstring kThird = LR"(\\?\Volume{33333333-0000-0000-0000-000000000003}\)";

constexpr const wchar_t* kMountPathQuery = L"GetVolumePathNamesForVolumeNameW";

class EnumVolumesTest : public LibraryTest {};

// A simulation: three volumes, of which the second is mounted twice.
class EnumVolumesSimulation : public LibraryTest {
protected:
    void TearDown() override
    {
        EXPECT_FALSE(volumes.IsSearchOpen());
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }

    SimulatedVolumes volumes{{{kFirst, {LR"(C:\)"}}, {kSecond, {LR"(E:\)", LR"(C:\mnt\e\)"}}, {kThird, {LR"(F:\)"}}}};
};

// What is asked for one volume of an enumeration.
StringList CallsForVolume(const std::wstring& name)
{
    const StringList resolution = {L"GetVolumePathNameW(" + name + L", 260)",
                                   L"GetVolumeNameForVolumeMountPointW(" + name + L", 260)",
                                   L"GetVolumeNameForVolumeMountPointW(" + name + L", 260)"};
    StringList calls = resolution;
    calls.insert(calls.end(), resolution.begin(), resolution.end());
    calls.push_back(std::wstring(kMountPathQuery) + L"(" + name + L", 261)");
    return calls;
}

StringList CallsOf(std::initializer_list<StringList> parts)
{
    StringList calls;
    for (const StringList& part : parts) {
        calls.insert(calls.end(), part.begin(), part.end());
    }
    return calls;
}

// The calls of an enumeration that close its search.
StringList Closings(const SimulatedVolumes& volumes)
{
    StringList closings;
    for (const std::wstring& call : volumes.Calls()) {
        if (call == L"FindVolumeClose()" || call == L"FindClose()") {
            closings.push_back(call);
        }
    }
    return closings;
}

} // namespace

TEST_F(EnumVolumesTest, ListsBothVolumesOfThisMachine)
{
    EXPECT_EQ((StringList{LR"(C:\)", LR"(D:\)"}), EnumVolumes());
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(EnumVolumesTest, ListsWhatItHasFoundBeforeMemoryRunsShort)
{
    const StringList whole = EnumVolumes();
    std::size_t partial = 0;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        StringList found;
        {
            const MemoryFault fault(allocation);
            EXPECT_NO_THROW(found = EnumVolumes());
            happened = MemoryFault::HasStruck();
        }
        ASSERT_LE(found.size(), whole.size());
        EXPECT_TRUE(std::equal(found.begin(), found.end(), whole.begin())) << "allocation " << allocation;
        partial += found.size() < whole.size() ? 1 : 0;
    }
    EXPECT_GT(partial, 0U) << "some allocation must cut the list short";
}

TEST_F(EnumVolumesSimulation, ListsAllPathsOfAVolumeTogetherInWindowsOrder)
{
    EXPECT_EQ((StringList{LR"(C:\)", LR"(E:\)", LR"(C:\mnt\e\)", LR"(F:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, AsksForEachVolumeInOneOrderAndClosesTheVolumeSearch)
{
    EnumVolumes();
    EXPECT_EQ(CallsOf({{L"FindFirstVolumeW(1024)"},
                       CallsForVolume(kFirst),
                       {L"FindNextVolumeW(1024)"},
                       CallsForVolume(kSecond),
                       {L"FindNextVolumeW(1024)"},
                       CallsForVolume(kThird),
                       {L"FindNextVolumeW(1024)", L"FindVolumeClose()"}}),
              volumes.Calls());
}

TEST_F(EnumVolumesSimulation, ListsARepeatedPathOnceInTheFormFirstSeen)
{
    const SimulatedVolumes repeated({{kFirst, {LR"(C:\)", LR"(C:\Mnt\)", LR"(C:\)"}},
                                     {kSecond, {LR"(c:\MNT\)", LR"(E:\)"}},
                                     {kThird, {LR"(e:\)", LR"(C:\Mnt\)"}}});
    EXPECT_EQ((StringList{LR"(C:\)", LR"(C:\Mnt\)", LR"(E:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, LeavesOutVolumesThatAreNotMounted)
{
    const SimulatedVolumes unmounted({{kFirst, {}}, {kSecond, {LR"(E:\)"}}, {kThird, {}}});
    EXPECT_EQ((StringList{LR"(E:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, LeavesOutAVolumeWhosePathsCannotBeRead)
{
    volumes.Fail(kMountPathQuery, 2, ERROR_ACCESS_DENIED);
    EXPECT_EQ((StringList{LR"(C:\)", LR"(F:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, ListsAVolumeWhoseNameCannotBeResolved)
{
    volumes.Fail(L"GetVolumePathNameW", 1, ERROR_ACCESS_DENIED);
    volumes.Fail(L"GetVolumePathNameW", 2, ERROR_ACCESS_DENIED);
    volumes.Fail(L"GetVolumeNameForVolumeMountPointW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ((StringList{LR"(C:\)", LR"(E:\)", LR"(C:\mnt\e\)", LR"(F:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, IsEmptyAndClosesNothingWhenTheSearchCannotBeOpened)
{
    volumes.Fail(L"FindFirstVolumeW", 1, ERROR_ACCESS_DENIED);
    CapturedOutput output;
    EXPECT_EQ(StringList{}, EnumVolumes());
    EXPECT_EQ("", output.Text());
    EXPECT_EQ((StringList{L"FindFirstVolumeW(1024)"}), volumes.Calls());
}

TEST_F(EnumVolumesSimulation, IsEmptyOnAMachineWithoutVolumes)
{
    const SimulatedVolumes none({});
    EXPECT_EQ(StringList{}, EnumVolumes());
    EXPECT_EQ((StringList{L"FindFirstVolumeW(1024)"}), none.Calls());
}

TEST_F(EnumVolumesSimulation, ListsTheVolumesBeforeASearchThatBreaksAndClosesItByFindClose)
{
    volumes.Fail(L"FindNextVolumeW", 2, ERROR_ACCESS_DENIED);
    EXPECT_EQ((StringList{LR"(C:\)", LR"(E:\)", LR"(C:\mnt\e\)"}), EnumVolumes());
    EXPECT_EQ((StringList{L"FindClose()"}), Closings(volumes));
}

TEST_F(EnumVolumesSimulation, ListsEverythingWhenTheSearchCannotBeClosedAndClosesItByFindClose)
{
    volumes.Fail(L"FindVolumeClose", 1, ERROR_INVALID_HANDLE);
    EXPECT_EQ((StringList{LR"(C:\)", LR"(E:\)", LR"(C:\mnt\e\)", LR"(F:\)"}), EnumVolumes());
    EXPECT_EQ((StringList{L"FindVolumeClose()", L"FindClose()"}), Closings(volumes));
}

TEST_F(EnumVolumesSimulation, LetsNoExceptionOut)
{
    const StringList whole = {LR"(C:\)", LR"(E:\)", LR"(C:\mnt\e\)", LR"(F:\)"};
    struct Row {
        const wchar_t* function;
        int call;
        std::size_t listed; // paths
        StringList closings;
    };
    const Row kRows[] = {
        {L"FindFirstVolumeW", 1, 0, {}},
        {L"GetVolumePathNameW", 1, 0, {L"FindClose()"}},
        {L"GetVolumePathNameW", 4, 1, {L"FindClose()"}},
        {L"GetVolumeNameForVolumeMountPointW", 3, 0, {L"FindClose()"}},
        {kMountPathQuery, 2, 1, {L"FindClose()"}},
        {L"FindNextVolumeW", 2, 3, {L"FindClose()"}},
        {L"FindVolumeClose", 1, 4, {L"FindVolumeClose()", L"FindClose()"}},
    };
    for (const auto& [function, call, listed, closings] : kRows) {
        SimulatedVolumes machine(
            {{kFirst, {LR"(C:\)"}}, {kSecond, {LR"(E:\)", LR"(C:\mnt\e\)"}}, {kThird, {LR"(F:\)"}}});
        machine.Throw(function, call);
        StringList found;
        EXPECT_NO_THROW(found = EnumVolumes()) << Utf8(function);
        EXPECT_EQ(StringList(whole.begin(), whole.begin() + static_cast<std::ptrdiff_t>(listed)), found)
            << Utf8(function) << ' ' << call;
        EXPECT_EQ(closings, Closings(machine)) << Utf8(function) << ' ' << call;
    }
}

TEST_F(EnumVolumesSimulation, AsksAgainWithTheCapacityThatALongListNeeds)
{
    const std::wstring longPath = LR"(C:\)" + std::wstring(250, L'a') + LR"(\)";
    const SimulatedVolumes machine({{kFirst, {longPath, LR"(E:\)", LR"(F:\)"}}});
    EXPECT_EQ((StringList{longPath, LR"(E:\)", LR"(F:\)"}), EnumVolumes());
    // 254 characters, twice 3, three terminators and the one that ends the list.
    EXPECT_EQ(L"GetVolumePathNamesForVolumeNameW(" + kFirst + L", 264)", machine.Calls().at(8));
}

TEST_F(EnumVolumesSimulation, NeedsOneQueryForAListOf261CharactersAndTwoFor262)
{
    for (const std::size_t characters : {std::size_t{261}, std::size_t{262}}) {
        const std::wstring path = LR"(C:\)" + std::wstring(characters - 6, L'a') + LR"(\)";
        const SimulatedVolumes machine({{kFirst, {path}}});
        EXPECT_EQ((StringList{path}), EnumVolumes());
        const auto queries = std::count_if(machine.Calls().begin(), machine.Calls().end(),
                                           [](const std::wstring& call) { return call.starts_with(kMountPathQuery); });
        EXPECT_EQ(characters == 261 ? 1 : 2, queries) << characters;
    }
}

TEST_F(EnumVolumesSimulation, KeepsAskingWhileAListGrowsBetweenTheQueries)
{
    // The list is longer at every query than the query before had said, as if paths were mounted meanwhile.
    static std::vector<DWORD> capacities;
    capacities.clear();
    const ImportPatch growing(
        "GetVolumePathNamesForVolumeNameW",
        +[](const wchar_t*, wchar_t* buffer, DWORD capacity, DWORD* needed) -> BOOL {
            capacities.push_back(capacity);
            if (capacities.size() < 4) {
                *needed = capacity + 100;
                ::SetLastError(ERROR_MORE_DATA);
                return FALSE;
            }
            std::wmemcpy(buffer, L"E:\\\0F:\\\0", 9);
            return TRUE;
        });
    EXPECT_EQ((StringList{LR"(E:\)", LR"(F:\)"}), EnumVolumes()) << "the same list for each of the three volumes";
    EXPECT_EQ((std::vector<DWORD>{261, 361, 461, 561, 261, 261}), capacities);
}

TEST_F(EnumVolumesSimulation, LeavesOutAVolumeWhoseSecondQueryFails)
{
    SimulatedVolumes machine({{kFirst, {LR"(C:\)" + std::wstring(300, L'a') + LR"(\)"}}, {kSecond, {LR"(E:\)"}}});
    machine.Fail(kMountPathQuery, 2, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ((StringList{LR"(E:\)"}), EnumVolumes());
}

TEST_F(EnumVolumesSimulation, ReadsNoFurtherThanAListThatLacksItsEnd)
{
    // Windows ends every list; what is shown here is that the library does not rely on it.
    const ImportPatch endless(
        "GetVolumePathNamesForVolumeNameW", +[](const wchar_t*, wchar_t* buffer, DWORD capacity, DWORD*) -> BOOL {
            std::wmemset(buffer, L'x', capacity);
            return TRUE;
        });
    EXPECT_EQ((StringList{std::wstring(261, L'x')}), EnumVolumes());
}
