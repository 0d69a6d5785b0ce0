// Paths inside snapshots, on the volumes of this machine and on simulated ones.

#include "tests/volumes/SnapshotPathsFixture.h"

TEST_F(BuildSnapshotFilePathTest, PutsTheDeviceOfTheVolumeBeforeThePathBelowIt)
{
    EXPECT_EQ(kDevice + LR"(\data\a.txt)", Build(LR"(C:\data\a.txt)", snapshots));
    EXPECT_EQ(LR"(D-device\x)", Build(LR"(D:\x)", snapshots));
    EXPECT_EQ((StringMap{{c, kDevice}, {d, L"D-device"}}), snapshots);
}

TEST_F(BuildSnapshotFilePathTest, KeepsATrailingBackslashOfThePath)
{
    EXPECT_EQ(kDevice + LR"(\data\)", Build(LR"(C:\data\)", snapshots));
    EXPECT_EQ(kDevice + LR"(\)", Build(LR"(C:\)", snapshots));
}

TEST_F(BuildSnapshotFilePathTest, AppendsToTextThatIsThereAlready)
{
    CComBSTR result(L"before ");
    EXPECT_TRUE(BuildSnapshotFilePath(LR"(C:\a.txt)", result, snapshots));
    EXPECT_EQ(L"before " + kDevice + LR"(\a.txt)", Text(result));
    EXPECT_TRUE(BuildSnapshotFilePath(LR"(D:\b)", result, snapshots));
    EXPECT_EQ(L"before " + kDevice + LR"(\a.txtD-device\b)", Text(result));
}

TEST_F(BuildSnapshotFilePathTest, GivesTheRelativePartAloneForAMissingVolumeAndAddsItsKey)
{
    snapshots.erase(d);
    EXPECT_EQ(LR"(\dir\f.txt)", Build(LR"(D:\dir\f.txt)", snapshots));
    EXPECT_EQ((StringMap{{c, kDevice}, {d, L""}}), snapshots);
}

TEST_F(BuildSnapshotFilePathTest, TakesThePathAsItIsUnderTheEmptyKeyWhenThereIsNoVolume)
{
    EXPECT_EQ(LR"(Q:\dir\f.txt)", Build(LR"(Q:\dir\f.txt)", snapshots));
    EXPECT_EQ((StringMap{{L"", L""}, {c, kDevice}, {d, L"D-device"}}), snapshots);
    snapshots[L""] = L"none:";
    EXPECT_EQ(LR"(none:Q:\dir\f.txt)", Build(LR"(Q:\dir\f.txt)", snapshots));
}

TEST_F(BuildSnapshotFilePathTest, TakesANullPathForAnEmptyOne)
{
    EXPECT_EQ(L"", Build(L"", snapshots));
    EXPECT_EQ(L"", Build(nullptr, snapshots));
    EXPECT_EQ((StringMap{{L"", L""}, {c, kDevice}, {d, L"D-device"}}), snapshots);
    snapshots[L""] = L"none";
    EXPECT_EQ(L"none", Build(nullptr, snapshots));
}

TEST_F(BuildSnapshotFilePathTest, TakesLongPaths)
{
    const std::wstring relative = LR"(\)" + std::wstring(5000, L'x');
    EXPECT_EQ(kDevice + relative, Build((L"C:" + relative).c_str(), snapshots));
}

TEST_F(BuildSnapshotFilePathTest, MayReadThePathFromTheResult)
{
    CComBSTR result(LR"(C:\a.txt)");
    EXPECT_TRUE(BuildSnapshotFilePath(result.m_str, result, snapshots));
    EXPECT_EQ(LR"(C:\a.txt)" + kDevice + LR"(\a.txt)", Text(result));
}

