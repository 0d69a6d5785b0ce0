// File copies when reading, writing or opening fails, and what exactly they ask. All of these are simulations: single
// imports of the library are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"

#include <cerrno>

namespace {

constexpr std::size_t kBlock = 8192; // bytes that a copy moves at a time

HANDLE WINAPI CreateAndRecord(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security,
                              DWORD disposition, DWORD flags, HANDLE pattern)
{
    wchar_t numbers[128] = {};
    ::wsprintfW(numbers, L" access 0x%X share %u disposition %u flags 0x%X", access, share, disposition, flags);
    CallLog::Add(std::wstring(L"CreateFileW ") + path + numbers);
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(nullptr, pattern);
    return ::CreateFileW(path, access, share, security, disposition, flags, pattern);
}

BOOL WINAPI CloseAndRecord(HANDLE handle)
{
    CallLog::Add(L"CloseHandle");
    ::SetLastError(ERROR_GEN_FAILURE); // not what a copy may leave behind
    return ::CloseHandle(handle);
}

BOOL WINAPI ReadAndRecord(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped)
{
    const BOOL succeeded = ::ReadFile(file, buffer, size, read, overlapped);
    CallLog::Add(L"ReadFile " + std::to_wstring(size) + L" gives " + std::to_wstring(*read));
    EXPECT_EQ(nullptr, overlapped);
    return succeeded;
}

BOOL WINAPI WriteAndRecord(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    CallLog::Add(L"WriteFile " + std::to_wstring(size));
    EXPECT_EQ(nullptr, overlapped);
    return ::WriteFile(file, buffer, size, written, overlapped);
}

// How the n-th call of the two functions below fails.
struct Failure {
    int call;       // from 1
    BOOL result;    // what it returns
    bool setsCount; // whether it writes the count that follows
    DWORD count;
    DWORD error;
};

Failure g_failure;
int g_calls;

BOOL WINAPI FailToRead(HANDLE file, LPVOID buffer, DWORD size, LPDWORD read, LPOVERLAPPED overlapped)
{
    if (++g_calls != g_failure.call) {
        return ::ReadFile(file, buffer, size, read, overlapped);
    }
    if (g_failure.setsCount) {
        *read = g_failure.count;
    }
    ::SetLastError(g_failure.error);
    return g_failure.result;
}

BOOL WINAPI FailToWrite(HANDLE file, LPCVOID buffer, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    if (++g_calls != g_failure.call) {
        return ::WriteFile(file, buffer, size, written, overlapped);
    }
    if (g_failure.setsCount) {
        ::WriteFile(file, buffer, std::min(size, g_failure.count), written, overlapped);
    }
    ::SetLastError(g_failure.error);
    return g_failure.result;
}

std::wstring g_rejected; // the path that may not be opened

HANDLE WINAPI FailOnePath(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD disposition,
                          DWORD flags, HANDLE pattern)
{
    if (path == g_rejected) {
        ::SetLastError(ERROR_ACCESS_DENIED);
        return INVALID_HANDLE_VALUE;
    }
    return ::CreateFileW(path, access, share, security, disposition, flags, pattern);
}

} // namespace

class FileCopyFault : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        source = tree.File(L"source", bytes);
        target = tree.Path(L"target");
        CallLog::Take();
        g_calls = 0;
    }

    // Lets one read of a copy fail.
    [[nodiscard]] int CopyWithReadFailure(const Failure& failure) const
    {
        g_failure = failure;
        g_calls = 0;
        const ImportPatch reading("ReadFile", &FailToRead);
        return DoCopyComponentFile(source, target);
    }

    [[nodiscard]] int CopyWithWriteFailure(const Failure& failure) const
    {
        g_failure = failure;
        g_calls = 0;
        const ImportPatch writing("WriteFile", &FailToWrite);
        return DoCopyComponentFile(source, target);
    }

    const std::string bytes = SampleBytes(3 * kBlock + 100);
    std::wstring source;
    std::wstring target;
};

