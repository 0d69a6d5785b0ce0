// Directories with an embedded NUL: the platform would see the directory before the NUL, so they are not searched.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

namespace {

std::wstring WithNul(const std::wstring& directory, const std::wstring& after)
{
    return directory + L'\0' + after;
}

} // namespace

class EmbeddedNulTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        tree.Files({LR"(top\file)", LR"(top\sub\file)"});
    }

    void ExpectTreeIsWhole() const
    {
        EXPECT_TRUE(PathExists(tree.Path(LR"(top\file)")));
        EXPECT_TRUE(PathExists(tree.Path(LR"(top\sub\file)")));
    }

    // The tree itself, and relative paths of nothing but a NUL and characters after it.
    [[nodiscard]] StringList Directories() const
    {
        const std::wstring top = tree.Path(L"top");
        return {WithNul(top, L"junk"), WithNul(top, L""), WithNul(top + L"\\", LR"(\)"), WithNul(L"", L"junk"),
                WithNul(L"", L"")};
    }
};

TEST_F(EmbeddedNulTest, ListingsAreEmpty)
{
    const WorkingDirectory in(tree.Path(L"top"));
    for (const std::wstring& directory : Directories()) {
        EXPECT_EQ(StringList{}, ListFilesFilter(directory, L"*", true));
        EXPECT_EQ(StringList{}, ListFilesFilterRecursive(directory, L"*", false));
        EXPECT_EQ(StringList{}, ListDirecoriesRecursive(directory));
    }
    EXPECT_EQ(StringList{}, host.Lines());
}

TEST_F(EmbeddedNulTest, DeletersDeleteNothing)
{
    const WorkingDirectory in(tree.Path(L"top"));
    for (const std::wstring& directory : Directories()) {
        EXPECT_TRUE(DeleteFilesFilter(directory, L"*")) << "as for a missing directory";
        EXPECT_FALSE(CleanupDirectory(directory));
        ExpectTreeIsWhole();
    }
    EXPECT_EQ(StringList{}, host.Lines());
}

TEST_F(EmbeddedNulTest, LongCleanUpDeletesNothing)
{
    const WorkingDirectory in(tree.Path(L"top"));
    EXPECT_FALSE(CleanupDirectory(WithNul(L"", std::wstring(300, L'x'))));
    EXPECT_FALSE(CleanupDirectory(WithNul(tree.Path(L"top"), std::wstring(300, L'x'))));
    ExpectTreeIsWhole();
}

TEST_F(EmbeddedNulTest, LongestPathOfTheDeleterDeletesNothing)
{
    constexpr std::size_t kLongestWin32Path = 260; // characters
    std::wstring directory = WithNul(tree.Path(L"top"), L"");
    directory.resize(kLongestWin32Path, L'x');
    EXPECT_FALSE(CleanupDirectory(directory));
    ExpectTreeIsWhole();
}

TEST_F(EmbeddedNulTest, DirectoryBeforeTheNulIsCreatedAndChecked)
{
    const std::wstring directory = tree.Path(L"new.d");
    EXPECT_TRUE(RecursivelyCreateDirectory(WithNul(directory, L"junk")));
    EXPECT_TRUE(IsDirectory(directory));
    EXPECT_TRUE(isDirectoryExists(WithNul(directory, L"junk")));
}
