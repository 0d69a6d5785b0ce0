// Paths inside snapshots when memory runs short. Simulations: each allocation fails in turn.

#include "tests/support/MemoryFault.h"
#include "tests/volumes/SnapshotPathsFixture.h"

namespace {

// Fails the allocation of a BSTR by the library: the `g_fault`-th from now on.
int g_fault = 0;

BSTR WINAPI AllocateOrFail(const OLECHAR* text, UINT length)
{
    return --g_fault == 0 ? nullptr : ::SysAllocStringLen(text, length);
}

HRESULT ThrownBy(const wchar_t* path, CComBSTR& result, StringMap& snapshots)
{
    try {
        BuildSnapshotFilePath(path, result, snapshots);
    } catch (const CAtlException& exception) {
        return exception.m_hr;
    }
    return S_OK;
}

} // namespace

TEST_F(BuildSnapshotFilePathSimulation, ThrowsAndAppendsNothingWhenABstrCannotBeAllocated)
{
    // Two working strings, and the result.
    for (int allocation = 1; allocation <= 3; ++allocation) {
        CComBSTR result(L"before");
        HRESULT thrown = S_OK;
        {
            const ImportPatch patch("SysAllocStringLen", &AllocateOrFail);
            g_fault = allocation;
            thrown = ThrownBy(LR"(E:\f.txt)", result, snapshots);
        }
        EXPECT_EQ(E_OUTOFMEMORY, thrown) << allocation;
        EXPECT_EQ(L"before", Text(result)) << allocation;
    }
}

// The strings of the host's map are those of the standard library.
TEST_F(BuildSnapshotFilePathTest, EntryThatCannotBeAllocatedIsBadAlloc)
{
    const std::wstring path = LR"(C:\a-name-that-needs-memory-of-its-own\f.txt)";
    int failures = 0;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        StringMap map; // without the volume, so that an entry is allocated
        CComBSTR result(L"before");
        bool thrown = false;
        {
            const MemoryFault fault(allocation);
            try {
                BuildSnapshotFilePath(path.c_str(), result, map);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            happened = MemoryFault::HasStruck();
        }
        EXPECT_EQ(happened, thrown) << allocation;
        EXPECT_EQ(happened ? L"before" : LR"(before\a-name-that-needs-memory-of-its-own\f.txt)", Text(result));
        failures += happened ? 1 : 0;
    }
    EXPECT_LE(2, failures) << "the key and its entry";
}

// The device and the relative part are appended one after the other.
TEST_F(BuildSnapshotFilePathSimulation, FailureOfTheSecondAppendLeavesTheDevice)
{
    CComBSTR result(L"before ");
    HRESULT thrown = S_OK;
    {
        const ImportPatch patch("SysAllocStringLen", &AllocateOrFail);
        g_fault = 4; // two working strings, then the two appends
        thrown = ThrownBy(LR"(E:\f.txt)", result, snapshots);
    }
    EXPECT_EQ(E_OUTOFMEMORY, thrown);
    EXPECT_EQ(L"before data-device", Text(result));
}

// No simulation: this platform shortens the volume path where Windows fails.
TEST_F(BuildSnapshotFilePathTest, DriveWithoutABackslashIsTheDeviceAlone)
{
    EXPECT_EQ(kDevice, Build(L"C:", snapshots));
    EXPECT_EQ(L"D-device", Build(L"D:", snapshots));
    EXPECT_EQ((StringMap{{c, kDevice}, {d, L"D-device"}}), snapshots);
}
