// Existence and replaceability of files.

#include "tests/support/FileLockerTest.h"
#include "tests/support/WorkingDirectory.h"

#include <cerrno>

namespace {

constexpr DWORD kShareNothing = 0;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

bool CanReplace(std::wstring path)
{
    const std::wstring before = path;
    const bool can = IsCanReplaceFile(path);
    EXPECT_EQ(before, path) << "the argument stays";
    return can;
}

} // namespace

class IsFileExistsTest : public FileLockerTest {};

TEST_F(IsFileExistsTest, TellsReadableFilesFromEverythingElse)
{
    const std::wstring file = tree.File(LR"(dir\file.txt)");
    std::wstring slashes = file;
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    const struct {
        std::wstring path;
        bool exists;
        const char* why;
    } cases[] = {
        {file, true, "a file"},
        {slashes, true, "forward slashes are separators, too"},
        {tree.Path(LR"(DIR\FILE.TXT)"), true, "names have no case"},
        {LR"(\\?\)" + file, true, "the extended-length form"},
        {tree.File(L"empty", ""), true, "an empty file"},
        {tree.File(L"\u00e9\u0416\U0001F600"), true, "a name of any script"},
        {file + L"\\", false, "a file has no backslash at its end"},
        {tree.Path(L"dir"), false, "a directory cannot be read"},
        {tree.Path(L"missing"), false, "nothing there"},
        {tree.Path(LR"(missing\file)"), false, "not even the parent"},
        {L"C:\\", false, "the root of a volume"},
    };
    for (const auto& [path, exists, why] : cases) {
        EXPECT_EQ(exists, isFileExists(path)) << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsFileExistsTest, TakesRelativePathsFromTheCurrentDirectory)
{
    tree.Files({L"top", LR"(dir\file)", LR"(dir\sub\file2)"});
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_TRUE(isFileExists(L"file"));
    EXPECT_TRUE(isFileExists(LR"(sub\file2)"));
    EXPECT_TRUE(isFileExists(LR"(..\top)"));
    EXPECT_TRUE(isFileExists(tree.Path(L"top").substr(2))) << "rooted: on the current drive";
    EXPECT_FALSE(isFileExists(L"top"));
}

TEST_F(IsFileExistsTest, FindsFilesOfSharesAndOtherVolumes)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const TestDirectory other(L"D:\\");
    EXPECT_TRUE(isFileExists(share.File(L"file")));
    EXPECT_TRUE(isFileExists(other.File(L"file")));
    EXPECT_FALSE(isFileExists(share.Path(L"fil?"))) << "a share's path is not validated, but names no file either";
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsFileExistsTest, FileThatIsHeldExistsOnlyForThoseItIsSharedWith)
{
    const std::wstring file = tree.File(L"file");
    {
        const LockedFile locked(file, GENERIC_READ, kShareNothing);
        EXPECT_FALSE(isFileExists(file));
        EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    }
    {
        const FileLockerProcess locked(file, GENERIC_READ, kShareNothing);
        EXPECT_FALSE(isFileExists(file));
    }
    {
        const FileLockerProcess locked(file, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_TRUE(isFileExists(file));
    }
    EXPECT_TRUE(isFileExists(file));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsFileExistsTest, LeavesTheErrorsOfTheAttempt)
{
    errno = 0;
    EXPECT_FALSE(isFileExists(tree.Path(L"missing")));
    EXPECT_EQ(ENOENT, errno);
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    errno = 0;
    EXPECT_FALSE(isFileExists(tree.Directory(L"dir")));
    EXPECT_EQ(EACCES, errno);
}

TEST_F(IsFileExistsTest, EmptyPathIsReportedWhenThereIsAnErrorToReport)
{
    EXPECT_FALSE(isFileExists(L""));
    EXPECT_EQ(StringList(), host.Lines());
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isFileExists(L""));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.LinesAt(0));
}

TEST_F(IsFileExistsTest, RejectedPathIsReportedOnce)
{
    for (const wchar_t* name : {L"a*b", L"a?.txt", L"a.t:xt", LR"(a*\b)"}) {
        host.Clear();
        ::SetLastError(ERROR_ACCESS_DENIED);
        EXPECT_FALSE(isFileExists(tree.Path(name))) << Utf8(name);
        EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines()) << Utf8(name);
    }
}

