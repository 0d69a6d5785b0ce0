// Display names of volumes, on the volumes of this machine and on simulated ones.

#include "tests/volumes/VolumeNamesFixture.h"

namespace {

class GetDisplayNameForVolumeNoThrowTest : public VolumeTest {};
class GetDisplayNameForVolumeNoThrowSimulation : public SimulatedMachine {};

} // namespace

TEST_F(GetDisplayNameForVolumeNoThrowTest, IsTheDriveOfAVolumeName)
{
    std::wstring name = L"before";
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(NameOfDrive(LR"(D:\)"), name));
    EXPECT_EQ(LR"(D:\)", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowTest, IsFalseForWhatIsNoVolumeNameAndLeavesTheTextAsItWas)
{
    struct Row {
        const wchar_t* volume;
        const char* why;
    };
    constexpr Row kRows[] = {
        {L"", "the empty text goes to Windows as it is"},
        {LR"(C:\)", "a mount path is no volume name"},
        {LR"(\\?\Volume{00000000-0000-0000-0000-000000000043})", "the trailing backslash is not added"},
        {LR"(\\?\Volume{12345678-0000-0000-0000-000000000000}\)", "an unknown volume"},
    };
    for (const auto& [volume, why] : kRows) {
        std::wstring name = L"before";
        EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(volume, name)) << why;
        EXPECT_EQ(L"before", name) << why;
    }
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsTheFirstPathListedWhetherOrNotItIsTheShorter)
{
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(E:\)", name);
    const SimulatedVolumes longFirst({{kDataName, {LR"(C:\mnt\data\)", LR"(E:\)"}, {}}});
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(C:\mnt\data\)", name);
    const SimulatedVolumes even({{kDataName, {LR"(F:\)", LR"(E:\)"}, {}}});
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(F:\)", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsEmptyAndTrueForAVolumeWithoutAMountPath)
{
    const SimulatedVolumes unmounted({{kDataName, {}, {}}});
    std::wstring name = L"before";
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, AsksAgainWithTheCapacityThatALongListNeeds)
{
    const std::wstring first = LR"(C:\)" + std::wstring(200, L'a') + LR"(\)";
    const std::wstring second = LR"(C:\)" + std::wstring(200, L'b') + LR"(\)";
    const SimulatedVolumes machine({{kDataName, {first, second}, {}}});
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(first, name);
    EXPECT_EQ((StringList{L"GetVolumePathNamesForVolumeNameW(" + kDataName + L", 260)",
                          L"GetVolumePathNamesForVolumeNameW(" + kDataName + L", 411)"}),
              machine.Calls());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, NeedsOneQueryForAListOf260CharactersAndTwoFor261)
{
    struct Row {
        std::size_t characters;
        std::size_t queries;
    };
    constexpr Row kRows[] = {{260, 1}, {261, 2}};
    for (const auto& [characters, queries] : kRows) {
        const std::wstring path = LR"(C:\)" + std::wstring(characters - 6, L'a') + LR"(\)";
        const SimulatedVolumes machine({{kDataName, {path}, {}}});
        std::wstring name;
        EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name)) << characters;
        EXPECT_EQ(path, name);
        EXPECT_EQ(queries, machine.Calls().size()) << characters;
    }
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsFalseWhenTheSecondQueryFailsAndLeavesTheTextAsItWas)
{
    SimulatedVolumes machine({{kDataName, {LR"(C:\)" + std::wstring(300, L'a') + LR"(\)"}, {}}});
    machine.Fail(L"GetVolumePathNamesForVolumeNameW", 2, ERROR_ACCESS_DENIED);
    std::wstring name = L"before";
    EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(2U, machine.Calls().size());
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsFalseAfterOneQueryWhenWindowsNamesNoLength)
{
    volumes.Fail(L"GetVolumePathNamesForVolumeNameW", 1, ERROR_MORE_DATA);
    std::wstring name = L"before";
    EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(1U, volumes.Calls().size());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, AsksAgainAfterAnyFailureThatNamesALength)
{
    static int calls = 0;
    calls = 0;
    const ImportPatch once(
        "GetVolumePathNamesForVolumeNameW",
        +[](const wchar_t*, wchar_t* buffer, DWORD capacity, DWORD* needed) -> BOOL {
            *needed = 5;
            if (++calls == 1) {
                ::SetLastError(ERROR_ACCESS_DENIED);
                return FALSE;
            }
            EXPECT_EQ(5U, capacity) << "as many characters as were named, though it is fewer";
            std::wcscpy(buffer, LR"(G:\)");
            return TRUE;
        });
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(G:\)", name);
    EXPECT_EQ(2, calls);
}
