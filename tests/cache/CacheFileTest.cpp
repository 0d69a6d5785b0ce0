// Creation of cache files and registration of their moves.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/PendingList.h"
#include "tests/support/WorkingDirectory.h"

#include <functional>

namespace {
constexpr const wchar_t* kFallback = LR"(C:\#Quorvanta\Cache)";

bool EqualIgnoringCase(const std::wstring& first, const std::wstring& second)
{
    return ::_wcsicmp(first.c_str(), second.c_str()) == 0;
}
} // namespace

class CreateCacheFileTest : public LibraryTest {
protected:
    CreateCacheFileTest() { ::SetEnvironmentVariableW(L"TMP", temporary.Root().c_str()); }
    ~CreateCacheFileTest() override { ::SetEnvironmentVariableW(L"TMP", nullptr); }

    static std::wstring DirectoryOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\')); }
    static std::wstring NameOf(const std::wstring& path) { return path.substr(path.rfind(L'\\') + 1); }

    // A file in a directory of so many characters, made through the long form.
    std::wstring FileInDirectoryOf(std::size_t length) const
    {
        std::wstring directory = tree.Directory(std::wstring(100, L'd'));
        directory += L"\\" + std::wstring(length - directory.size() - 1, L'e');
        EXPECT_TRUE(::CreateDirectoryW((LR"(\\?\)" + directory).c_str(), nullptr)) << ::GetLastError();
        WriteFileBytes(LR"(\\?\)" + directory + L"\\f", "live");
        return directory + L"\\f";
    }

    TestDirectory temporary;
    PendingList pending;
    std::wstring cacheFile;
};
using CreateCacheFileFault = CreateCacheFileTest;
using MoveCacheFileTest = CreateCacheFileTest;
using MoveCacheFileFault = CreateCacheFileTest;

TEST_F(CreateCacheFileTest, MakesAnEmptyFileBesideTheLiveFile)
{
    const std::wstring live = tree.File(L"live.db", "content");
    EXPECT_TRUE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_EQ(tree.Root(), DirectoryOf(cacheFile));
    EXPECT_TRUE(PathExists(cacheFile));
    EXPECT_EQ("", ReadFileBytes(cacheFile));
    EXPECT_EQ("content", ReadFileBytes(live));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(CreateCacheFileTest, FillsItWithTheLiveFileWhereAsked)
{
    const std::string bytes = SampleBytes(20000);
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live.db", bytes), cacheFile, L"abc", false, true));
    EXPECT_EQ(bytes, ReadFileBytes(cacheFile));
}

TEST_F(CreateCacheFileTest, TakesThreeCharactersOfThePrefixAndTheExtensionTmp)
{
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, L"abcdef", false, false));
    const std::wstring name = NameOf(cacheFile);
    EXPECT_TRUE(EqualIgnoringCase(L"abc", name.substr(0, 3))) << Utf8(name);
    EXPECT_NE(L'd', name[3]);
    EXPECT_TRUE(EqualIgnoringCase(L".tmp", name.substr(name.size() - 4))) << Utf8(name);
}

TEST_F(CreateCacheFileTest, GivesTwoFilesTwoNames)
{
    const std::wstring live = tree.File(L"live");
    std::wstring second;
    EXPECT_TRUE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_TRUE(CreateCacheFile(live, second, L"abc", false, false));
    EXPECT_FALSE(EqualIgnoringCase(cacheFile, second));
}

TEST_F(CreateCacheFileTest, UsesTheTemporaryDirectoryWhereAsked)
{
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live", "content"), cacheFile, L"abc", true, true));
    EXPECT_TRUE(EqualIgnoringCase(temporary.Root(), DirectoryOf(cacheFile))) << Utf8(cacheFile);
    EXPECT_EQ("content", ReadFileBytes(cacheFile));
}

TEST_F(CreateCacheFileTest, MakesAMissingDirectory)
{
    EXPECT_TRUE(CreateCacheFile(tree.Path(LR"(missing\deeper\live)"), cacheFile, L"abc", false, false));
    EXPECT_EQ(tree.Path(LR"(missing\deeper)"), DirectoryOf(cacheFile));
}

TEST_F(CreateCacheFileTest, MakesAMissingTemporaryDirectory)
{
    ::SetEnvironmentVariableW(L"TMP", temporary.Path(L"missing").c_str());
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, L"abc", true, false));
    EXPECT_TRUE(EqualIgnoringCase(temporary.Path(L"missing"), DirectoryOf(cacheFile)));
}

TEST_F(CreateCacheFileTest, KeepsADirectoryOf246Characters)
{
    const std::wstring live = FileInDirectoryOf(246);
    EXPECT_TRUE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_EQ(DirectoryOf(live), DirectoryOf(cacheFile));
}

TEST_F(CreateCacheFileTest, GoesToTheFallbackDirectoryFor247Characters)
{
    ASSERT_FALSE(PathExists(LR"(C:\#Quorvanta)")) << "somebody else's cache files are there";
    EXPECT_TRUE(CreateCacheFile(FileInDirectoryOf(247), cacheFile, L"abc", false, true));
    EXPECT_EQ(kFallback, DirectoryOf(cacheFile));
    EXPECT_EQ("live", ReadFileBytes(cacheFile));
    ::DeleteFileW(cacheFile.c_str());
    EXPECT_TRUE(::RemoveDirectoryW(kFallback));
    EXPECT_TRUE(::RemoveDirectoryW(LR"(C:\#Quorvanta)"));
}

