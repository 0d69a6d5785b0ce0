// The lines by which the library reports a failure of Windows, seen from the host.

#include "tests/support/LibraryTest.h"

namespace {

// An empty path is reported with whatever the last error is.
void Report(DWORD error)
{
    ::SetLastError(error);
    isDirectoryExists(L"");
}

// The arguments of one call of FormatMessageW, and the text it made.
struct MessageCall {
    DWORD flags;
    const void* source;
    DWORD code;
    DWORD language;
    DWORD size;
    va_list* inserts;
    wchar_t* made;
};

std::vector<MessageCall> g_messages;
std::vector<HLOCAL> g_freed;

DWORD WINAPI RecordFormatMessage(DWORD flags, const void* source, DWORD code, DWORD language, wchar_t* text, DWORD size,
                                 va_list* inserts)
{
    const DWORD length = ::FormatMessageW(flags, source, code, language, text, size, inserts);
    g_messages.push_back({flags, source, code, language, size, inserts, *reinterpret_cast<wchar_t**>(text)});
    return length;
}

// Fails without touching the caller's variable.
DWORD WINAPI FailToFormat(DWORD /*flags*/, const void* /*source*/, DWORD /*code*/, DWORD /*language*/,
                          wchar_t* /*text*/, DWORD /*size*/, va_list* /*inserts*/)
{
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    return 0;
}

HLOCAL WINAPI RecordLocalFree(HLOCAL memory)
{
    g_freed.push_back(memory);
    return ::LocalFree(memory);
}

} // namespace

class FailureReportTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        g_messages.clear();
        g_freed.clear();
    }
};

TEST_F(FailureReportTest, HasTheCodeTheHResultAndTheTextOfWindows)
{
    Report(ERROR_ACCESS_DENIED);
    const std::wstring text = ReportLines(ERROR_ACCESS_DENIED).back();
    const std::vector<HostEvent> expected = {
        {HostEvent::Kind::kLog, 0, "   - %S: %d\n", L"   - : 5\n"},
        {HostEvent::Kind::kLog, 0, "   - Returned HRESULT = 0x%08lx\n", L"   - Returned HRESULT = 0x80070005\n"},
        {HostEvent::Kind::kLog, 0, "   - Error text: %S\n", text},
    };
    EXPECT_EQ(expected, host.Events());
    EXPECT_LT(std::wcslen(L"   - Error text: \n"), text.size());
}

TEST_F(FailureReportTest, IsLeftOutWhenThereIsNoLastError)
{
    Report(ERROR_SUCCESS);
    EXPECT_TRUE(host.Events().empty());
}

struct HResultCase {
    DWORD error;
    std::wstring title;
    std::wstring hresult;
    const char* why;
};

const HResultCase kHResultCases[] = {
    {1, L"   - : 1\n", L"0x80070001", "the smallest code"},
    {145, L"   - : 145\n", L"0x80070091", "hexadecimal digits are small letters"},
    {0xFFFF, L"   - : 65535\n", L"0x8007ffff", "the largest code that an HRESULT holds whole"},
    {0x12345, L"   - : 74565\n", L"0x80072345", "only the low half of a larger code fits"},
    {0x7FFFFFFF, L"   - : 2147483647\n", L"0x8007ffff", "the largest positive code"},
    {0x80070005, L"   - : -2147024891\n", L"0x80070005", "an HRESULT already: kept"},
    {0x80000000, L"   - : -2147483648\n", L"0x80000000", "the most negative code"},
    {0xFFFFFFFF, L"   - : -1\n", L"0xffffffff", "the negative code nearest to 0"},
};

TEST_F(FailureReportTest, TurnsTheCodeIntoAnHResultUnlessItIsOne)
{
    for (const auto& [error, title, hresult, why] : kHResultCases) {
        host.Clear();
        Report(error);
        const std::vector<std::wstring> lines = host.Lines();
        ASSERT_LE(2U, lines.size()) << why;
        EXPECT_EQ(title, lines[0]) << why;
        EXPECT_EQ(L"   - Returned HRESULT = " + hresult + L"\n", lines[1]) << why;
    }
}

TEST_F(FailureReportTest, EndsAfterTheHResultWhenWindowsHasNoText)
{
    Report(999999);
    EXPECT_EQ((StringList{L"   - : 999999\n", L"   - Returned HRESULT = 0x8007423f\n"}), host.Lines());
}

TEST_F(FailureReportTest, NamesNothingWhateverFailedBefore)
{
    ListFilesFilter(tree.Path(L"missing"), L"*", false); // leaves an error text behind
    host.Clear();
    Report(ERROR_ACCESS_DENIED);
    Report(ERROR_ACCESS_DENIED);
    const std::vector<std::wstring> lines = host.Lines();
    ASSERT_EQ(6U, lines.size());
    EXPECT_EQ(L"   - : 5\n", lines[0]);
    EXPECT_EQ(L"   - : 5\n", lines[3]);
}