TEST_F(BuildSnapshotFilePathSimulation, TakesTheMountedVolumesEntryForAPathBelowAMountFolder)
{
    EXPECT_EQ(LR"(data-device\f.txt)", Build(LR"(C:\mnt\v\f.txt)", snapshots));
    EXPECT_EQ(LR"(data-device\dir\f.txt)", Build(LR"(E:\dir\f.txt)", snapshots));
    EXPECT_EQ(kDevice + LR"(\mnt\f.txt)", Build(LR"(C:\mnt\f.txt)", snapshots));
    EXPECT_EQ(2U, snapshots.size());
}

TEST_F(BuildSnapshotFilePathSimulation, GivesTheDeviceAloneForADriveWithoutABackslash)
{
    EXPECT_EQ(kDevice, Build(L"C:", snapshots)) << "the look-up has a capacity of three characters and needs four";
    EXPECT_EQ(L"data-device", Build(L"E:", snapshots));
    EXPECT_EQ(2U, snapshots.size());
}

TEST_F(BuildSnapshotFilePathSimulation, GivesTheDeviceAloneWhenAVolumePathLacksItsBackslash)
{
    // A look-up that is content with the capacity for the characters alone.
    const ImportPatch frugal(
        "GetVolumePathNameW", +[](const wchar_t* path, wchar_t* buffer, DWORD capacity) -> BOOL {
            std::wmemcpy(buffer, path, capacity);
            return TRUE;
        });
    EXPECT_EQ(L"data-device", Build(LR"(C:\mnt\v)", snapshots)) << "the volume path ends one character further on";
}

TEST_F(BuildSnapshotFilePathSimulation, TakesAMountFolderForItsVolumeOnlyWithItsBackslash)
{
    EXPECT_EQ(LR"(data-device\)", Build(LR"(C:\mnt\v\)", snapshots));
    EXPECT_EQ(kDevice + LR"(\mnt\v)", Build(LR"(C:\mnt\v)", snapshots)) << "a path too long, so its drive";
    EXPECT_EQ(2U, snapshots.size());
}

TEST_F(BuildSnapshotFilePathSimulation, TakesAShareForItsVolumeOnlyWithItsBackslash)
{
    snapshots[LR"(\\server\share\)"] = L"share-device";
    EXPECT_EQ(LR"(share-device\)", Build(LR"(\\server\share\)", snapshots));
    EXPECT_EQ(LR"(\\server\share)", Build(LR"(\\server\share)", snapshots)) << "a path too long, without a drive";
    EXPECT_EQ(1U, snapshots.count(L""));
}

TEST_F(BuildSnapshotFilePathSimulation, AsksWithABackslashAndACapacityOfOneCharacterMoreThanThePath)
{
    Build(LR"(E:\dir)", snapshots);
    Build(LR"(E:\dir\)", snapshots);
    EXPECT_EQ((StringList{LR"(GetVolumePathNameW(E:\dir\, 7))", LR"(GetVolumeNameForVolumeMountPointW(E:\, 260))",
                          LR"(GetVolumePathNameW(E:\dir\, 8))", LR"(GetVolumeNameForVolumeMountPointW(E:\, 260))"}),
              volumes.Calls());
}

TEST_F(BuildSnapshotFilePathSimulation, TakesTheNameOfTheMountPathAndNotTheUniqueOne)
{
    snapshots = {{kDataUniqueName, L"unique"}, {kDataName, L"first"}};
    EXPECT_EQ(LR"(first\f)", Build(LR"(E:\f)", snapshots));
}

TEST_F(BuildSnapshotFilePathSimulation, TakesTheVolumePathOfAShareAsItsKey)
{
    snapshots[LR"(\\server\share\)"] = L"share-device";
    snapshots[LR"(\\server\share)"] = L"never looked at";
    const StringMap before = snapshots;
    EXPECT_EQ(LR"(share-device\dir\f.txt)", Build(LR"(\\server\share\dir\f.txt)", snapshots));
    EXPECT_EQ(LR"(share-device\)", Build(LR"(\\server\share\)", snapshots));
    EXPECT_EQ(before, snapshots);
}

