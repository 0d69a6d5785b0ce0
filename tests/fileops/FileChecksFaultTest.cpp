// File checks when Windows or the runtime library fails, and what exactly they ask. All of these are simulations:
// single imports of the library are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"

#include <io.h>

#include <cerrno>

namespace {

int g_openErrno;
DWORD g_openError;

int __cdecl FailToOpen(const wchar_t* /*path*/, int /*flags*/, ...)
{
    errno = g_openErrno;
    ::SetLastError(g_openError);
    return -1;
}

int __cdecl OpenAndRecord(const wchar_t* path, int flags, ...)
{
    CallLog::Add(std::wstring(L"_wopen ") + path + L" " + std::to_wstring(flags));
    return ::_wopen(path, flags);
}

int __cdecl CloseAndRecord(int file)
{
    CallLog::Add(L"_close");
    return ::_close(file);
}

HANDLE WINAPI FailToCreate(LPCWSTR /*path*/, DWORD /*access*/, DWORD /*share*/, LPSECURITY_ATTRIBUTES /*security*/,
                           DWORD /*disposition*/, DWORD /*flags*/, HANDLE /*pattern*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

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

DWORD g_attributes;

DWORD WINAPI ScriptedAttributes(LPCWSTR path)
{
    CallLog::Add(std::wstring(L"GetFileAttributesW ") + path);
    return g_attributes;
}

BOOL WINAPI CloseHandleAndRecord(HANDLE handle)
{
    CallLog::Add(L"CloseHandle");
    return ::CloseHandle(handle);
}

} // namespace

class FileChecksFault : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        CallLog::Take();
    }
};

using IsFileExistsFault = FileChecksFault;

TEST_F(IsFileExistsFault, OpensReadOnlyAndCloses)
{
    const std::wstring file = tree.File(L"file");
    const ImportPatch opening("_wopen", &OpenAndRecord);
    const ImportPatch closing("_close", &CloseAndRecord);
    EXPECT_TRUE(isFileExists(file));
    EXPECT_EQ((StringList{L"_wopen " + file + L" 0", L"_close"}), CallLog::Take());
    EXPECT_FALSE(isFileExists(tree.Path(L"missing")));
    EXPECT_EQ((StringList{L"_wopen " + tree.Path(L"missing") + L" 0"}), CallLog::Take());
}

TEST_F(IsFileExistsFault, FileThatMayNotBeReadDoesNotExist)
{
    const std::wstring file = tree.File(L"file");
    const ImportPatch denied("_wopen", &FailToOpen);
    g_openErrno = EACCES;
    g_openError = ERROR_ACCESS_DENIED;
    errno = 0;
    EXPECT_FALSE(isFileExists(file));
    EXPECT_EQ(EACCES, errno);
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(StringList(), host.Lines());
}

using IsCanReplaceFileFault = FileChecksFault;

TEST_F(IsCanReplaceFileFault, AsksForAttributesThenExistenceThenOpensAlone)
{
    std::wstring file = tree.File(L"file");
    const ImportPatch attributes("GetFileAttributesW", &ScriptedAttributes);
    const ImportPatch opening("_wopen", &OpenAndRecord);
    const ImportPatch creating("CreateFileW", &CreateAndRecord);
    const ImportPatch closing("CloseHandle", &CloseHandleAndRecord);
    const struct {
        DWORD attributes;
        const wchar_t* flags;
        const char* why;
    } cases[] = {
        {FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN, L"0x22", "its own attributes are the flags"},
        {INVALID_FILE_ATTRIBUTES, L"0x0", "unless they could not be read"},
        {0, L"0x0", "none at all"},
    };
    for (const auto& [value, flags, why] : cases) {
        g_attributes = value;
        EXPECT_TRUE(IsCanReplaceFile(file)) << why;
        const StringList expected = {
            L"GetFileAttributesW " + file,
            L"_wopen " + file + L" 0",
            L"CreateFileW " + file + L" access 0x40000000 share 0 disposition 3 flags " + flags,
            L"CloseHandle",
        };
        EXPECT_EQ(expected, CallLog::Take()) << why;
    }
}

TEST_F(IsCanReplaceFileFault, PathIsOpenedAsItIsGiven)
{
    std::wstring file = tree.File(L"file");
    std::wstring slashes = file;
    std::replace(slashes.begin(), slashes.end(), L'\\', L'/');
    const std::wstring given = slashes;
    const ImportPatch opening("_wopen", &OpenAndRecord);
    const ImportPatch creating("CreateFileW", &CreateAndRecord);
    EXPECT_TRUE(IsCanReplaceFile(slashes));
    EXPECT_EQ(given, slashes) << "the argument stays";
    const StringList calls = CallLog::Take();
    ASSERT_EQ(2U, calls.size());
    EXPECT_EQ(L"_wopen " + file + L" 0", calls[0]) << "existence is a question to the validated path";
    EXPECT_TRUE(calls[1].starts_with(L"CreateFileW " + given)) << Utf8(calls[1]);
}

TEST_F(IsCanReplaceFileFault, FileThatMayNotBeWrittenCannotBeReplaced)
{
    std::wstring file = tree.File(L"file");
    const ImportPatch denied("CreateFileW", &FailToCreate);
    EXPECT_FALSE(IsCanReplaceFile(file));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
    EXPECT_EQ(StringList(), host.Lines());
}

TEST_F(IsCanReplaceFileFault, OnlyASharingViolationOfTheReaderMeansInUse)
{
    std::wstring file = tree.File(L"file");
    const ImportPatch rejected("_wopen", &FailToOpen);
    const struct {
        int errnoCode;
        DWORD error;
        bool replaceable;
        const char* why;
    } cases[] = {
        {EACCES, ERROR_SHARING_VIOLATION, false, "another handle holds it"},
        {EACCES, ERROR_ACCESS_DENIED, true, "it may not be read"},
        {EACCES, ERROR_LOCK_VIOLATION, true, "a locked range does not prevent an open"},
        {ENOENT, ERROR_FILE_NOT_FOUND, true, "it is missing"},
        {EMFILE, ERROR_SHARING_VIOLATION, true, "the runtime is out of descriptors: the last error is an old one"},
    };
    for (const auto& [errnoCode, error, replaceable, why] : cases) {
        g_openErrno = errnoCode;
        g_openError = error;
        EXPECT_EQ(replaceable, IsCanReplaceFile(file)) << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}

// Without a descriptor nothing was learnt about the file: opening it for writing decides.
TEST_F(IsCanReplaceFileFault, MissingDescriptorIsNoAnswerAboutTheFile)
{
    std::wstring file = tree.File(L"file");
    const ImportPatch open("_wopen", &FailToOpen);
    g_openErrno = EMFILE;
    g_openError = ERROR_SUCCESS;
    EXPECT_TRUE(IsCanReplaceFile(file));
    const LockedFile locked(file, GENERIC_READ, 0);
    EXPECT_FALSE(IsCanReplaceFile(file));
}

// The question for attributes may meet a file that Windows itself holds; that says nothing about a rejected path.
TEST_F(IsCanReplaceFileFault, RejectedPathIsNotInUseWhateverTheLastErrorIs)
{
    const ImportPatch held(
        "GetFileAttributesW", +[](LPCWSTR /*path*/) -> DWORD {
            ::SetLastError(ERROR_SHARING_VIOLATION);
            return INVALID_FILE_ATTRIBUTES;
        });
    for (std::wstring path : {tree.Path(L"a*b"), std::wstring()}) {
        host.Clear();
        EXPECT_TRUE(IsCanReplaceFile(path)) << Utf8(path);
        EXPECT_EQ(ReportLines(ERROR_SHARING_VIOLATION), host.Lines()) << Utf8(path);
    }
}