TEST_F(FailureReportTest, KeepsTheLastError)
{
    Report(999999); // Windows' own failure to find a text sets another
    EXPECT_EQ(999999U, ::GetLastError());
}

// Simulation: the calls are recorded on their way to Windows.
TEST_F(FailureReportTest, AsksWindowsForItsTextAndFreesIt)
{
    const ImportPatch message("FormatMessageW", &RecordFormatMessage);
    const ImportPatch free("LocalFree", &RecordLocalFree);
    Report(ERROR_ACCESS_DENIED);
    ASSERT_EQ(1U, g_messages.size());
    const MessageCall& call = g_messages.front();
    EXPECT_EQ(0x1100U, call.flags) << "Windows allocates the text";
    EXPECT_EQ(nullptr, call.source);
    EXPECT_EQ(5U, call.code);
    EXPECT_EQ(0x400U, call.language) << "neutral";
    EXPECT_EQ(0U, call.size);
    EXPECT_EQ(nullptr, call.inserts);
    EXPECT_NE(nullptr, call.made);
    EXPECT_EQ(std::vector<HLOCAL>{call.made}, g_freed);
}

// Simulation: Windows has no memory for its text.
TEST_F(FailureReportTest, FreesNothingWhenThereIsNoText)
{
    const ImportPatch message("FormatMessageW", &FailToFormat);
    const ImportPatch free("LocalFree", &RecordLocalFree);
    Report(ERROR_ACCESS_DENIED);
    EXPECT_EQ(2U, host.Lines().size());
    EXPECT_EQ(std::vector<HLOCAL>{nullptr}, g_freed) << "Windows takes the call without a text, too";
    EXPECT_EQ(5U, ::GetLastError());
}

TEST_F(FailureReportTest, ComesFromEveryOperationOnAnEmptyPath)
{
    const std::pair<const char*, bool (*)()> operations[] = {
        {"isDirectoryExists", [] { return isDirectoryExists(L""); }},
        {"isDirectoryReadWritable", [] { return isDirectoryReadWritable(L""); }},
        {"RecursivelyCreateDirectory", [] { return RecursivelyCreateDirectory(L""); }},
        {"isFileExists", [] { return isFileExists(L""); }},
        {"DoCopyComponentFileToDir", [] { return DoCopyComponentFileToDir(L"", LR"(C:\a)") != 0; }},
        {"DoCopyComponentFile", [] { return DoCopyComponentFile(L"", LR"(C:\a\b)") != 0; }},
    };
    for (const auto& [name, operation] : operations) {
        for (const DWORD error : {DWORD{ERROR_SUCCESS}, DWORD{ERROR_SHARING_VIOLATION}}) {
            host.Clear();
            ::SetLastError(error);
            EXPECT_FALSE(operation()) << name;
            EXPECT_EQ(error == 0 ? StringList() : ReportLines(error), host.LinesAt(0)) << name;
            EXPECT_TRUE(host.LinesAt(2).empty()) << name;
        }
    }
}

TEST_F(FailureReportTest, ComesFromEveryOperationOnARejectedPath)
{
    const std::wstring rejected = tree.Path(L"a*b");
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"GetFileName", [&] { GetFileName(rejected); }},
        {"GetPathFileName", [&] { GetPathFileName(rejected); }},
        {"GetPathFileNameNoVolume", [&] { GetPathFileNameNoVolume(rejected); }},
        {"GetVolume", [&] { GetVolume(rejected); }},
        {"GetPathFileTranslate", [&] { GetPathFileTranslate(rejected); }},
        {"isDirectoryExists", [&] { isDirectoryExists(rejected); }},
        {"RecursivelyCreateDirectory", [&] { RecursivelyCreateDirectory(rejected); }},
        {"isFileExists", [&] { isFileExists(rejected); }},
        {"ListFilesFilter", [&] { ListFilesFilter(rejected, L"*", false); }},
        {"ListFilesFilterRecursive", [&] { ListFilesFilterRecursive(rejected, L"*", false); }},
        {"ListDirecoriesRecursive", [&] { ListDirecoriesRecursive(rejected); }},
        {"DoCopyComponentFileToDir", [&] { DoCopyComponentFileToDir(rejected, tree.Root()); }},
    };
    for (const auto& [name, operation] : operations) {
        for (const DWORD error : {DWORD{ERROR_SUCCESS}, DWORD{ERROR_SHARING_VIOLATION}}) {
            host.Clear();
            ::SetLastError(error);
            operation();
            EXPECT_EQ(error == 0 ? StringList() : ReportLines(error), host.Lines()) << name;
        }
    }
}