TEST_F(BuildSnapshotFilePathSimulation, GivesTheRelativePartAloneForAMissingShareAndAddsItsKey)
{
    snapshots = {{LR"(\\server\share)", L"without a backslash"}, {LR"(\\SERVER\share\)", L"in other case"}};
    EXPECT_EQ(LR"(\dir\f.txt)", Build(LR"(\\server\share\dir\f.txt)", snapshots));
    EXPECT_EQ((StringMap{{LR"(\\SERVER\share\)", L"in other case"},
                         {LR"(\\server\share)", L"without a backslash"},
                         {LR"(\\server\share\)", L""}}),
              snapshots);
}

TEST_F(BuildSnapshotFilePathSimulation, TakesTheDriveRootWhenWindowsCallsThePathTooLong)
{
    volumes.Fail(L"GetVolumePathNameW", 1, ERROR_FILENAME_EXCED_RANGE);
    EXPECT_EQ(LR"(data-device\very\long)", Build(LR"(E:\very\long)", snapshots));
    EXPECT_EQ(LR"(GetVolumeNameForVolumeMountPointW(E:\, 260))", volumes.Calls().back());
    EXPECT_EQ(2U, snapshots.size());
}

TEST_F(BuildSnapshotFilePathSimulation, HasNoVolumeWhenAPathThatIsTooLongHasNoDriveRoot)
{
    struct Row {
        const wchar_t* path;
        const char* why;
    };
    constexpr Row kRows[] = {
        {LR"(\\server\share\f)", "a share"},
        {L"E:f", "drive-relative"},
        {L"E", "two characters with the backslash"},
        {L"", "one character"},
        {LR"(x\:)", "a colon elsewhere"},
        {LR"(xy\f)", "no colon"},
    };
    for (const auto& [path, why] : kRows) {
        SimulatedVolumes machine({{kDataName, {LR"(E:\)"}}});
        machine.Fail(L"GetVolumePathNameW", 1, ERROR_FILENAME_EXCED_RANGE);
        StringMap map = {{L"", L"none:"}};
        EXPECT_EQ(std::wstring(L"none:") + path, Build(path, map)) << why;
        EXPECT_EQ(1U, map.size()) << why;
    }
}

TEST_F(BuildSnapshotFilePathSimulation, HasNoVolumeWhenTheLookUpFailsInAnyOtherWayWhateverItHasWritten)
{
    const ImportPatch failing(
        "GetVolumePathNameW", +[](const wchar_t*, wchar_t* buffer, DWORD) -> BOOL {
            buffer[0] = L'E';
            ::SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        });
    EXPECT_EQ(LR"(E:\very\long)", Build(LR"(E:\very\long)", snapshots));
    EXPECT_EQ(1U, snapshots.count(L""));
    EXPECT_EQ(LR"(GetVolumeNameForVolumeMountPointW(, 260))", volumes.Calls().back());
}

TEST_F(BuildSnapshotFilePathSimulation, TakesTheWholePathForAShareWhoseVolumePathWindowsDoesNotTell)
{
    volumes.Fail(L"GetVolumePathNameW", 1, ERROR_INVALID_NAME);
    EXPECT_EQ(LR"(\\server\share\f)", Build(LR"(\\server\share\f)", snapshots));
    EXPECT_EQ(1U, snapshots.count(L""));
}

TEST_F(BuildSnapshotFilePathSimulation, HasNothingBelowAVolumePathThatIsLongerThanThePath)
{
    // Windows never answers so: the capacity for the volume path is that of the path.
    const ImportPatch longer(
        "GetVolumePathNameW", +[](const wchar_t*, wchar_t* buffer, DWORD capacity) -> BOOL {
            std::wmemset(buffer, L'v', capacity);
            return TRUE;
        });
    EXPECT_EQ(L"", Build(L"abc", snapshots));
    EXPECT_EQ(L"", Build(L"", snapshots));
    EXPECT_EQ(1U, snapshots.count(L"vvvv"));
}
