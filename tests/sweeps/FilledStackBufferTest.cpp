// Buffers on the library's stack that Windows fills to the last character, with and without a terminator. Simulations.
//
// Each is followed by the compiler's canary: a call that writes more than it may ends the process. What is read after
// the end would be in the result.

#include "tests/support/FileTools.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/SilentHost.h"

#include <io.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>
#include <cwchar>
#include <iterator>
#include <map>
#include <utility>

namespace {

constexpr DWORD kOverrun = 64; // characters: beyond every variable that may follow the buffer

bool g_terminates = false;
DWORD g_overrun = 0;       // characters that are written after the buffer
std::wstring g_volumeName; // that the library passed to Windows
bool g_isFirst = true;

void Fill(wchar_t* buffer, DWORD capacity)
{
    std::wmemset(buffer, L'x', capacity + g_overrun);
    std::wmemcpy(buffer, LR"(C:\)", 3);
    if (g_terminates) {
        buffer[capacity - 1] = L'\0';
    }
}

std::wstring Filled(std::size_t capacity)
{
    return LR"(C:\)" + std::wstring(capacity - 3 - (g_terminates ? 1 : 0), L'x');
}

// The name of an entry that fills the buffer of Windows' record.
std::wstring EntryName()
{
    std::wstring name(MAX_PATH - (g_terminates ? 1 : 0), L'x');
    return name;
}

wchar_t* __cdecl FillCurrentDirectory(wchar_t* buffer, int capacity)
{
    Fill(buffer, static_cast<DWORD>(capacity));
    return buffer;
}

BOOL WINAPI FillVolume(const wchar_t* /*path*/, wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return TRUE;
}

DWORD WINAPI FillExpansion(const wchar_t* /*string*/, wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return capacity;
}

HANDLE WINAPI FillFirstVolume(wchar_t* buffer, DWORD capacity)
{
    Fill(buffer, capacity);
    return reinterpret_cast<HANDLE>(1);
}
BOOL WINAPI NoNextVolume(HANDLE /*search*/, wchar_t* /*buffer*/, DWORD /*capacity*/)
{
    ::SetLastError(ERROR_NO_MORE_FILES);
    return FALSE;
}
BOOL WINAPI CloseNothing(HANDLE /*search*/)
{
    return TRUE;
}
BOOL WINAPI KeepVolumeName(const wchar_t* name, wchar_t* /*paths*/, DWORD /*capacity*/, DWORD* /*needed*/)
{
    g_volumeName = name;
    ::SetLastError(ERROR_INVALID_NAME);
    return FALSE;
}

// The short name follows the name in the record.
void FillEntry(WIN32_FIND_DATAW& entry, DWORD attributes)
{
    entry = {};
    entry.dwFileAttributes = attributes;
    std::wmemset(entry.cFileName, L'x', std::size(entry.cFileName));
    std::wmemset(entry.cAlternateFileName, L'y', std::size(entry.cAlternateFileName));
    if (g_terminates) {
        entry.cFileName[MAX_PATH - 1] = L'\0';
    }
}

DWORD g_attributes = 0;

HANDLE WINAPI FindEntry(const wchar_t* /*pattern*/, WIN32_FIND_DATAW* entry)
{
    FillEntry(*entry, g_attributes);
    g_isFirst = true;
    return reinterpret_cast<HANDLE>(1);
}
BOOL WINAPI FindOneMore(HANDLE /*search*/, WIN32_FIND_DATAW* entry)
{
    FillEntry(*entry, g_attributes);
    ::SetLastError(ERROR_NO_MORE_FILES);
    return std::exchange(g_isFirst, false) ? TRUE : FALSE;
}

std::intptr_t __cdecl FindRuntimeEntry(const wchar_t* /*pattern*/, _wfinddata64_t* entry)
{
    *entry = {};
    entry->attrib = g_attributes;
    std::wmemset(entry->name, L'x', std::size(entry->name));
    if (g_terminates) {
        entry->name[std::size(entry->name) - 1] = L'\0';
    }
    return 1;
}
int __cdecl NoRuntimeEntry(std::intptr_t /*search*/, _wfinddata64_t* /*entry*/)
{
    errno = ENOENT;
    return -1;
}
int __cdecl CloseRuntimeSearch(std::intptr_t /*search*/)
{
    return 0;
}

BOOL WINAPI FillServicePack(OSVERSIONINFOW* version)
{
    version->dwMajorVersion = 5;
    version->dwMinorVersion = 2;
    reinterpret_cast<OSVERSIONINFOEXW*>(version)->wProductType = VER_NT_SERVER;
    std::wmemset(version->szCSDVersion, L'S', std::size(version->szCSDVersion));
    return TRUE;
}

std::wstring g_undeleted; // the path that the deleter reports: a wide string, although the format has %s

int __cdecl KeepUndeleted(int /*level*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    if (std::strstr(format, "couldn't be deleted") != nullptr) {
        g_undeleted = va_arg(arguments, const wchar_t*);
    }
    va_end(arguments);
    return 0;
}

int __cdecl ChangeNowhere(const wchar_t* /*directory*/)
{
    return 0;
}

class FilledStackBufferTest : public LibraryTest, public ::testing::WithParamInterface<bool> {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        g_terminates = GetParam();
        g_overrun = 0;
        host.Clear();
    }
};

} // namespace

TEST_P(FilledStackBufferTest, OfTheCurrentDirectoryIsReadToItsEnd)
{
    const ImportPatch current("_wgetcwd", &FillCurrentDirectory);
    EXPECT_EQ(Filled(MAX_PATH), GetPathFileName(L"a"));
}

