// Copies of one file into a directory, under the name of the file.

#include "tests/fileops/FileCopyFixture.h"

class DoCopyComponentFileToDirTest : public FileLockerTest {};

TEST_F(DoCopyComponentFileToDirTest, CopiesUnderTheSourcesOwnName)
{
    const std::string bytes = SampleBytes(3 * kBlock + 1);
    const std::wstring source = tree.File(LR"(from\f.tar.gz)", bytes);
    EXPECT_EQ(1, DoCopyComponentFileToDir(source, tree.Path(LR"(a\b)")));
    EXPECT_TRUE(bytes == ReadFileBytes(tree.Path(LR"(a\b\f.tar.gz)")));
    EXPECT_TRUE(bytes == ReadFileBytes(source));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(DoCopyComponentFileToDirTest, DirectoryIsNormalised)
{
    const std::wstring source = tree.File(L"source", "bytes");
    const WorkingDirectory inside(tree.Root());
    const struct {
        std::wstring directory;
        std::wstring written;
        const char* why;
    } cases[] = {
        {WithForwardSlashes(tree.Path(L"1")), LR"(1\source)", "forward slashes"},
        {tree.Path(L"2\\"), LR"(2\source)", "a trailing backslash"},
        {WithForwardSlashes(tree.Path(L"3")) + L"/", LR"(3\source)", "a trailing slash"},
        {L"4", LR"(4\source)", "relative"},
    };
    for (const auto& [directory, written, why] : cases) {
        EXPECT_EQ(1, DoCopyComponentFileToDir(source, directory)) << why;
        EXPECT_EQ("bytes", ReadFileBytes(tree.Path(written))) << why;
    }
}

TEST_F(DoCopyComponentFileToDirTest, CopiesToVolumesAndSharesAndFromRelativePaths)
{
    const TestDirectory share(LR"(\\beta\data\)");
    const TestDirectory other(L"D:\\");
    tree.File(L"source", "bytes");
    const WorkingDirectory inside(tree.Root());
    EXPECT_EQ(1, DoCopyComponentFileToDir(L"source", share.Path(L"x")));
    EXPECT_EQ(1, DoCopyComponentFileToDir(share.Path(LR"(x\source)"), other.Path(L"y")));
    EXPECT_EQ("bytes", ReadFileBytes(other.Path(LR"(y\source)")));
}

TEST_F(DoCopyComponentFileToDirTest, IntoItsOwnDirectoryIsACopyOntoItself)
{
    const std::wstring file = tree.File(L"file", "bytes");
    EXPECT_EQ(0, DoCopyComponentFileToDir(file, tree.Root()));
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    EXPECT_EQ("bytes", ReadFileBytes(file));
}

TEST_F(DoCopyComponentFileToDirTest, LockedFilesAreNotCopied)
{
    const std::wstring source = tree.File(L"file", "new");
    const std::wstring target = tree.File(LR"(dir\file)", "old");
    {
        const FileLockerProcess locked(source, GENERIC_READ, kShareNothing);
        EXPECT_EQ(0, DoCopyComponentFileToDir(source, tree.Path(L"dir")));
    }
    {
        const FileLockerProcess locked(target, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_EQ(0, DoCopyComponentFileToDir(source, tree.Path(L"dir")));
    }
    EXPECT_EQ("old", ReadFileBytes(target));
    EXPECT_EQ(1, DoCopyComponentFileToDir(source, tree.Path(L"dir")));
    EXPECT_EQ("new", ReadFileBytes(target));
}

TEST_F(DoCopyComponentFileToDirTest, EmptySourceIsReportedWhenThereIsAnErrorToReport)
{
    EXPECT_EQ(0, DoCopyComponentFileToDir(L"", tree.Path(L"new")));
    EXPECT_EQ(StringList(), host.Lines());
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFileToDir(L"", tree.Path(L"new")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
}

TEST_F(DoCopyComponentFileToDirTest, RejectedPathsAreReportedOnce)
{
    const std::wstring source = tree.File(L"source");
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFileToDir(tree.Path(L"a*b"), tree.Path(L"new")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    host.Clear();
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFileToDir(source, tree.Path(L"a*b")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
}

TEST_F(DoCopyComponentFileToDirTest, MissingSourceGivesZeroWithoutALogLineOrADirectory)
{
    EXPECT_EQ(0, DoCopyComponentFileToDir(tree.Path(L"missing"), tree.Path(L"new")));
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
    EXPECT_EQ(StringList(), host.Lines());
}
