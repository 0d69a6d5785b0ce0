// Registration of the moves of cache files.

#include "tests/cache/CacheFileFixture.h"

using MoveCacheFileTest = CreateCacheFileTest;

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

TEST_F(MoveCacheFileTest, IsFalseForARejectedTarget)
{
    std::wstring target = LR"(C:\a*b\live)";
    EXPECT_FALSE(MoveCacheFile(tree.File(L"cache"), target));
    EXPECT_TRUE(pending.Entries().empty());
}
