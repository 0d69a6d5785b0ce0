// Creation of cache files.

#include "tests/cache/CacheFileFixture.h"

namespace {

constexpr const wchar_t* kFallback = LR"(C:\#Quorvanta\Cache)";

} // namespace

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
    // A number of hexadecimal digits follows the prefix: its fourth character is none of them.
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live"), cacheFile, L"abcxyz", false, false));
    const std::wstring name = NameOf(cacheFile);
    EXPECT_TRUE(EqualIgnoringCase(L"abc", name.substr(0, 3))) << Utf8(name);
    EXPECT_NE(L'x', name[3]);
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
    const LockedFile locked(tree.File(L"live", "content"), GENERIC_READ, FILE_SHARE_READ);
    EXPECT_FALSE(CreateCacheFile(tree.Path(L"live"), cacheFile, L"abc", false, true));
    EXPECT_EQ(static_cast<DWORD>(ERROR_SHARING_VIOLATION), ::GetLastError());
    EXPECT_EQ(tree.Root(), DirectoryOf(cacheFile));
    EXPECT_TRUE(PathExists(cacheFile));
}

TEST_F(CreateCacheFileTest, OfARejectedPathIsFalseAndLeavesTheNameAlone)
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