TEST_F(FileCopyFault, OpensBothFilesAloneAndMovesBlocks)
{
    const ImportPatch opening("CreateFileW", &CreateAndRecord);
    const ImportPatch reading("ReadFile", &ReadAndRecord);
    const ImportPatch writing("WriteFile", &WriteAndRecord);
    const ImportPatch closing("CloseHandle", &CloseAndRecord);
    EXPECT_EQ(1, DoCopyComponentFile(source, target));
    const StringList expected = {
        L"CreateFileW " + source + L" access 0x80000000 share 0 disposition 3 flags 0x8000080",
        L"CreateFileW " + target + L" access 0x40000000 share 0 disposition 2 flags 0x8000080",
        L"ReadFile 8192 gives 8192",
        L"WriteFile 8192",
        L"ReadFile 8192 gives 8192",
        L"WriteFile 8192",
        L"ReadFile 8192 gives 8192",
        L"WriteFile 8192",
        L"ReadFile 8192 gives 100",
        L"WriteFile 100",
        L"ReadFile 8192 gives 0",
        L"CloseHandle",
        L"CloseHandle",
    };
    EXPECT_EQ(expected, CallLog::Take());
}

TEST_F(FileCopyFault, EmptyFileIsReadOnceAndNeverWritten)
{
    WriteFileBytes(source, "");
    const ImportPatch reading("ReadFile", &ReadAndRecord);
    const ImportPatch writing("WriteFile", &WriteAndRecord);
    EXPECT_EQ(1, DoCopyComponentFile(source, target));
    EXPECT_EQ((StringList{L"ReadFile 8192 gives 0"}), CallLog::Take());
}

TEST_F(FileCopyFault, ToADirectoryOpensAndMovesTheSame)
{
    const ImportPatch opening("CreateFileW", &CreateAndRecord);
    EXPECT_EQ(1, DoCopyComponentFileToDir(source, tree.Path(L"dir")));
    const StringList expected = {
        L"CreateFileW " + source + L" access 0x80000000 share 0 disposition 3 flags 0x8000080",
        L"CreateFileW " + tree.Path(LR"(dir\source)") + L" access 0x40000000 share 0 disposition 2 flags 0x8000080",
    };
    EXPECT_EQ(expected, CallLog::Take());
}

