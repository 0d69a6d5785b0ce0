// The fixtures of the volume names' tests: the volumes of this machine, and simulated ones.

#pragma once

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedVolumes.h"

inline const std::wstring kSystemName = LR"(\\?\Volume{11111111-0000-0000-0000-000000000001}\)";
inline const std::wstring kDataName = LR"(\\?\Volume{22222222-0000-0000-0000-000000000002}\)";
inline const std::wstring kDataUniqueName = LR"(\\?\Volume{33333333-0000-0000-0000-000000000003}\)";

// The volume name of a drive, asked without the library.
inline std::wstring NameOfDrive(const std::wstring& root)
{
    wchar_t name[MAX_PATH] = {};
    EXPECT_TRUE(::GetVolumeNameForVolumeMountPointW(root.c_str(), name, MAX_PATH)) << Utf8(root);
    return name;
}

class VolumeTest : public LibraryTest {
protected:
    // Nothing here goes to the host's log.
    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }
};

// A simulation: this machine cannot mount a volume in a folder. The data volume has a drive and a folder, and a name
// that is not its unique one.
class SimulatedMachine : public VolumeTest {
protected:
    SimulatedVolumes volumes{
        {{kSystemName, {LR"(C:\)"}, {}}, {kDataName, {LR"(E:\)", LR"(C:\mnt\data\)"}, kDataUniqueName}}};
};
