// Lists of cache files.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/PendingList.h"

#include <algorithm>
#include <chrono>

using StringMap = std::map<std::wstring, std::wstring>;

class CacheFileListsTest : public LibraryTest {
protected:
    static std::wstring Upper(const std::wstring& text) { return WString2UpperCase(text); }

    [[nodiscard]] std::ptrdiff_t FileCount() const
    {
        const std::vector<WIN32_FIND_DATAW> entries = EntriesOf(tree.Root());
        return std::count_if(entries.begin(), entries.end(), [](const WIN32_FIND_DATAW& entry) {
            return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0;
        });
    }

    PendingList pending;
    StringMap map;
};
using CreateCacheFileListTest = CacheFileListsTest;
using CreateCacheFileListFault = CacheFileListsTest;
using DeleteCacheFileListTest = CacheFileListsTest;
using DeleteCacheFileListFault = CacheFileListsTest;
using RestoreFileListCacheTest = CacheFileListsTest;

TEST_F(CreateCacheFileListTest, MakesACacheFileForEachPlainPath)
{
    const std::wstring first = tree.File(L"first.txt", "1");
    const std::wstring second = tree.File(L"second.txt", "2");
    EXPECT_TRUE(CreateCacheFileList({second, first}, L'\0', L"abc", false, map, true));
    ASSERT_EQ(2U, map.size());
    EXPECT_EQ("1", ReadFileBytes(map[Upper(first)]));
    EXPECT_EQ("2", ReadFileBytes(map[Upper(second)]));
    EXPECT_EQ(Upper(map[Upper(first)]), map[Upper(first)]);
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(CreateCacheFileListTest, SkipsXmlEntriesAndTakesThePathAfterTheSeparator)
{
    const std::wstring file = tree.File(L"a.txt", "a");
    const std::wstring xml = tree.File(L"a.xml", "x");
    EXPECT_TRUE(CreateCacheFileList({L"xml|" + xml, L"XML|" + xml, L"FILE|" + file}, L'|', L"abc", false, map, true));
    ASSERT_EQ(1U, map.size());
    EXPECT_EQ(Upper(L"FILE|" + file), map.begin()->first);
    EXPECT_EQ("a", ReadFileBytes(map.begin()->second));
}

TEST_F(CreateCacheFileListTest, WithoutASeparatorTakesXmlForAPath)
{
    const std::wstring before = CurrentDirectory();
    ::SetCurrentDirectoryW(tree.Root().c_str());
    EXPECT_TRUE(CreateCacheFileList({L"XML"}, L'\0', L"abc", false, map, false));
    ::SetCurrentDirectoryW(before.c_str());
    ASSERT_EQ(1U, map.count(L"XML"));
    EXPECT_EQ(0U, map[L"XML"].find(Upper(tree.Root())));
}

TEST_F(CreateCacheFileListTest, TakesAnEntryWithoutTheSeparatorForItsOwnKindAndPath)
{
    const std::wstring file = tree.File(L"a.txt", "a");
    EXPECT_TRUE(CreateCacheFileList({file, L"xml"}, L'|', L"abc", false, map, true));
    EXPECT_EQ(1U, map.size());
    EXPECT_EQ(1U, map.count(Upper(file)));
}

TEST_F(CreateCacheFileListTest, OfAnEntryListedTwiceKeepsTheSecondCacheFile)
{
    const std::wstring file = tree.File(L"a.txt", "a");
    EXPECT_TRUE(CreateCacheFileList({file, file}, L'\0', L"abc", false, map, false));
    EXPECT_EQ(1U, map.size());
    EXPECT_EQ(3, FileCount());
}

TEST_F(CreateCacheFileListTest, OfAnEmptyListLeavesTheMapAlone)
{
    map[L"OLD"] = L"C:\\OLD.TMP";
    EXPECT_TRUE(CreateCacheFileList({}, L'|', L"abc", false, map, true));
    EXPECT_EQ((StringMap{{L"OLD", L"C:\\OLD.TMP"}}), map);
}

TEST_F(CreateCacheFileListTest, GivesAnExistingKeyTheNewValueAndKeepsTheOthers)
{
    const std::wstring file = tree.File(L"a.txt", "a");
    map[L"OLD"] = L"C:\\OLD.TMP";
    map[Upper(file)] = L"C:\\STALE.TMP";
    EXPECT_TRUE(CreateCacheFileList({file}, L'\0', L"abc", false, map, true));
    EXPECT_EQ(2U, map.size());
    EXPECT_EQ("a", ReadFileBytes(map[Upper(file)]));
}

TEST_F(CreateCacheFileListTest, StopsAtTheFirstFailureAndKeepsWhatIsBeforeIt)
{
    const std::wstring first = tree.File(L"first", "1");
    const std::wstring busy = tree.File(L"busy", "2");
    const std::wstring last = tree.File(L"last", "3");
    const LockedFile locked(busy, GENERIC_READ, FILE_SHARE_READ);
    EXPECT_FALSE(CreateCacheFileList({first, busy, last}, L'\0', L"abc", false, map, true));
    EXPECT_EQ(static_cast<DWORD>(ERROR_SHARING_VIOLATION), ::GetLastError());
    ASSERT_EQ(1U, map.size());
    EXPECT_EQ("1", ReadFileBytes(map[Upper(first)]));
    EXPECT_EQ(5, FileCount()) << "the failing entry's cache file stays, in no map";
}

TEST_F(CreateCacheFileListFault, ReturnsFalseWhenAnAllocationFails)
{
    const std::wstring file = tree.File(L"a live file with a name that takes memory", "a");
    bool struck = true;
    for (int failing = 1; struck; ++failing) {
        map.clear();
        const StringList files = {file};
        bool made = false;
        bool thrown = false;
        {
            // The list is copied for the call, which is the host's own failure; the library lets none out.
            const MemoryFault fault(failing);
            try {
                made = CreateCacheFileList(files, L'\0', L"abc", false, map, true);
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            struck = MemoryFault::HasStruck();
        }
        EXPECT_EQ(!struck, made) << failing;
        EXPECT_TRUE(!thrown || failing <= 2) << failing;
    }
}

TEST_F(DeleteCacheFileListTest, DeletesTheFilesOfAMap)
{
    map = {{L"A", tree.File(L"1.tmp")}, {L"B", tree.File(L"2.tmp")}, {L"C", L""}, {L"D", tree.Path(L"missing")}};
    const StringMap before = map;
    EXPECT_TRUE(DeleteCacheFileList(map, L'\0'));
    EXPECT_EQ(before, map);
    EXPECT_EQ(0, FileCount());
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(DeleteCacheFileListTest, TakesThePathAfterTheSeparator)
{
    map = {{L"A", L"FILE|" + tree.File(L"1.tmp")}, {L"B", tree.File(L"2.tmp")}, {L"C", L"FILE|"}};
    EXPECT_TRUE(DeleteCacheFileList(map, L'|'));
    EXPECT_EQ(0, FileCount());
}

TEST_F(DeleteCacheFileListTest, DeletesAFileInUseAtTheNextRestart)
{
    const std::wstring busy = tree.File(L"busy.tmp");
    const LockedFile locked(busy, GENERIC_READ, FILE_SHARE_READ);
    map = {{L"A", busy}, {L"B", tree.File(L"free.tmp")}};
    EXPECT_TRUE(DeleteCacheFileList(map, L'\0'));
    EXPECT_TRUE(PathExists(busy));
    EXPECT_FALSE(PathExists(tree.Path(L"free.tmp")));
    EXPECT_TRUE(pending.DeletesAtRestart(busy));
    EXPECT_EQ(1U, pending.Entries().size());
}

TEST_F(DeleteCacheFileListTest, DeletesTheFilesOfAList)
{
    const std::wstring busy = tree.File(L"busy.tmp");
    const LockedFile locked(busy, GENERIC_READ, FILE_SHARE_READ);
    std::vector<std::wstring> paths = {L"", busy, tree.File(L"1.tmp")};
    const std::vector<std::wstring> before = paths;
    EXPECT_TRUE(DeleteCacheFileList(paths));
    EXPECT_EQ(before, paths);
    EXPECT_FALSE(PathExists(tree.Path(L"1.tmp")));
    EXPECT_TRUE(pending.DeletesAtRestart(busy));
}

namespace {

BOOL WINAPI FailDeletion(const wchar_t* /*path*/)
{
    return FALSE;
}

BOOL WINAPI RecordAndFailMove(const wchar_t* source, const wchar_t* target, DWORD flags)
{
    CallLog::Add(std::wstring(source) + (target == nullptr ? L" " : L" to somewhere ") + std::to_wstring(flags));
    return FALSE;
}

BOOL WINAPI ThrowFromDeletion(const wchar_t* /*path*/)
{
    throw 1;
}

} // namespace

TEST_F(DeleteCacheFileListFault, IsTrueAlsoWhereNothingCanBeRegistered)
{
    const ImportPatch deletion("DeleteFileW", &FailDeletion);
    const ImportPatch move("MoveFileExW", &RecordAndFailMove);
    map = {{L"A", L"C:\\2.TMP"}, {L"B", L"C:\\1.TMP"}};
    EXPECT_TRUE(DeleteCacheFileList(map, L'\0'));
    std::vector<std::wstring> paths = {L"C:\\3.TMP"};
    EXPECT_TRUE(DeleteCacheFileList(paths));
    EXPECT_EQ((StringList{L"C:\\2.TMP 4", L"C:\\1.TMP 4", L"C:\\3.TMP 4"}), CallLog::Take());
}

TEST_F(DeleteCacheFileListFault, AnExceptionIsFalseForAMapAndTrueForAList)
{
    const ImportPatch patch("DeleteFileW", &ThrowFromDeletion);
    map = {{L"A", L"C:\\1.TMP"}};
    EXPECT_FALSE(DeleteCacheFileList(map, L'\0'));
    std::vector<std::wstring> paths = {L"C:\\1.TMP"};
    EXPECT_TRUE(DeleteCacheFileList(paths));
}

TEST_F(DeleteCacheFileListFault, RunsOutOfMemoryWithFalseForAMap)
{
    map = {{L"A", L"FILE|C:\\" + std::wstring(100, L'x')}};
    const MemoryFault fault(1);
    EXPECT_FALSE(DeleteCacheFileList(map, L'|'));
}

TEST_F(RestoreFileListCacheTest, CopiesEachCacheFileBesideItsLiveFile)
{
    const std::wstring live = tree.File(LR"(data\db.mdf)", "live");
    map = {{Upper(live), Upper(tree.File(LR"(temp\dbe1.tmp)", "cached"))}};
    EXPECT_TRUE(RestoreFileListCache(map));
    EXPECT_EQ("cached", ReadFileBytes(tree.Path(LR"(data\dbe1.tmp)")));
    EXPECT_EQ("live", ReadFileBytes(live));
    EXPECT_EQ("cached", ReadFileBytes(tree.Path(LR"(temp\dbe1.tmp)")));
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(RestoreFileListCacheTest, GoesOnAfterAFailure)
{
    map = {{Upper(tree.Path(LR"(data\1)")), tree.Path(LR"(temp\missing)")},
           {Upper(tree.Path(LR"(data\2)")), tree.File(LR"(temp\there)", "cached")}};
    EXPECT_FALSE(RestoreFileListCache(map));
    EXPECT_EQ("cached", ReadFileBytes(tree.Path(LR"(data\there)")));
}

TEST_F(RestoreFileListCacheTest, OfAnEmptyMapIsTrue)
{
    EXPECT_TRUE(RestoreFileListCache(map));
}

TEST_F(RestoreFileListCacheTest, KeepsEveryByteOfACacheFileThatLiesBesideItsLiveFile)
{
    const std::wstring live = tree.File(L"live.db", "live");
    EXPECT_TRUE(CreateCacheFileList({live}, L'\0', L"abc", false, map, true));
    const std::string bytes = SampleBytes(20000);
    WriteFileBytes(map.begin()->second, bytes);
    EXPECT_FALSE(RestoreFileListCache(map));
    EXPECT_EQ(bytes, ReadFileBytes(map.begin()->second));
}

namespace {

int g_uniqueNumber = 0;

UINT WINAPI GiveNumberedName(const wchar_t* directory, const wchar_t* prefix, UINT /*unique*/, wchar_t* name)
{
    ::lstrcpyW(name, (std::wstring(directory) + L"\\" + prefix + std::to_wstring(++g_uniqueNumber) + L".tmp").c_str());
    return 1;
}

BOOL WINAPI AcceptDeletion(const wchar_t* /*path*/)
{
    return TRUE;
}

} // namespace

// A simulation, because a directory of 10,000 files is slow by itself under Wine: the library's own share grows
// linearly.
TEST_F(CreateCacheFileListFault, TakesTimeThatGrowsLinearlyWithTheList)
{
    const ImportPatch names("GetTempFileNameW", &GiveNumberedName);
    const ImportPatch deletion("DeleteFileW", &AcceptDeletion);
    const auto measure = [&](int count) {
        StringList files;
        for (int i = 0; i < count; ++i) {
            files.push_back(tree.Path(L"file " + std::to_wstring(i)));
        }
        map.clear();
        const auto start = std::chrono::steady_clock::now();
        EXPECT_TRUE(CreateCacheFileList(files, L'\0', L"abc", false, map, false));
        EXPECT_TRUE(DeleteCacheFileList(map, L'\0'));
        return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
    };
    measure(1000);
    const double tenth = measure(1000);
    const double whole = measure(10000);
    EXPECT_EQ(10000U, map.size());
    EXPECT_LT(whole, 30 * tenth) << "ten times the files took " << whole / tenth << " times as long";
    RecordProperty("milliseconds-for-10000", static_cast<int>(whole * 1000));
}