class GetFileSizeFault : public LibraryTest {
protected:
    static std::int64_t SizeFrom(DWORD high, DWORD low)
    {
        s_high = high;
        s_low = low;
        const ImportPatch sized(
            "GetFileAttributesExW", +[](LPCWSTR /*path*/, GET_FILEEX_INFO_LEVELS level, LPVOID record) -> BOOL {
                EXPECT_EQ(0, level);
                auto* data = static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(record);
                data->nFileSizeHigh = s_high;
                data->nFileSizeLow = s_low;
                return TRUE;
            });
        std::wstring path = L"anything";
        return getFileSize(path);
    }

private:
    inline static DWORD s_high = 0;
    inline static DWORD s_low = 0;
};

TEST_F(GetFileSizeFault, JoinsBothWordsWithoutSpreadingTheLowOnesSign)
{
    EXPECT_EQ(0x80000000LL, SizeFrom(0, 0x80000000U));
    EXPECT_EQ(0x1FFFFFFFFLL, SizeFrom(1, 0xFFFFFFFFU));
    EXPECT_EQ(0x7FFFFFFFFFFFFFFFLL, SizeFrom(0x7FFFFFFFU, 0xFFFFFFFFU));
    EXPECT_EQ(-1, SizeFrom(0xFFFFFFFFU, 0xFFFFFFFFU)) << "a signed number";
}

TEST_F(GetFileSizeFault, FailedQueryIsZeroWhateverItLeftBehind)
{
    const ImportPatch failing(
        "GetFileAttributesExW", +[](LPCWSTR /*path*/, GET_FILEEX_INFO_LEVELS /*level*/, LPVOID record) -> BOOL {
            static_cast<WIN32_FILE_ATTRIBUTE_DATA*>(record)->nFileSizeLow = 77;
            ::SetLastError(ERROR_ACCESS_DENIED);
            return FALSE;
        });
    std::wstring path = tree.File(L"file");
    EXPECT_EQ(0, getFileSize(path));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}
