// Creation of cache files and registration of their moves when Windows fails or memory runs short. Simulations: single
// imports of the library are replaced.

#include "tests/cache/CacheFileFixture.h"
#include "tests/support/CallLog.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/WorkingDirectory.h"

using CreateCacheFileFault = CreateCacheFileTest;
using MoveCacheFileFault = CreateCacheFileTest;

namespace {

UINT WINAPI FailTempFile(const wchar_t* /*directory*/, const wchar_t* /*prefix*/, UINT /*unique*/, wchar_t* /*name*/)
{
    ::SetLastError(ERROR_DISK_FULL);
    return 0;
}

UINT WINAPI GiveEmptyName(const wchar_t* /*directory*/, const wchar_t* /*prefix*/, UINT /*unique*/, wchar_t* name)
{
    name[0] = L'\0';
    return 1;
}

UINT WINAPI RecordTempFile(const wchar_t* directory, const wchar_t* prefix, UINT unique, wchar_t* name)
{
    CallLog::Add(std::wstring(prefix) + L" " + std::to_wstring(unique));
    return ::GetTempFileNameW(directory, prefix, unique, name);
}

BOOL WINAPI RecordMove(const wchar_t* source, const wchar_t* target, DWORD flags)
{
    CallLog::Add(std::wstring(source) + L" > " + (target == nullptr ? L"nothing" : target) + L" " +
                 std::to_wstring(flags));
    return TRUE;
}

BOOL WINAPI FailMove(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI ThrowFromMove(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    throw 1;
}

BSTR WINAPI FailString(const OLECHAR* /*text*/, UINT /*length*/)
{
    return nullptr;
}

} // namespace

TEST_F(CreateCacheFileFault, IsFalseWhereNoUniqueNameCanBeHad)
{
    const std::wstring live = tree.File(L"live");
    cacheFile = L"as it was";
    const ImportPatch patch("GetTempFileNameW", &FailTempFile);
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_EQ(L"as it was", cacheFile);
    EXPECT_EQ(static_cast<DWORD>(ERROR_DISK_FULL), ::GetLastError());
}

TEST_F(CreateCacheFileFault, IsFalseForAnEmptyUniqueName)
{
    const std::wstring live = tree.File(L"live");
    cacheFile = L"as it was";
    const ImportPatch patch("GetTempFileNameW", &GiveEmptyName);
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_EQ(L"", cacheFile);
}

TEST_F(CreateCacheFileFault, LetsWindowsChooseTheNumber)
{
    const std::wstring live = tree.File(L"live");
    const ImportPatch patch("GetTempFileNameW", &RecordTempFile);
    CreateCacheFile(live, cacheFile, L"abcdef", false, false);
    EXPECT_EQ(StringList{L"abcdef 0"}, CallLog::Take());
}

TEST_F(CreateCacheFileFault, IsFalseWhereNoStringCanBeAllocated)
{
    const std::wstring live = tree.File(L"live");
    const ImportPatch patch("SysAllocStringLen", &FailString);
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", true, false));
}

// A simulation: each allocation of the C++ runtime fails in turn, until the call ends by itself.
TEST_F(CreateCacheFileFault, ReturnsFalseWhenAnAllocationFails)
{
    const std::wstring live = tree.File(L"a live file with a name that takes memory", "content");
    const WorkingDirectory inside(tree.Root());
    host.Clear();
    for (const bool useTempPath : {false, true}) {
        bool struck = true;
        for (int failing = 1; struck; ++failing) {
            cacheFile.clear();
            std::wstring prefix = L"abc";
            bool made = false;
            {
                const MemoryFault fault(failing);
                made = CreateCacheFile(live, cacheFile, prefix, useTempPath, true);
                struck = MemoryFault::HasStruck();
            }
            EXPECT_EQ(!struck, made) << failing;
        }
    }
}

TEST_F(MoveCacheFileFault, ReplacesAnExistingTargetAtTheRestart)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(L"live");
    const ImportPatch patch("MoveFileExW", &RecordMove);
    EXPECT_TRUE(MoveCacheFile(cache, target));
    EXPECT_EQ(StringList{cache + L" > " + target + L" 5"}, CallLog::Take());
}

TEST_F(MoveCacheFileFault, IsFalseWhenWindowsFails)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(L"live");
    {
        const ImportPatch patch("MoveFileExW", &FailMove);
        EXPECT_FALSE(MoveCacheFile(cache, target));
        EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
    }
    const ImportPatch patch("MoveFileExW", &ThrowFromMove);
    EXPECT_FALSE(MoveCacheFile(cache, target));
}

TEST_F(MoveCacheFileFault, ReturnsFalseWhenAnAllocationFails)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(L"missing directory with a long name\\live");
    bool struck = true;
    for (int failing = 1; struck; ++failing) {
        bool registered = false;
        {
            const MemoryFault fault(failing);
            registered = MoveCacheFile(cache, target);
            struck = MemoryFault::HasStruck();
        }
        EXPECT_EQ(!struck, registered) << failing;
    }
}
