// The check of a directory's access rights when Windows or the runtime library fails. All of these are simulations:
// single imports of the library are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"

namespace {

constexpr BOOL kSystemAnswers = -1;

// What the next call of each security function answers; kSystemAnswers asks Windows.
struct SecurityScript {
    BOOL size = kSystemAnswers;       // GetFileSecurityW without a buffer
    DWORD sizeError = 0;              // its last error, if it fails
    BOOL descriptor = kSystemAnswers; // GetFileSecurityW with one
    BOOL memory = TRUE;
    BOOL openToken = kSystemAnswers;
    BOOL duplicateToken = kSystemAnswers;
    BOOL accessCheck = kSystemAnswers;
    BOOL status = TRUE; // what a scripted access check finds
};

SecurityScript g_script;
HANDLE g_processToken;
HANDLE g_duplicate;

std::wstring Hex(unsigned long value)
{
    wchar_t text[16] = {};
    ::wsprintfW(text, L"0x%X", value);
    return text;
}

std::wstring TokenName(HANDLE token)
{
    if (token == nullptr) {
        return L"null";
    }
    return token == g_processToken ? L"process token" : token == g_duplicate ? L"duplicate" : L"another handle";
}

BOOL WINAPI ScriptedFileSecurity(LPCWSTR path, SECURITY_INFORMATION what, PSECURITY_DESCRIPTOR descriptor, DWORD length,
                                 LPDWORD needed)
{
    CallLog::Add(L"GetFileSecurityW " + std::to_wstring(what) + (length == 0 ? L" size" : L" descriptor"));
    const BOOL answer = length == 0 ? g_script.size : g_script.descriptor;
    if (answer == kSystemAnswers) {
        return ::GetFileSecurityW(path, what, descriptor, length, needed);
    }
    *needed = length == 0 ? 20 : length; // bytes
    ::SetLastError(g_script.sizeError);
    return answer;
}

void* __cdecl ScriptedMalloc(std::size_t size)
{
    CallLog::Add(L"malloc");
    return g_script.memory ? std::malloc(size) : nullptr;
}

void __cdecl RecordedFree(void* memory)
{
    if (memory != nullptr) {
        CallLog::Add(L"free");
    }
    std::free(memory);
}

BOOL WINAPI ScriptedOpenToken(HANDLE process, DWORD access, PHANDLE token)
{
    EXPECT_EQ(::GetCurrentProcess(), process);
    CallLog::Add(L"OpenProcessToken " + Hex(access));
    const BOOL opened =
        g_script.openToken == kSystemAnswers ? ::OpenProcessToken(process, access, token) : g_script.openToken;
    g_processToken = opened ? *token : nullptr;
    if (!opened) {
        ::SetLastError(ERROR_ACCESS_DENIED);
    }
    return opened;
}

BOOL WINAPI ScriptedDuplicate(HANDLE token, SECURITY_IMPERSONATION_LEVEL level, PHANDLE duplicate)
{
    CallLog::Add(L"DuplicateToken " + TokenName(token) + L" " + std::to_wstring(level));
    if (g_script.duplicateToken == kSystemAnswers) {
        const BOOL made = ::DuplicateToken(token, level, duplicate);
        g_duplicate = *duplicate;
        return made;
    }
    *duplicate = reinterpret_cast<HANDLE>(0xBAD0); // a failed call may leave anything
    ::SetLastError(ERROR_NO_TOKEN);
    return g_script.duplicateToken;
}

void WINAPI RecordedMapping(PDWORD mask, PGENERIC_MAPPING mapping)
{
    CallLog::Add(L"MapGenericMask " + Hex(*mask));
    ::MapGenericMask(mask, mapping);
}

BOOL WINAPI ScriptedAccessCheck(PSECURITY_DESCRIPTOR descriptor, HANDLE token, DWORD wanted, PGENERIC_MAPPING mapping,
                                PPRIVILEGE_SET privileges, LPDWORD length, LPDWORD granted, LPBOOL status)
{
    CallLog::Add(L"AccessCheck " + TokenName(token) + L" " + Hex(wanted));
    EXPECT_EQ(0x120089U, mapping->GenericRead);
    EXPECT_EQ(0x120116U, mapping->GenericWrite);
    EXPECT_EQ(0x1200A0U, mapping->GenericExecute);
    EXPECT_EQ(0x1F01FFU, mapping->GenericAll);
    EXPECT_EQ(20U, *length);
    EXPECT_EQ(0U, *granted);
    EXPECT_EQ(0, *status);
    const std::string_view bytes(reinterpret_cast<const char*>(privileges), *length);
    EXPECT_EQ(std::string_view::npos, bytes.find_first_not_of('\0')) << "the privilege set is zeroed";
    if (g_script.accessCheck == kSystemAnswers) {
        return ::AccessCheck(descriptor, token, wanted, mapping, privileges, length, granted, status);
    }
    *status = g_script.status;
    ::SetLastError(ERROR_INVALID_SECURITY_DESCR);
    return g_script.accessCheck;
}

BOOL WINAPI RecordedClose(HANDLE handle)
{
    CallLog::Add(L"CloseHandle " + TokenName(handle));
    return ::CloseHandle(handle);
}

} // namespace

