// Large copies, many calls, and texts that are no paths.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/ThrowingHost.h"
#include "tests/support/WorkingDirectory.h"

#include <cerrno>
#include <functional>
#include <random>

namespace {

constexpr unsigned kSeed = 20240612;

// Texts of path characters and others, some of them very long.
std::wstring AnyText(std::mt19937& random)
{
    static const StringList pieces = {
        L"\\",      L"/",      L"\\\\",   L":",      L"C:",
        L"D:\\",    L"..",     L"..\\",   L".",      L"*",
        L"?",       L"a",      L"b.c",    L" ",      L"|",
        L"<>\"",    L"%",      L"con",    L"nul",    L"\\\\?\\",
        L"\t",      L"\u00e9", L"\u0416", L"\xD83D", L"\\\\alpha\\data\\",
        L"\\\\.\\", L"~1",     L"$",      L"f:s",    std::wstring(1, L'\0'),
    };
    std::wstring text;
    const auto count = random() % 12;
    for (unsigned i = 0; i < count; ++i) {
        text += pieces[random() % pieces.size()];
    }
    if (random() % 20 == 0) {
        text += std::wstring(random() % 40000, L'x');
    }
    return text;
}

int __cdecl MakeNothing(const wchar_t* /*directory*/)
{
    errno = EACCES;
    ::SetLastError(ERROR_ACCESS_DENIED);
    return -1;
}

HANDLE WINAPI OpenNothing(LPCWSTR /*path*/, DWORD /*access*/, DWORD /*share*/, LPSECURITY_ATTRIBUTES /*security*/,
                          DWORD /*disposition*/, DWORD /*flags*/, HANDLE /*pattern*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

} // namespace

class FileOperationsStress : public LibraryTest {};

TEST_F(FileOperationsStress, CopiesALargeFileCompletely)
{
    constexpr std::size_t kSize = (std::size_t{64} << 20) + 1; // bytes
    const std::string bytes = SampleBytes(kSize, kSeed);
    const std::wstring source = tree.File(L"source", bytes);
    EXPECT_EQ(1, DoCopyComponentFile(source, tree.Path(L"target")));
    EXPECT_TRUE(bytes == ReadFileBytes(tree.Path(L"target")));
}

TEST_F(FileOperationsStress, CopiesManyFilesOfAllSizesAroundABlock)
{
    constexpr std::size_t kBlock = 8192; // bytes
    std::mt19937 random(kSeed);
    for (int i = 0; i < 200; ++i) {
        const std::size_t size = (1 + random() % 3) * kBlock - 2 + random() % 5;
        const std::string bytes = SampleBytes(size, random());
        const std::wstring source = tree.File(L"source", bytes);
        const std::wstring directory = tree.Path(L"d" + std::to_wstring(i % 7));
        ASSERT_EQ(1, DoCopyComponentFileToDir(source, directory)) << i;
        ASSERT_TRUE(bytes == ReadFileBytes(directory + L"\\source")) << "size " << size << ", seed " << kSeed;
    }
}

TEST_F(FileOperationsStress, ManyCallsLeaveNoMemoryBehind)
{
    const ThrowingHost silent; // takes no memory, and throws nothing unless asked to
    tree.Files({L"file", LR"(a\another file with a name of its own)"});
    std::wstring file = tree.Path(L"file");
    const std::wstring missing = tree.Path(L"missing and long enough to take memory of its own");
    const std::wstring copy = tree.Path(LR"(copies\one)");
    const std::wstring all = L"*";
    const auto callEverything = [&] {
        isDirectoryExists(tree.Root());
        isDirectoryExists(missing);
        isDirectoryReadWritable(tree.Root());
        RecursivelyCreateDirectory(copy);
        isFileExists(file);
        isFileExists(missing);
        IsCanReplaceFile(file);
        getFileSize(file);
        ListFilesFilter(tree.Root(), all, true);
        ListFilesFilter(missing, all, true);
        ListFilesFilterRecursive(tree.Root(), all, false);
        ListDirecoriesRecursive(tree.Root());
        DoCopyComponentFileToDir(file, copy);
        DoCopyComponentFile(file, file);
    };
    callEverything(); // the library keeps the memory of its longest error text
    int living = 0;
    {
        const MemoryFault counter;
        for (int i = 0; i < 50; ++i) {
            callEverything();
        }
        living = MemoryFault::LivingBlocks();
    }
    EXPECT_EQ(0, living);
}

// What would make or overwrite files is replaced, for the texts may name anything. No result is known beforehand but
// for the copies: the promise is to come back, with the current directory and all handles closed.
TEST_F(FileOperationsStress, SurvivesAnyText)
{
    std::mt19937 random(kSeed);
    const WorkingDirectory inside(tree.Root());
    const std::wstring before = CurrentDirectory();
    const ImportPatch unmakeable("_wmkdir", &MakeNothing);
    const ImportPatch unopenable("CreateFileW", &OpenNothing);
    const CapturedOutput output;
    for (int i = 0; i < 2000; ++i) {
        std::wstring text = AnyText(random);
        isDirectoryExists(text);
        isDirectoryReadWritable(text);
        RecursivelyCreateDirectory(text);
        isFileExists(text);
        IsCanReplaceFile(text);
        getFileSize(text);
        ListFilesFilter(text, L"nosuchfile", true);
        ListFilesFilter(tree.Root(), text, true);
        EXPECT_EQ(0, DoCopyComponentFile(text, AnyText(random)));
        EXPECT_EQ(0, DoCopyComponentFileToDir(text, AnyText(random)));
        ASSERT_EQ(before, CurrentDirectory()) << Utf8(text) << ", seed " << kSeed;
    }
}
