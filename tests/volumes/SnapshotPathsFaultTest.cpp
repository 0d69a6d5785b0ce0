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

TEST_F(BuildSnapshotFilePathTest, ThrowsAndAppendsNothingWhenMemoryRunsShort)
{
    // The volume is missing from the map, so that an entry is allocated, too.
    const std::wstring path = LR"(C:\a-name-that-needs-memory-of-its-own\f.txt)";
    int failures = 0;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        StringMap map;
        CComBSTR result(L"before");
        HRESULT thrown = S_OK;
        {
            const MemoryFault fault(allocation);
            EXPECT_NO_THROW(thrown = ThrownBy(path.c_str(), result, map));
            happened = MemoryFault::HasStruck();
        }
        if (happened) {
            EXPECT_EQ(E_OUTOFMEMORY, thrown) << allocation;
            EXPECT_EQ(L"before", Text(result)) << allocation;
            ++failures;
        } else {
            EXPECT_EQ(LR"(before\a-name-that-needs-memory-of-its-own\f.txt)", Text(result));
        }
    }
    EXPECT_GE(failures, 3);
}
