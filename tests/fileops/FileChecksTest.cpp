// Existence, replaceability and size of files.

#include "tests/support/HolderTest.h"
#include "tests/support/WorkingDirectory.h"

#include <winioctl.h>

#include <cerrno>

namespace {

constexpr DWORD kShareNothing = 0;
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// Gives a file a size without filling it.
void MakeSparse(const std::wstring& path, std::int64_t size)
{
    const HANDLE file = ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file);
    DWORD returned = 0;
    ::DeviceIoControl(file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    EXPECT_TRUE(::SetFilePointerEx(file, end, nullptr, FILE_BEGIN));
    EXPECT_TRUE(::SetEndOfFile(file));
    ::CloseHandle(file);
}

bool CanReplace(std::wstring path)
{
    const std::wstring before = path;
    const bool can = IsCanReplaceFile(path);
    EXPECT_EQ(before, path) << "the argument stays";
    return can;
}

std::int64_t SizeOf(std::wstring path)
{
    const std::wstring before = path;
    const std::int64_t size = getFileSize(path);
    EXPECT_EQ(before, path) << "the argument stays";
    return size;
}

} // namespace

class IsFileExistsTest : public HolderTest {};

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
        const HeldFile held(file, GENERIC_READ, kShareNothing);
        EXPECT_FALSE(isFileExists(file));
        EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError());
    }
    {
        const HolderProcess held(file, GENERIC_READ, kShareNothing);
        EXPECT_FALSE(isFileExists(file));
    }
    {
        const HolderProcess held(file, GENERIC_READ, FILE_SHARE_READ);
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

TEST_F(IsFileExistsTest, RefusedPathIsReportedOnce)
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
    const HeldFile held(file, GENERIC_READ | GENERIC_WRITE, kShareNothing);
    EXPECT_TRUE(Exists(file)) << "a held file has attributes";
    EXPECT_TRUE(Exists(tree.Directory(L"dir"))) << "so has a directory";
    EXPECT_TRUE(Exists(tree.File(L"caf\u00e9"))) << "the path is in the ANSI code page";
    EXPECT_FALSE(Exists(tree.Path(L"missing")));
    EXPECT_FALSE(Exists(L""));
    EXPECT_FALSE(Exists(tree.Path(L"fil*")));
    EXPECT_EQ(StringList(), host.Lines());
}

class IsCanReplaceFileTest : public HolderTest {};

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
        {GENERIC_READ, kShareNothing, "the read-only open is refused already"},
        {GENERIC_WRITE, kShareNothing, "the same for a writer"},
        {GENERIC_READ | GENERIC_WRITE, FILE_SHARE_WRITE, "readers alone are kept out"},
        {GENERIC_READ, FILE_SHARE_READ, "it can be read, but not written"},
        {GENERIC_READ, kShareAll, "it could be written, but not alone"},
        {GENERIC_WRITE, FILE_SHARE_READ, "another one writes"},
    };
    for (const auto& [access, share, why] : cases) {
        {
            const HeldFile held(file, access, share);
            EXPECT_FALSE(CanReplace(file)) << why;
            EXPECT_EQ(DWORD{ERROR_SHARING_VIOLATION}, ::GetLastError()) << why;
        }
        {
            const HolderProcess held(file, access, share);
            EXPECT_FALSE(CanReplace(file)) << why << ", from a second process";
        }
        EXPECT_TRUE(CanReplace(file)) << "afterwards: " << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsCanReplaceFileTest, HandleThatOnlyAsksForAttributesDoesNotHoldAFile)
{
    const std::wstring file = tree.File(L"file");
    const HeldFile asking(file, 0, kShareAll);
    EXPECT_TRUE(CanReplace(file));
}

TEST_F(IsCanReplaceFileTest, WhatCannotBeReadAsAFileCountsAsMissing)
{
    EXPECT_TRUE(CanReplace(tree.Directory(L"dir")));
    EXPECT_TRUE(CanReplace(tree.Path(L"a*b"))) << "nor does a refused path name one";
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
        const HeldFile held(file, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_FALSE(CanReplace(file)) << Utf8(file);
    }
}

class GetFileSizeTest : public LibraryTest {};

TEST_F(GetFileSizeTest, CountsBytes)
{
    EXPECT_EQ(0, SizeOf(tree.File(L"empty", "")));
    EXPECT_EQ(1, SizeOf(tree.File(L"one", "1")));
    EXPECT_EQ(100000, SizeOf(tree.File(L"many", SampleBytes(100000))));
}

TEST_F(GetFileSizeTest, CountsBeyondFourGibibytes)
{
    constexpr std::int64_t kGibibyte = std::int64_t{1} << 30;
    for (const std::int64_t size : {2 * kGibibyte, 4 * kGibibyte - 1, 4 * kGibibyte, 5 * kGibibyte + 12345}) {
        const std::wstring file = tree.Path(L"sparse");
        MakeSparse(file, size);
        EXPECT_EQ(size, SizeOf(file));
        ::DeleteFileW(file.c_str());
    }
}

TEST_F(GetFileSizeTest, IsZeroForWhatHasNoSize)
{
    EXPECT_EQ(0, SizeOf(tree.Path(L"missing")));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
    EXPECT_EQ(0, SizeOf(L""));
    EXPECT_EQ(0, SizeOf(tree.Path(L"a*b")));
    EXPECT_EQ(0, SizeOf(tree.Directory(L"dir")));
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(GetFileSizeTest, AsksWithoutOpeningTheFileForReading)
{
    const std::wstring file = tree.File(L"file", "12345");
    const HeldFile held(file, GENERIC_READ | GENERIC_WRITE, kShareNothing);
    EXPECT_EQ(5, SizeOf(file));
}

TEST_F(GetFileSizeTest, WorksOnRelativePathsSharesAndOtherVolumes)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const TestDirectory other(L"D:\\");
    tree.File(LR"(dir\file)", "1");
    const WorkingDirectory inside(tree.Path(L"dir"));
    EXPECT_EQ(1, SizeOf(L"file"));
    EXPECT_EQ(2, SizeOf(share.File(L"file", "12")));
    EXPECT_EQ(3, SizeOf(other.File(L"file", "123")));
    EXPECT_EQ(3, SizeOf(LR"(\\?\)" + other.Path(L"file")));
}
