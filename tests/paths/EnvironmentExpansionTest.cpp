// Expansion of environment variables in a BSTR.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryMeters.h"

#include <cstdlib>

namespace {

constexpr std::size_t kRoom = 260; // characters, terminator included

std::wstring TextOf(const CComBSTR& text)
{
    return text.m_str == nullptr ? L"" : std::wstring(text.m_str, text.Length());
}

// An environment variable for one scope.
class Variable {
public:
    Variable(const wchar_t* name, const std::wstring& value) : m_name(name)
    {
        EXPECT_TRUE(::SetEnvironmentVariableW(name, value.c_str()));
    }
    ~Variable() { ::SetEnvironmentVariableW(m_name, nullptr); }
    Variable(const Variable&) = delete;
    Variable& operator=(const Variable&) = delete;

private:
    const wchar_t* m_name;
};

struct ExpandCall {
    std::wstring text;
    std::wstring buffer; // what was in it before
    DWORD room;
};

std::vector<ExpandCall> g_calls;
std::vector<DWORD> g_answers; // of the calls in turn
bool g_writes = false;        // whether they also write a text

DWORD WINAPI RecordExpand(const wchar_t* text, wchar_t* buffer, DWORD room)
{
    g_calls.push_back({text, std::wstring(buffer), room});
    return ::ExpandEnvironmentStringsW(text, buffer, room);
}

DWORD WINAPI AnswerExpand(const wchar_t* text, wchar_t* buffer, DWORD room)
{
    g_calls.push_back({text, std::wstring(buffer), room});
    if (g_writes) {
        ::lstrcpyW(buffer, L"written");
    }
    ::SetLastError(ERROR_NOT_ENOUGH_MEMORY);
    const DWORD answer = g_answers.front();
    g_answers.erase(g_answers.begin());
    return answer;
}

std::vector<std::pair<std::size_t, std::size_t>> g_callocs;
std::vector<void*> g_blocks;
std::vector<void*> g_freed;

void* __cdecl RecordCalloc(std::size_t count, std::size_t size)
{
    g_callocs.emplace_back(count, size);
    g_blocks.push_back(std::calloc(count, size));
    return g_blocks.back();
}

void* __cdecl NoCalloc(std::size_t count, std::size_t size)
{
    g_callocs.emplace_back(count, size);
    return nullptr;
}

void __cdecl RecordFree(void* block)
{
    g_freed.push_back(block);
    std::free(block);
}

BSTR WINAPI NoBstr(const OLECHAR* /*text*/)
{
    return nullptr;
}

constexpr const char* kPrinted8 = "ExpandEnvironmentStrings failed due to error 8.\n"; // ERROR_NOT_ENOUGH_MEMORY

} // namespace

class EnvironmentExpansionTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        g_calls.clear();
        g_answers.clear();
        g_writes = false;
        g_callocs.clear();
        g_blocks.clear();
        g_freed.clear();
    }
};

TEST_F(EnvironmentExpansionTest, PutsTheValuesInPlaceOfTheNames)
{
    const Variable one(L"KV_ONE", L"first");
    const Variable two(L"KV_TWO", LR"(C:\dir)");
    const std::pair<const wchar_t*, const wchar_t*> cases[] = {
        {L"%KV_ONE%", L"first"},
        {L"%kv_one%", L"first"}, // names have no case
        {LR"(%KV_TWO%\%KV_ONE%.txt)", LR"(C:\dir\first.txt)"},
        {L"a%KV_ONE%b%KV_ONE%c", L"afirstbfirstc"},
        {L"%KV_NOT_DEFINED%", L"%KV_NOT_DEFINED%"},
        {L"%KV_ONE% %KV_NOT_DEFINED%", L"first %KV_NOT_DEFINED%"},
        {L"100%", L"100%"},
        {L"%", L"%"},
        {L"%%", L"%%"},
    };
    for (const auto& [text, expanded] : cases) {
        CComBSTR given(text);
        DoExpandEnvironmentStrings(given);
        EXPECT_EQ(expanded, TextOf(given)) << Utf8(text);
    }
}

// Simulation: the calls are recorded on their way to Windows.
TEST_F(EnvironmentExpansionTest, DoesNotAskWindowsWithoutAPercentSign)
{
    const ImportPatch expand("ExpandEnvironmentStringsW", &RecordExpand);
    for (const wchar_t* text : {L"", L"C:\\dir", L"KV_ONE"}) {
        CComBSTR given(text);
        const BSTR before = given.m_str;
        DoExpandEnvironmentStrings(given);
        EXPECT_EQ(before, given.m_str) << "the very same string";
    }
    CComBSTR null;
    DoExpandEnvironmentStrings(null);
    EXPECT_EQ(nullptr, null.m_str);
    EXPECT_TRUE(g_calls.empty());
}

// The call is recorded on its way to Windows, the answer is real.
TEST_F(EnvironmentExpansionTest, CompletesAResultOf259Characters)
{
    const std::wstring value(kRoom - 1, L'v');
    const Variable variable(L"KV_LONG", value);
    const ImportPatch expand("ExpandEnvironmentStringsW", &RecordExpand);
    CComBSTR text(L"%KV_LONG%");
    DoExpandEnvironmentStrings(text);
    EXPECT_EQ(value, TextOf(text));
    ASSERT_EQ(1U, g_calls.size());
    EXPECT_EQ(L"%KV_LONG%", g_calls[0].text);
    EXPECT_EQ(kRoom, g_calls[0].room);
}

