// Answers of Windows about volumes that no volume of this machine gives. Simulations: single imports are replaced.

#include "tests/support/LibraryTest.h"

#include <cwchar>

namespace {

DWORD g_error = 0;  // of the mount paths
DWORD g_needed = 0; // characters beyond the capacity
int g_calls = 0;
const wchar_t* g_volumePath = L"";

BOOL WINAPI FailToListPaths(const wchar_t* /*name*/, wchar_t* /*paths*/, DWORD capacity, DWORD* needed)
{
    constexpr int kMostCalls = 10; // ends a loop without end
    *needed = capacity + g_needed;
    ::SetLastError(++g_calls < kMostCalls ? g_error : ERROR_INVALID_NAME);
    return FALSE;
}

HANDLE WINAPI FindOneVolume(wchar_t* name, DWORD /*capacity*/)
{
    std::wcscpy(name, LR"(\\?\Volume{1}\)");
    return reinterpret_cast<HANDLE>(1);
}

BOOL WINAPI FindNoMore(HANDLE /*search*/, wchar_t* /*name*/, DWORD /*capacity*/)
{
    ::SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}

BOOL WINAPI CloseNothing(HANDLE /*search*/)
{
    return TRUE;
}

BOOL WINAPI GiveVolumePath(const wchar_t* /*path*/, wchar_t* volumePath, DWORD /*capacity*/)
{
    std::wcscpy(volumePath, g_volumePath);
    return TRUE;
}

BOOL WINAPI NameOfOneCharacter(OSVERSIONINFOW* version)
{
    version->dwMajorVersion = 5;
    version->dwMinorVersion = 2;
    reinterpret_cast<OSVERSIONINFOEXW*>(version)->wProductType = VER_NT_SERVER;
    std::wcscpy(version->szCSDVersion, L"1");
    return TRUE;
}

} // namespace

class VolumeAnswersFault : public LibraryTest {
protected:
    static int CallsForPaths(DWORD error, DWORD needed)
    {
        const ImportPatch first("FindFirstVolumeW", &FindOneVolume);
        const ImportPatch next("FindNextVolumeW", &FindNoMore);
        const ImportPatch close("FindVolumeClose", &CloseNothing);
        const ImportPatch paths("GetVolumePathNamesForVolumeNameW", &FailToListPaths);
        g_error = error;
        g_needed = needed;
        g_calls = 0;
        EXPECT_TRUE(EnumVolumes().empty());
        return g_calls;
    }

    // The result for C:\a, and the key that was added to the map.
    static std::pair<std::wstring, std::wstring> SnapshotPath(const wchar_t* volumePath)
    {
        const ImportPatch path("GetVolumePathNameW", &GiveVolumePath);
        g_volumePath = volumePath;
        CComBSTR result;
        std::map<std::wstring, std::wstring> snapshots;
        EXPECT_TRUE(BuildSnapshotFilePath(LR"(C:\a)", result, snapshots));
        return {result.m_str == nullptr ? L"" : result.m_str, snapshots.begin()->first};
    }
};

TEST_F(VolumeAnswersFault, MountPathsAreAskedForAgainOnlyWithMoreCapacity)
{
    EXPECT_EQ(1, CallsForPaths(ERROR_MORE_DATA, 0));
    EXPECT_EQ(1, CallsForPaths(ERROR_ACCESS_DENIED, 100));
    EXPECT_EQ(10, CallsForPaths(ERROR_MORE_DATA, 1));
}

TEST_F(VolumeAnswersFault, EmptyVolumePathLeavesTheWholePath)
{
    EXPECT_EQ((std::pair<std::wstring, std::wstring>(LR"(C:\a)", L"")), SnapshotPath(L""));
}

TEST_F(VolumeAnswersFault, VolumePathOfOneCharacterGetsItsBackslash)
{
    EXPECT_EQ((std::pair<std::wstring, std::wstring>(LR"(:\a)", LR"(Q\)")), SnapshotPath(L"Q"));
}

TEST_F(VolumeAnswersFault, ServicePackOfOneCharacterIsOne)
{
    const ImportPatch version("GetVersionExW", &NameOfOneCharacter);
    EXPECT_EQ(1, IsRunOnWin2003SP1Up());
}