TEST_F(CreateCacheFileTest, LeavesTheCacheFileWhereTheCopyFails)
{
    const HeldFile held(tree.File(L"live", "content"), GENERIC_READ, FILE_SHARE_READ);
    EXPECT_FALSE(CreateCacheFile(tree.Path(L"live"), cacheFile, L"abc", false, true));
    EXPECT_EQ(static_cast<DWORD>(ERROR_SHARING_VIOLATION), ::GetLastError());
    EXPECT_EQ(tree.Root(), DirectoryOf(cacheFile));
    EXPECT_TRUE(PathExists(cacheFile));
}

TEST_F(CreateCacheFileTest, OfARefusedPathIsFalseAndLeavesTheNameAlone)
{
    cacheFile = L"as it was";
    EXPECT_FALSE(CreateCacheFile(LR"(C:\a?b\live)", cacheFile, L"abc", false, false));
    EXPECT_EQ(L"as it was", cacheFile);
}

TEST_F(CreateCacheFileTest, IsFalseWhereTheTemporaryDirectoryIsTooLong)
{
    ::SetEnvironmentVariableW(L"TMP", (L"C:\\" + std::wstring(264, L't')).c_str());
    cacheFile = L"as it was";
    EXPECT_FALSE(CreateCacheFile(tree.File(L"live"), cacheFile, L"abc", true, false));
    EXPECT_EQ(L"as it was", cacheFile);
}

namespace {

UINT WINAPI RefuseTempFile(const wchar_t* /*directory*/, const wchar_t* /*prefix*/, UINT /*unique*/, wchar_t* /*name*/)
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

BOOL WINAPI RefuseMove(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return FALSE;
}

BOOL WINAPI ThrowFromMove(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    throw 1;
}

BSTR WINAPI RefuseString(const OLECHAR* /*text*/, UINT /*length*/)
{
    return nullptr;
}

} // namespace

TEST_F(CreateCacheFileFault, IsFalseWhereNoUniqueNameCanBeHad)
{
    const std::wstring live = tree.File(L"live");
    cacheFile = L"as it was";
    const ImportPatch patch("GetTempFileNameW", &RefuseTempFile);
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
    const ImportPatch patch("SysAllocStringLen", &RefuseString);
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", false, false));
    EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", true, false));
}

// A simulation: each allocation of the C++ runtime fails in turn, until the call ends by itself.
TEST_F(CreateCacheFileFault, LetsNoFailedAllocationOut)
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

TEST_F(MoveCacheFileTest, RegistersTheMoveAndMovesNothingNow)
{
    const std::wstring cache = tree.File(L"cache", "new");
    std::wstring target = tree.File(L"live", "old");
    EXPECT_TRUE(MoveCacheFile(cache, target));
    EXPECT_EQ(tree.Path(L"live"), target);
    EXPECT_EQ("old", ReadFileBytes(target));
    EXPECT_EQ("new", ReadFileBytes(cache));
    EXPECT_TRUE(pending.ReplacesAtRestart(cache, target));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(MoveCacheFileTest, MakesTheTargetsDirectoryFirst)
{
    std::wstring target = tree.Path(LR"(missing\deeper\live)");
    EXPECT_TRUE(MoveCacheFile(tree.File(L"cache"), target));
    EXPECT_TRUE(IsDirectory(tree.Path(LR"(missing\deeper)")));
    EXPECT_EQ(1U, pending.Entries().size());
}

TEST_F(MoveCacheFileTest, IsFalseForAnEmptyCacheFile)
{
    std::wstring target = tree.Path(L"live");
    EXPECT_FALSE(MoveCacheFile(L"", target));
    EXPECT_TRUE(pending.Entries().empty());
}

TEST_F(MoveCacheFileTest, IsFalseForARefusedTarget)
{
    std::wstring target = LR"(C:\a*b\live)";
    EXPECT_FALSE(MoveCacheFile(tree.File(L"cache"), target));
    EXPECT_TRUE(pending.Entries().empty());
}

TEST_F(MoveCacheFileFault, ReplacesAnExistingTargetAtTheRestart)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(L"live");
    const ImportPatch patch("MoveFileExW", &RecordMove);
    EXPECT_TRUE(MoveCacheFile(cache, target));
    EXPECT_EQ(StringList{cache + L" > " + target + L" 5"}, CallLog::Take());
}

TEST_F(MoveCacheFileFault, IsFalseWhereWindowsRefuses)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(L"live");
    {
        const ImportPatch patch("MoveFileExW", &RefuseMove);
        EXPECT_FALSE(MoveCacheFile(cache, target));
        EXPECT_EQ(static_cast<DWORD>(ERROR_ACCESS_DENIED), ::GetLastError());
    }
    const ImportPatch patch("MoveFileExW", &ThrowFromMove);
    EXPECT_FALSE(MoveCacheFile(cache, target));
}

TEST_F(MoveCacheFileFault, LetsNoFailedAllocationOut)
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