TEST_F(EnvironmentExpansionTest, CutsAResultOf260Characters)
{
    for (const std::size_t length : {kRoom, kRoom + 40, std::size_t{30000}}) {
        const std::wstring value(length, L'v');
        const Variable variable(L"KV_LONG", value);
        CComBSTR text(L"%KV_LONG%");
        DoExpandEnvironmentStrings(text);
        EXPECT_GT(kRoom, text.Length()) << "what Windows leaves in a buffer that is too small";
        EXPECT_TRUE(value.starts_with(TextOf(text)));
    }
}

// The calls are recorded on their way, the answers are real.
TEST_F(EnvironmentExpansionTest, TellsWindowsTheSameSmallRoomTwice)
{
    const Variable variable(L"KV_LONG", std::wstring(300, L'v'));
    const ImportPatch expand("ExpandEnvironmentStringsW", &RecordExpand);
    const ImportPatch allocate("calloc", &RecordCalloc);
    const ImportPatch free("free", &RecordFree);
    CComBSTR text(L"%KV_LONG%");
    DoExpandEnvironmentStrings(text);
    ASSERT_EQ(2U, g_calls.size());
    for (const ExpandCall& call : g_calls) {
        EXPECT_EQ(L"%KV_LONG%", call.text);
        EXPECT_EQ(L"", call.buffer) << "the buffer is cleared before the call";
        EXPECT_EQ(kRoom, call.room);
    }
    EXPECT_EQ((decltype(g_callocs){{301, sizeof(wchar_t)}}), g_callocs);
    EXPECT_EQ(0, std::count(g_freed.begin(), g_freed.end(), g_blocks.at(0))) << "the buffer is kept";
}

// The rest are simulations: Windows answers what it is told to.

TEST_F(EnvironmentExpansionTest, PrintsTheErrorAndKeepsTheTextWhenWindowsFails)
{
    const ImportPatch expand("ExpandEnvironmentStringsW", &AnswerExpand);
    g_answers = {0};
    g_writes = true;
    CComBSTR text(L"%KV_ONE%");
    const BSTR before = text.m_str;
    CapturedOutput output;
    DoExpandEnvironmentStrings(text);
    EXPECT_EQ(kPrinted8, output.Text());
    EXPECT_EQ(before, text.m_str) << "the very same string";
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(EnvironmentExpansionTest, PrintsTheErrorOfASecondFailureAndTakesTheBuffer)
{
    const ImportPatch expand("ExpandEnvironmentStringsW", &AnswerExpand);
    for (const bool writes : {false, true}) {
        g_answers = {300, 0};
        g_writes = writes;
        CComBSTR text(L"%KV_ONE%");
        CapturedOutput output;
        DoExpandEnvironmentStrings(text);
        EXPECT_EQ(kPrinted8, output.Text());
        EXPECT_EQ(writes ? L"written" : L"", TextOf(text));
        EXPECT_NE(nullptr, text.m_str);
    }
}

TEST_F(EnvironmentExpansionTest, ReadsOnlyWhatWindowsHasWritten)
{
    const ImportPatch expand("ExpandEnvironmentStringsW", &AnswerExpand);
    const std::vector<DWORD> answers[] = {{1}, {260}, {261, 261}, {40000, 1}};
    for (const std::vector<DWORD>& answer : answers) {
        g_answers = answer;
        CComBSTR text(L"%KV_ONE%");
        DoExpandEnvironmentStrings(text);
        EXPECT_EQ(L"", TextOf(text)) << answer.front();
    }
    for (const ExpandCall& call : g_calls) {
        EXPECT_EQ(L"", call.buffer);
    }
}

TEST_F(EnvironmentExpansionTest, GivesANullStringWithoutMemoryForALongResult)
{
    const ImportPatch expand("ExpandEnvironmentStringsW", &AnswerExpand);
    const ImportPatch allocate("calloc", &NoCalloc);
    g_answers = {300, 0};
    CComBSTR text(L"%KV_ONE%");
    DoExpandEnvironmentStrings(text);
    EXPECT_EQ(nullptr, text.m_str);
    EXPECT_EQ(1U, g_callocs.size());
}

TEST_F(EnvironmentExpansionTest, ThrowsAndKeepsTheTextWithoutMemoryForTheString)
{
    const ImportPatch allocate("SysAllocString", &NoBstr);
    for (const std::size_t length : {5U, 300U}) {
        const Variable variable(L"KV_ONE", std::wstring(length, L'v'));
        CComBSTR text(L"%KV_ONE%");
        const BSTR before = text.m_str;
        try {
            DoExpandEnvironmentStrings(text);
            ADD_FAILURE() << "nothing was thrown for " << length << " characters";
        } catch (const CAtlException& exception) {
            EXPECT_EQ(E_OUTOFMEMORY, exception.m_hr);
        }
        EXPECT_EQ(before, text.m_str);
        EXPECT_EQ(L"%KV_ONE%", TextOf(text));
    }
}

TEST_F(EnvironmentExpansionTest, FreesTheStringThatItReplaces)
{
    const Variable variable(L"KV_ONE", L"first");
    CComBSTR text(L"%KV_ONE%");
    const BstrMeter meter;
    DoExpandEnvironmentStrings(text);
    EXPECT_EQ(L"first", TextOf(text));
    EXPECT_EQ(1, BstrMeter::Allocations());
    EXPECT_EQ(0, BstrMeter::Outstanding()) << "one string for another";
}