class IsDirectoryReadWritableFault : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        CallLog::Take();
    }

    [[nodiscard]] bool Ask(const SecurityScript& script) const
    {
        g_script = script;
        const ImportPatch security("GetFileSecurityW", &ScriptedFileSecurity);
        const ImportPatch memory("malloc", &ScriptedMalloc);
        const ImportPatch release("free", &RecordedFree);
        const ImportPatch open("OpenProcessToken", &ScriptedOpenToken);
        const ImportPatch duplicate("DuplicateToken", &ScriptedDuplicate);
        const ImportPatch mapping("MapGenericMask", &RecordedMapping);
        const ImportPatch check("AccessCheck", &ScriptedAccessCheck);
        const ImportPatch close("CloseHandle", &RecordedClose);
        return isDirectoryReadWritable(tree.Root());
    }

    // Asks, and expects the last error to be `error` and these calls.
    void ExpectFalse(const SecurityScript& script, DWORD error, const StringList& calls) const
    {
        EXPECT_FALSE(Ask(script));
        EXPECT_EQ(error, ::GetLastError());
        EXPECT_EQ(calls, CallLog::Take());
        EXPECT_EQ(StringList(), host.Lines());
    }
};

TEST_F(IsDirectoryReadWritableFault, AsksTheAccessListAndGivesEverythingBackInReverse)
{
    EXPECT_TRUE(Ask({}));
    const StringList expected = {
        L"GetFileSecurityW 7 size",        L"malloc",
        L"GetFileSecurityW 7 descriptor",  L"OpenProcessToken 0x2000E",
        L"DuplicateToken process token 2", L"MapGenericMask 0xC0000000",
        L"AccessCheck duplicate 0x12019F", L"CloseHandle duplicate",
        L"CloseHandle process token",      L"free",
    };
    EXPECT_EQ(expected, CallLog::Take());
}

TEST_F(IsDirectoryReadWritableFault, DescriptorThatNeedsNoRoomIsNoAnswer)
{
    ExpectFalse({.size = TRUE}, 0, {L"GetFileSecurityW 7 size"});
}

TEST_F(IsDirectoryReadWritableFault, UnreadableDescriptorIsFalse)
{
    ExpectFalse({.size = FALSE, .sizeError = ERROR_ACCESS_DENIED}, ERROR_ACCESS_DENIED, {L"GetFileSecurityW 7 size"});
}

TEST_F(IsDirectoryReadWritableFault, ShortMemoryIsFalse)
{
    EXPECT_FALSE(Ask({.memory = FALSE}));
    EXPECT_EQ((StringList{L"GetFileSecurityW 7 size", L"malloc"}), CallLog::Take());
}

TEST_F(IsDirectoryReadWritableFault, DescriptorThatCannotBeReadAfterAllIsFreed)
{
    ExpectFalse({.size = FALSE, .sizeError = ERROR_INSUFFICIENT_BUFFER, .descriptor = FALSE}, ERROR_INSUFFICIENT_BUFFER,
                {L"GetFileSecurityW 7 size", L"malloc", L"GetFileSecurityW 7 descriptor", L"free"});
}

// The null handle is closed as well: its error is the one that stays.
TEST_F(IsDirectoryReadWritableFault, TokenThatCannotBeOpenedIsClosedAsNull)
{
    ExpectFalse({.openToken = FALSE}, ERROR_INVALID_HANDLE,
                {L"GetFileSecurityW 7 size", L"malloc", L"GetFileSecurityW 7 descriptor", L"OpenProcessToken 0x2000E",
                 L"CloseHandle null", L"free"});
}

TEST_F(IsDirectoryReadWritableFault, TokenThatCannotBeDuplicatedIsClosed)
{
    ExpectFalse({.duplicateToken = FALSE}, ERROR_NO_TOKEN,
                {L"GetFileSecurityW 7 size", L"malloc", L"GetFileSecurityW 7 descriptor", L"OpenProcessToken 0x2000E",
                 L"DuplicateToken process token 2", L"CloseHandle process token", L"free"});
}

TEST_F(IsDirectoryReadWritableFault, OnlyAStatusOfOneGrantsAccess)
{
    const struct {
        BOOL succeeded;
        BOOL status;
        bool granted;
        const char* why;
    } cases[] = {
        {TRUE, 1, true, "granted"},
        {TRUE, 0, false, "denied"},
        {TRUE, 2, false, "nothing but 1 is a grant"},
        {FALSE, 1, false, "a check that failed grants nothing"},
        {FALSE, 0, false, "nor does any other"},
    };
    for (const auto& [succeeded, status, granted, why] : cases) {
        EXPECT_EQ(granted, Ask({.accessCheck = succeeded, .status = status})) << why;
        EXPECT_EQ(DWORD{ERROR_INVALID_SECURITY_DESCR}, ::GetLastError()) << why << ": the clean-up leaves it";
        const StringList calls = CallLog::Take();
        ASSERT_LE(3U, calls.size());
        EXPECT_EQ((StringList{L"CloseHandle duplicate", L"CloseHandle process token", L"free"}),
                  StringList(calls.end() - 3, calls.end()))
            << why;
    }
    EXPECT_EQ(StringList(), host.Lines());
}