TEST_P(FilledStackBufferTest, OfAnExpansionIsReadToItsEnd)
{
    const ImportPatch expansion("ExpandEnvironmentStringsW", &FillExpansion);
    CComBSTR string(L"%a%");
    DoExpandEnvironmentStrings(string);
    EXPECT_EQ(Filled(MAX_PATH), std::wstring(string.m_str, string.Length()));
}

TEST_P(FilledStackBufferTest, OfASnapshotKeyIsReadToItsEnd)
{
    const ImportPatch name("GetVolumeNameForVolumeMountPointW", &FillVolume);
    CComBSTR path;
    std::map<std::wstring, std::wstring> snapshots;
    EXPECT_TRUE(BuildSnapshotFilePath(LR"(C:\a)", path, snapshots));
    ASSERT_EQ(1U, snapshots.size());
    EXPECT_EQ(Filled(MAX_PATH), snapshots.begin()->first);
}

TEST_P(FilledStackBufferTest, OfAVolumeNameIsReadToItsEnd)
{
    constexpr std::size_t kCapacity = 1024; // characters
    const ImportPatch first("FindFirstVolumeW", &FillFirstVolume);
    const ImportPatch next("FindNextVolumeW", &NoNextVolume);
    const ImportPatch close("FindVolumeClose", &CloseNothing);
    const ImportPatch paths("GetVolumePathNamesForVolumeNameW", &KeepVolumeName);
    EXPECT_TRUE(EnumVolumes().empty());
    EXPECT_EQ(Filled(kCapacity), g_volumeName);
}

TEST_P(FilledStackBufferTest, OfAnEntryIsReadToItsEndByTheDeleter)
{
    const ImportPatch first("FindFirstFileW", &FindEntry);
    const ImportPatch next("FindNextFileW", &FindOneMore);
    const ImportPatch close("FindClose", &CloseNothing);
    SetVssFileManagerLogger(&KeepUndeleted, &SilentKeepAlive, &SilentLog);
    for (const DWORD attributes : {DWORD{FILE_ATTRIBUTE_NORMAL}, DWORD{FILE_ATTRIBUTE_DIRECTORY}}) {
        g_attributes = attributes;
        EXPECT_EQ(0, DeleteDirectoryRecursive(LR"(Q:\top)"));
        EXPECT_EQ(static_cast<DWORD>(ERROR_FILENAME_EXCED_RANGE), ::GetLastError());
        EXPECT_EQ(LR"(Q:\top\)" + EntryName(), g_undeleted);
    }
}

TEST_P(FilledStackBufferTest, OfAnEntryIsReadToItsEndByTheOwnerChange)
{
    const ImportPatch first("FindFirstFileW", &FindEntry);
    const ImportPatch next("FindNextFileW", &FindOneMore);
    const ImportPatch close("FindClose", &CloseNothing);
    g_attributes = FILE_ATTRIBUTE_NORMAL;
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), L"SYSTEM"));
    const std::wstring line = L"Getting DACL for file/folder " + tree.Path(EntryName()) + L".\n";
    const StringList lines = host.Lines();
    EXPECT_EQ(2, std::count(lines.begin(), lines.end(), line)) << "the first entry and the next one";
}

TEST_P(FilledStackBufferTest, OfAnEntryIsReadToItsEndByTheListings)
{
    const ImportPatch first("_wfindfirst64", &FindRuntimeEntry);
    const ImportPatch next("_wfindnext64", &NoRuntimeEntry);
    const ImportPatch close("_findclose", &CloseRuntimeSearch);
    g_attributes = 0;
    EXPECT_EQ(StringList{EntryName()}, ListFilesFilter(tree.Root(), L"*", false));
    g_attributes = _A_SUBDIR;
    EXPECT_EQ(StringList{tree.Path(EntryName())}, ListDirecoriesRecursive(tree.Root()));
}

INSTANTIATE_TEST_SUITE_P(WithAndWithoutTerminator, FilledStackBufferTest, ::testing::Bool());

TEST(FilledStackBuffer, OfTheServicePackNeedsNoTerminator)
{
    const ImportPatch version("GetVersionExW", &FillServicePack);
    EXPECT_EQ(1, IsRunOnWin2003SP1Up());
}

// With an overwritten stack, the exit code is any: the report itself may fail.
bool HasEnded(int /*exitCode*/)
{
    return true;
}

// What shows that the canaries are there.
TEST(OverfilledStackBuffer, OfTheCurrentDirectoryEndsTheProcess)
{
    const ImportPatch current("_wgetcwd", &FillCurrentDirectory);
    const ImportPatch change("_wchdir", &ChangeNowhere);
    g_overrun = kOverrun;
    EXPECT_EXIT(GetPathFileName(L"a"), HasEnded, "");
    g_overrun = 0;
}

TEST(OverfilledStackBuffer, OfAnExpansionEndsTheProcess)
{
    const ImportPatch expansion("ExpandEnvironmentStringsW", &FillExpansion);
    g_overrun = kOverrun;
    CComBSTR string(L"%a%");
    EXPECT_EXIT(DoExpandEnvironmentStrings(string), HasEnded, "");
    g_overrun = 0;
}

TEST(OverfilledStackBuffer, OfASnapshotKeyEndsTheProcess)
{
    const ImportPatch name("GetVolumeNameForVolumeMountPointW", &FillVolume);
    CComBSTR path;
    std::map<std::wstring, std::wstring> snapshots;
    g_overrun = kOverrun;
    EXPECT_EXIT(BuildSnapshotFilePath(LR"(C:\a)", path, snapshots), HasEnded, "");
    g_overrun = 0;
}

TEST(OverfilledStackBuffer, OfAVolumeNameEndsTheProcess)
{
    const ImportPatch first("FindFirstVolumeW", &FillFirstVolume);
    g_overrun = kOverrun;
    EXPECT_EXIT(EnumVolumes(), HasEnded, "");
    g_overrun = 0;
}
