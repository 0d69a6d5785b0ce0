// Sizes of files.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <winioctl.h>

namespace {

// Sets the size of a file without filling it.
void MakeSparse(const std::wstring& path, std::int64_t size)
{
    const UniqueHandle file(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr));
    ASSERT_NE(INVALID_HANDLE_VALUE, file.get());
    DWORD returned = 0;
    ::DeviceIoControl(file.get(), FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &returned, nullptr);
    LARGE_INTEGER end = {};
    end.QuadPart = size;
    EXPECT_TRUE(::SetFilePointerEx(file.get(), end, nullptr, FILE_BEGIN));
    EXPECT_TRUE(::SetEndOfFile(file.get()));
}

std::int64_t SizeOf(std::wstring path)
{
    const std::wstring before = path;
    const std::int64_t size = getFileSize(path);
    EXPECT_EQ(before, path) << "the argument stays";
    return size;
}

} // namespace

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
    const LockedFile locked(file, GENERIC_READ | GENERIC_WRITE, 0);
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
