// Prefixes of cache files that cannot begin a file name, and cache files that nobody could name.

#include "tests/cache/CacheFileFixture.h"

#include "tests/support/MemoryFault.h"

namespace {

std::size_t CountEntries(const std::wstring& directory)
{
    return ListFilesFilterRecursive(directory, L"*", true).size() + ListDirecoriesRecursive(directory).size();
}

} // namespace

TEST_F(CreateCacheFileTest, PrefixThatCannotBeginANameIsFalseAndLeavesNothing)
{
    const std::wstring live = tree.File(LR"(dir\live)", "content");
    for (const wchar_t* prefix :
         {LR"(..\)", LR"(a\b)", L"<a>", L"a/b", L"a:b", L"*", L"?", L"\"", L"|", L"\x1", L"\x1F"}) {
        for (const bool copy : {false, true}) {
            cacheFile = L"unchanged";
            EXPECT_FALSE(CreateCacheFile(live, cacheFile, prefix, false, copy)) << Utf8(prefix);
            EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_NAME), ::GetLastError()) << Utf8(prefix);
            EXPECT_EQ(L"unchanged", cacheFile) << Utf8(prefix);
        }
    }
    EXPECT_EQ(2U, CountEntries(tree.Root())) << "the live file and its directory";
    EXPECT_FALSE(CreateCacheFile(tree.Path(LR"(missing\live)"), cacheFile, L"a\\", false, false));
    EXPECT_FALSE(PathExists(tree.Path(L"missing")));
}

TEST_F(CreateCacheFileTest, CharactersAfterTheThirdOfThePrefixAreIgnored)
{
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, LR"(abc\..\x*)", false, false));
    EXPECT_EQ(tree.Root(), DirectoryOf(cacheFile));
    EXPECT_TRUE(PathExists(cacheFile));
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, L"", false, false)) << "an empty prefix is valid";
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, L"a b", false, false)) << "a blank is valid";
}

// Simulation: memory runs short at each allocation in turn.
TEST_F(CreateCacheFileTest, MemoryThatRunsShortLeavesNoFileWithoutAName)
{
    const std::wstring live = tree.File(L"a live file with a long name", "content");
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        cacheFile.clear();
        cacheFile.shrink_to_fit();
        bool created = false;
        {
            const MemoryFault fault(allocation);
            created = CreateCacheFile(live, cacheFile, L"abc", false, false);
            happened = MemoryFault::HasStruck();
        }
        EXPECT_EQ(created || !cacheFile.empty() ? 2U : 1U, CountEntries(tree.Root())) << allocation;
        ::DeleteFileW(cacheFile.c_str());
    }
}

TEST_F(CreateCacheFileTest, MemoryThatRunsShortLeavesNoFileOfAListOutOfItsMap)
{
    const std::wstring live = tree.File(L"a live file with a long name", "content");
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        std::map<std::wstring, std::wstring> cacheMap;
        const StringList files = {live};
        {
            StringList copy = files;
            const MemoryFault fault(allocation);
            try {
                CreateCacheFileList(std::move(copy), L'\0', L"abc", false, cacheMap, false);
            } catch (const std::bad_alloc&) { // the copies of the arguments are the test's own
            }
            happened = MemoryFault::HasStruck();
        }
        EXPECT_EQ(1U + cacheMap.size(), CountEntries(tree.Root())) << allocation;
        for (const auto& [entry, path] : cacheMap) {
            ::DeleteFileW(path.c_str());
        }
    }
}
