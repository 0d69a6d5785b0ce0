// Copies of one file to a path whose directory is created first.

#include "tests/fileops/FileCopyFixture.h"

class DoCopyComponentFileTest : public FileLockerTest {};

TEST_F(DoCopyComponentFileTest, GivesTheSameBytesWhateverTheSize)
{
    for (const std::size_t size : {std::size_t{0}, std::size_t{1}, kBlock - 1, kBlock, kBlock + 1, 2 * kBlock,
                                   3 * kBlock + 77, std::size_t{1} << 20}) {
        const std::string bytes = SampleBytes(size, static_cast<unsigned>(size));
        const std::wstring target = tree.Path(L"target");
        EXPECT_EQ(1, DoCopyComponentFile(tree.File(L"source", bytes), target)) << size;
        EXPECT_TRUE(PathExists(target)) << size;
        EXPECT_TRUE(bytes == ReadFileBytes(target)) << size;
        ::DeleteFileW(target.c_str());
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(DoCopyComponentFileTest, OverwritesAndTruncatesTheTarget)
{
    const std::wstring target = tree.File(L"target", SampleBytes(3 * kBlock));
    EXPECT_EQ(1, DoCopyComponentFile(tree.File(L"source", "short"), target));
    EXPECT_EQ("short", ReadFileBytes(target));
    EXPECT_EQ(1, DoCopyComponentFile(tree.File(L"empty", ""), target));
    EXPECT_EQ("", ReadFileBytes(target));
}

TEST_F(DoCopyComponentFileTest, MakesTheWholeDirectoryChainFirst)
{
    const std::wstring target = tree.Path(LR"(a\b\c\target)");
    EXPECT_EQ(1, DoCopyComponentFile(tree.File(L"source", "bytes"), target));
    EXPECT_EQ("bytes", ReadFileBytes(target));
}

TEST_F(DoCopyComponentFileTest, TakesEverySpellingOfAPath)
{
    const std::wstring source = tree.File(LR"(from\source)", "bytes");
    const WorkingDirectory inside(tree.Path(L"from"));
    const struct {
        std::wstring source;
        std::wstring target;
        std::wstring written;
        const char* why;
    } cases[] = {
        {WithForwardSlashes(source), WithForwardSlashes(tree.Path(L"out/1")), tree.Path(LR"(out\1)"),
         "forward slashes"},
        {L"source", LR"(out\2)", tree.Path(LR"(from\out\2)"), "relative to the current directory"},
        {L"source", L"3", tree.Path(LR"(from\3)"), "a name alone"},
        {source.substr(2), tree.Path(L"4").substr(2), tree.Path(L"4"), "rooted, without a drive"},
        {LR"(\\?\)" + source, LR"(\\?\)" + tree.Path(LR"(out\5)"), tree.Path(LR"(out\5)"), "extended length"},
        {source, tree.Path(LR"(out\\6)"), tree.Path(LR"(out\6)"), "a doubled backslash"},
        {source, tree.Path(L"\u00e9\\\u0416\U0001F600"), tree.Path(L"\u00e9\\\u0416\U0001F600"), "any script"},
    };
    for (const auto& [from, to, written, why] : cases) {
        EXPECT_EQ(1, DoCopyComponentFile(from, to)) << why;
        EXPECT_EQ("bytes", ReadFileBytes(written)) << why;
    }
}

TEST_F(DoCopyComponentFileTest, CopiesBetweenVolumesAndShares)
{
    const TestDirectory alpha(LR"(\\alpha\data\)");
    const TestDirectory beta(LR"(\\beta\data\)");
    const TestDirectory other(L"D:\\");
    const std::string bytes = SampleBytes(kBlock + 1);
    EXPECT_EQ(1, DoCopyComponentFile(tree.File(L"source", bytes), alpha.Path(LR"(x\y\f)")));
    EXPECT_EQ(1, DoCopyComponentFile(alpha.Path(LR"(x\y\f)"), beta.Path(LR"(x\f)")));
    EXPECT_EQ(1, DoCopyComponentFile(beta.Path(LR"(x\f)"), other.Path(LR"(x\f)")));
    EXPECT_EQ(1, DoCopyComponentFile(other.Path(LR"(x\f)"), other.Path(L"f")));
    EXPECT_TRUE(bytes == ReadFileBytes(other.Path(L"f")));
}

TEST_F(DoCopyComponentFileTest, CarriesOverNeitherTimesNorAttributes)
{
    const std::wstring source = tree.File(L"source");
    const std::wstring target = tree.Path(L"target");
    UniqueHandle file(::CreateFileW(source.c_str(), FILE_WRITE_ATTRIBUTES, 0, nullptr, OPEN_EXISTING, 0, nullptr));
    const FILETIME longAgo = {0, 0x01C00000}; // in the year 2000
    EXPECT_TRUE(::SetFileTime(file.get(), &longAgo, &longAgo, &longAgo));
    file.reset();
    ::SetFileAttributesW(source.c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_EQ(1, DoCopyComponentFile(source, target));
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    ASSERT_TRUE(::GetFileAttributesExW(target.c_str(), GetFileExInfoStandard, &data));
    EXPECT_EQ(0U, data.dwFileAttributes & FILE_ATTRIBUTE_READONLY);
    EXPECT_LT(longAgo.dwHighDateTime, data.ftLastWriteTime.dwHighDateTime);
}

TEST_F(DoCopyComponentFileTest, CopyOntoItselfFailsAndLosesNothing)
{
    const std::wstring file = tree.File(L"file", "bytes");
    EXPECT_EQ(0, DoCopyComponentFile(file, file));
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    EXPECT_EQ(0, DoCopyComponentFile(file, WithForwardSlashes(tree.Path(L"FILE")))) << "in another spelling, too";
    EXPECT_EQ("bytes", ReadFileBytes(file));
}

TEST_F(DoCopyComponentFileTest, LockedSourceIsNotCopied)
{
    const std::wstring source = tree.File(L"source");
    const std::wstring target = tree.Path(LR"(new\target)");
    for (const DWORD share : {kShareNothing, DWORD{FILE_SHARE_WRITE}}) {
        const FileLockerProcess locked(source, GENERIC_READ, share);
        EXPECT_EQ(0, DoCopyComponentFile(source, target));
        EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
        EXPECT_FALSE(PathExists(tree.Path(L"new"))) << "no directory is made for a source that cannot be read";
    }
    {
        const LockedFile locked(source, GENERIC_READ, kShareNothing);
        EXPECT_EQ(0, DoCopyComponentFile(source, target)) << "in this process, too";
    }
    EXPECT_EQ(1, DoCopyComponentFile(source, target));
    EXPECT_EQ(StringList(), host.Lines());
}

// A reader that lets others read passes the check for existence, but not the open without sharing.
TEST_F(DoCopyComponentFileTest, SourceThatAnyoneElseHasOpenIsNotCopied)
{
    const std::wstring source = tree.File(L"source");
    const std::wstring target = tree.Path(LR"(new\target)");
    const FileLockerProcess locked(source, GENERIC_READ, FILE_SHARE_READ);
    EXPECT_EQ(0, DoCopyComponentFile(source, target));
    EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    EXPECT_FALSE(PathExists(target));
    EXPECT_TRUE(PathExists(tree.Path(L"new"))) << "its directory was made already";
}

TEST_F(DoCopyComponentFileTest, LockedTargetIsNotWritten)
{
    const std::wstring source = tree.File(L"source", "new");
    const std::wstring target = tree.File(L"target", "old");
    for (const DWORD share : {kShareNothing, DWORD{FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE}}) {
        const FileLockerProcess locked(target, GENERIC_READ, share);
        EXPECT_EQ(0, DoCopyComponentFile(source, target));
        EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    }
    EXPECT_EQ("old", ReadFileBytes(target));
    EXPECT_EQ(StringList(), host.Lines());
    EXPECT_EQ(1, DoCopyComponentFile(source, target));
}

TEST_F(DoCopyComponentFileTest, MissingSourceGivesZeroWithoutALogLineOrADirectory)
{
    const std::wstring target = tree.Path(LR"(new\target)");
    EXPECT_EQ(0, DoCopyComponentFile(tree.Path(L"missing"), target));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    EXPECT_EQ(0, DoCopyComponentFile(tree.Directory(L"dir"), target)) << "nor is a directory copied";
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(DoCopyComponentFileTest, TargetThatCannotBeOpenedGivesZero)
{
    const std::wstring source = tree.File(L"source");
    EXPECT_EQ(0, DoCopyComponentFile(source, tree.Directory(L"dir"))) << "a directory";
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(0, DoCopyComponentFile(source, tree.Path(L"dir\\"))) << "no name";
    EXPECT_EQ(StringList(), host.Lines());
}

// The chain of directories counts as made: it shows only when the target cannot be opened.
TEST_F(DoCopyComponentFileTest, DirectoryThatCannotBeMadeGivesZero)
{
    tree.File(L"file");
    CapturedOutput output;
    EXPECT_EQ(0, DoCopyComponentFile(tree.File(L"source"), tree.Path(LR"(file\dir\target)")));
    EXPECT_EQ(DWORD{ERROR_PATH_NOT_FOUND}, ::GetLastError());
    EXPECT_EQ(0U, output.Text().find("Unable to locate the directory: "));
}

TEST_F(DoCopyComponentFileTest, EmptySourceIsReportedWhenThereIsAnErrorToReport)
{
    const std::wstring target = tree.Path(LR"(new\target)");
    EXPECT_EQ(0, DoCopyComponentFile(L"", target));
    EXPECT_EQ(StringList(), host.Lines());
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFile(L"", target));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
}

TEST_F(DoCopyComponentFileTest, RejectedSourceIsReportedOnce)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFile(tree.Path(L"a*b"), tree.Path(LR"(new\target)")));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines());
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
}