class IsFileExistsSnapTest : public LibraryTest {
protected:
    static bool Exists(const std::wstring& path)
    {
        std::string narrow(path.begin(), path.end()); // the test's paths have no characters beyond Latin-1
        return IsFileExistsSnap(narrow.data());
    }
};

TEST_F(IsFileExistsSnapTest, NoPathCountsAsPresent)
{
    EXPECT_TRUE(IsFileExistsSnap(nullptr));
}

TEST_F(IsFileExistsSnapTest, AsksForAttributesAlone)
{
    const std::wstring file = tree.File(L"file");
    const LockedFile locked(file, GENERIC_READ | GENERIC_WRITE, kShareNothing);
    EXPECT_TRUE(Exists(file)) << "a held file has attributes";
    EXPECT_TRUE(Exists(tree.Directory(L"dir"))) << "so has a directory";
    EXPECT_TRUE(Exists(tree.File(L"caf\u00e9"))) << "the path is in the ANSI code page";
    EXPECT_FALSE(Exists(tree.Path(L"missing")));
    EXPECT_FALSE(Exists(L""));
    EXPECT_FALSE(Exists(tree.Path(L"fil*")));
    EXPECT_EQ(StringList(), host.Lines());
}

class IsCanReplaceFileTest : public FileLockerTest {};

TEST_F(IsCanReplaceFileTest, MissingFileCanBeReplaced)
{
    EXPECT_TRUE(CanReplace(tree.Path(L"missing")));
    EXPECT_TRUE(CanReplace(tree.Path(LR"(missing\file)")));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsCanReplaceFileTest, FreeFileCanBeReplacedAndStaysAsItIs)
{
    const std::wstring file = tree.File(L"file", "content");
    EXPECT_TRUE(CanReplace(file));
    EXPECT_EQ("content", ReadFileBytes(file));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsCanReplaceFileTest, FileThatAnyOtherHandleHoldsCannotBeReplaced)
{
    const std::wstring file = tree.File(L"file");
    const struct {
        DWORD access;
        DWORD share;
        const char* why;
    } cases[] = {
        {GENERIC_READ, kShareNothing, "the read-only open is rejected already"},
        {GENERIC_WRITE, kShareNothing, "the same for a writer"},
        {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE, "readers alone are kept out"},
        {GENERIC_READ, FILE_SHARE_READ, "it can be read, but not written"},
        {GENERIC_READ, kShareAll, "it could be written, but not alone"},
        {GENERIC_WRITE, FILE_SHARE_READ, "another one writes"},
    };
    for (const auto& [access, share, why] : cases) {
        {
            const LockedFile locked(file, access, share);
            EXPECT_FALSE(CanReplace(file)) << why;
            EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError()) << why;
        }
        {
            const FileLockerProcess locked(file, access, share);
            EXPECT_FALSE(CanReplace(file)) << why << ", from a second process";
        }
        EXPECT_TRUE(CanReplace(file)) << "afterwards: " << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsCanReplaceFileTest, HandleThatOnlyAsksForAttributesDoesNotHoldAFile)
{
    const std::wstring file = tree.File(L"file");
    const LockedFile asking(file, 0, kShareAll);
    EXPECT_TRUE(CanReplace(file));
}

TEST_F(IsCanReplaceFileTest, WhatCannotBeReadAsAFileCountsAsMissing)
{
    EXPECT_TRUE(CanReplace(tree.Directory(L"dir")));
    EXPECT_TRUE(CanReplace(tree.Path(L"a*b"))) << "nor does a rejected path name one";
}

// The attributes are asked for first, and their failure is what the report finds.
TEST_F(IsCanReplaceFileTest, EmptyPathIsReportedAndTrue)
{
    ASSERT_EQ(INVALID_FILE_ATTRIBUTES, ::GetFileAttributesW(L""));
    const DWORD error = ::GetLastError();
    EXPECT_TRUE(CanReplace(L""));
    EXPECT_EQ(ReportLines(error), host.Lines());
}

TEST_F(IsCanReplaceFileTest, WorksOnRelativePathsSharesAndOtherVolumes)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const TestDirectory other(L"D:\\");
    tree.File(L"file");
    const WorkingDirectory inside(tree.Root());
    for (const std::wstring& file : {std::wstring(L"file"), share.File(L"file"), other.File(L"file")}) {
        EXPECT_TRUE(CanReplace(file)) << Utf8(file);
        const LockedFile locked(file, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_FALSE(CanReplace(file)) << Utf8(file);
    }
}
