// The fixtures of the snapshot paths' tests: the volumes of this machine, and simulated ones.

#pragma once

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedVolumes.h"

using StringMap = std::map<std::wstring, std::wstring>;

inline const std::wstring kDevice = LR"(\\?\GLOBALROOT\Device\Shadow1)";
inline const std::wstring kSystemName = LR"(\\?\Volume{11111111-0000-0000-0000-000000000001}\)";
inline const std::wstring kDataName = LR"(\\?\Volume{22222222-0000-0000-0000-000000000002}\)";
inline const std::wstring kDataUniqueName = LR"(\\?\Volume{33333333-0000-0000-0000-000000000003}\)";

inline std::wstring Text(const CComBSTR& text)
{
    return text.m_str == nullptr ? std::wstring() : std::wstring(text.m_str, text.Length());
}

// Whatever is missing, the answer is true and nothing is printed.
inline std::wstring Build(const wchar_t* path, StringMap& snapshots)
{
    CComBSTR result;
    CapturedOutput output;
    EXPECT_TRUE(BuildSnapshotFilePath(path, result, snapshots));
    EXPECT_EQ("", output.Text());
    return Text(result);
}

// Everything but shares and bare drives works on this machine.
class BuildSnapshotFilePathTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        wchar_t name[MAX_PATH] = {};
        ASSERT_TRUE(::GetVolumeNameForVolumeMountPointW(LR"(C:\)", name, MAX_PATH));
        c = name;
        ASSERT_TRUE(::GetVolumeNameForVolumeMountPointW(LR"(D:\)", name, MAX_PATH));
        d = name;
        snapshots = {{c, kDevice}, {d, L"D-device"}};
    }

    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }

    std::wstring c;
    std::wstring d;
    StringMap snapshots;
};

// A simulation: mount folders, shares with volume paths, and a look-up that needs the capacity of the whole volume
// path.
class BuildSnapshotFilePathSimulation : public LibraryTest {
protected:
    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }

    SimulatedVolumes volumes{{{kSystemName, {LR"(C:\)"}}, {kDataName, {LR"(E:\)", LR"(C:\mnt\v\)"}, kDataUniqueName}}};
    StringMap snapshots = {{kSystemName, kDevice}, {kDataName, L"data-device"}};
};