// A restore keeps what could be read. The target's size is the only sign.
TEST_F(FileCopyFault, ReadErrorEndsTheCopyAsASuccessWithAShortTarget)
{
    for (const int call : {1, 2, 4, 5}) {
        EXPECT_EQ(1, CopyWithReadFailure({call, FALSE, true, 0, ERROR_CRC})) << call;
        const std::size_t copied = std::min(bytes.size(), (static_cast<std::size_t>(call) - 1) * kBlock);
        EXPECT_TRUE(bytes.substr(0, copied) == ReadFileBytes(target)) << call;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(FileCopyFault, CountOfAFailedReadDoesNotMatter)
{
    EXPECT_EQ(1, CopyWithReadFailure({2, FALSE, true, kBlock, ERROR_CRC})) << "the block is not written";
    EXPECT_EQ(kBlock, ReadFileBytes(target).size());
    EXPECT_EQ(1, CopyWithReadFailure({2, FALSE, false, 0, ERROR_CRC})) << "nor that of the read before";
    EXPECT_EQ(kBlock, ReadFileBytes(target).size());
}

TEST_F(FileCopyFault, FailedWriteGivesZeroAndLeavesTheTarget)
{
    for (const int call : {1, 2, 4}) {
        EXPECT_EQ(0, CopyWithWriteFailure({call, FALSE, true, 0, ERROR_DISK_FULL})) << call;
        EXPECT_EQ(DWORD{ERROR_DISK_FULL}, ::GetLastError()) << call;
        EXPECT_TRUE(PathExists(target)) << "a target that is left behind is not deleted";
        EXPECT_EQ((static_cast<std::size_t>(call) - 1) * kBlock, ReadFileBytes(target).size());
    }
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(FileCopyFault, ShortWriteGivesZeroEvenIfItSucceeds)
{
    for (const DWORD count : {DWORD{0}, DWORD{1}, DWORD{kBlock - 1}}) {
        EXPECT_EQ(0, CopyWithWriteFailure({2, TRUE, true, count, ERROR_HANDLE_DISK_FULL})) << count;
        EXPECT_EQ(DWORD{ERROR_HANDLE_DISK_FULL}, ::GetLastError());
        EXPECT_EQ(kBlock + count, ReadFileBytes(target).size());
    }
}

TEST_F(FileCopyFault, WriteThatSetsNoCountHasWrittenNothing)
{
    for (const int call : {1, 2}) {
        EXPECT_EQ(0, CopyWithWriteFailure({call, FALSE, false, 0, ERROR_DISK_FULL})) << call;
    }
}

// The count decides, as it does for a short write.
TEST_F(FileCopyFault, WriteOfTheWholeBlockCountsWhateverItReturns)
{
    EXPECT_EQ(1, CopyWithWriteFailure({2, FALSE, true, kBlock, ERROR_IO_DEVICE}));
    EXPECT_TRUE(bytes == ReadFileBytes(target));
}

TEST_F(FileCopyFault, FailedCopyLeavesTheErrorOfTheFailingCall)
{
    const ImportPatch opening("CreateFileW", &FailOnePath);
    const ImportPatch closing("CloseHandle", &CloseAndRecord);
    g_rejected = source;
    EXPECT_EQ(0, DoCopyComponentFile(source, target));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(StringList(), CallLog::Take()) << "nothing was open";
    EXPECT_FALSE(PathExists(target)) << "the target is not touched";

    g_rejected = target;
    EXPECT_EQ(0, DoCopyComponentFile(source, target));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ((StringList{L"CloseHandle"}), CallLog::Take()) << "the source was";

    g_rejected.clear();
    EXPECT_EQ(0, CopyWithWriteFailure({1, FALSE, true, 0, ERROR_DISK_FULL}));
    EXPECT_EQ(DWORD{ERROR_DISK_FULL}, ::GetLastError());
    EXPECT_EQ((StringList{L"CloseHandle", L"CloseHandle"}), CallLog::Take());
    EXPECT_EQ(StringList(), host.Lines());
}

// The runtime's error number, here that of the directory that exists already, is what the library records of a failed
// copy. It shows when a later directory cannot be entered although it could be made.
TEST_F(FileCopyFault, FailedCopyRecordsTheRuntimesError)
{
    EXPECT_EQ(0, CopyWithWriteFailure({1, FALSE, true, 0, ERROR_DISK_FULL}));
    const ImportPatch made(
        "_wmkdir", +[](const wchar_t* /*directory*/) { return 0; });
    const ImportPatch unreachable(
        "_wchdir", +[](const wchar_t* /*directory*/) {
            errno = ENOENT;
            return -1;
        });
    const CapturedOutput output;
    RecursivelyCreateDirectory(tree.Path(L"dir"));
    EXPECT_EQ(static_cast<DWORD>(EEXIST), ::GetLastError());
}

TEST_F(FileCopyFault, SourceThatMayNotBeReadGivesZeroWithoutADirectory)
{
    const ImportPatch denied(
        "_wopen", +[](const wchar_t* /*path*/, int /*flags*/) {
            errno = EACCES;
            ::SetLastError(ERROR_ACCESS_DENIED);
            return -1;
        });
    EXPECT_EQ(0, DoCopyComponentFile(source, tree.Path(LR"(new\target)")));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(0, DoCopyComponentFileToDir(source, tree.Path(L"new")));
    EXPECT_FALSE(PathExists(tree.Path(L"new")));
    EXPECT_EQ(StringList(), host.Lines());
}