// Its directory and its name are asked for one after the other, and both questions are rejected.
TEST_F(DoCopyComponentFileTest, RejectedTargetIsReportedForDirectoryAndName)
{
    const std::wstring source = tree.File(L"source");
    const WorkingDirectory inside(tree.Directory(L"here"));
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ(0, DoCopyComponentFile(source, tree.Path(LR"(new\a*b)")));
    StringList expected = ReportLines(ERROR_ACCESS_DENIED);
    const StringList again = expected;
    expected.insert(expected.end(), again.begin(), again.end());
    EXPECT_EQ(expected, host.Lines());
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
    EXPECT_EQ(StringList(), ListFilesFilter(tree.Path(L"here"), L"*", false)) << "nothing lands where we are";
}

TEST_F(DoCopyComponentFileTest, RestoresTheCurrentDirectoryOnSuccessAndFailure)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const std::wstring source = tree.File(L"source");
    for (const std::wstring& from : {tree.Root(), share.Root()}) {
        const WorkingDirectory inside(from);
        const std::wstring before = CurrentDirectory();
        EXPECT_EQ(1, DoCopyComponentFile(source, tree.Path(LR"(a\b\target)")));
        EXPECT_EQ(before, CurrentDirectory());
        EXPECT_EQ(0, DoCopyComponentFile(source, tree.Path(LR"(a\b)")));
        EXPECT_EQ(before, CurrentDirectory());
    }
}
