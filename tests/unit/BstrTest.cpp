// The string class that crosses the interface, as hosts use it.

#include <KestrovaneBstr.h>

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>
#include <utility>

namespace {

std::wstring Content(const CComBSTR& string)
{
    return {string.m_str, string.Length()};
}

HRESULT ErrorOf(int length)
{
    try {
        const CComBSTR string(length);
        return S_OK;
    } catch (const CAtlException& error) {
        return error.m_hr;
    }
}

constexpr int kMaxLength = 0x3FFFFFFF; // characters

// Windows does not initialise the characters of a new string; Wine does.
decltype(&::SysAllocStringLen) g_allocate = nullptr;

BSTR WINAPI AllocateFilled(const OLECHAR* characters, UINT length)
{
    const BSTR string = g_allocate(characters, length);
    if (characters == nullptr) {
        std::fill_n(string, length, L'?');
    }
    return string;
}

UINT g_asked = 0; // characters

BSTR WINAPI AllocateNothing(const OLECHAR* /*characters*/, UINT length)
{
    g_asked = length;
    return nullptr;
}

int g_freed = 0;

void WINAPI CountFree(BSTR /*string*/)
{
    ++g_freed;
}

constexpr const char* kProgram = "kestrovane-unit-tests.exe";

class Allocator {
public:
    explicit Allocator(decltype(&::SysAllocStringLen) allocate) : m_patch(kProgram, "SysAllocStringLen", allocate)
    {
        g_allocate = m_patch.Original<decltype(::SysAllocStringLen)>();
        g_asked = 0;
    }

private:
    ImportPatch m_patch;
};

} // namespace

TEST(CComBSTRTest, IsNullWithoutCharacters)
{
    EXPECT_TRUE(!CComBSTR());
    EXPECT_TRUE(!CComBSTR(0));
    EXPECT_TRUE(!CComBSTR(static_cast<const OLECHAR*>(nullptr)));
    EXPECT_FALSE(!CComBSTR(L""));
    EXPECT_EQ(0U, CComBSTR().Length());
}

TEST(CComBSTRTest, OfALengthIsAllNul)
{
    const Allocator allocator(&AllocateFilled);
    EXPECT_EQ(std::wstring(3, L'\0'), Content(CComBSTR(3)));
    EXPECT_EQ(std::wstring(2, L'\0'), Content(CComBSTR(2, nullptr)));
    EXPECT_EQ(E_INVALIDARG, ErrorOf(-1));
    EXPECT_EQ(S_OK, ErrorOf(0));
    EXPECT_EQ(S_OK, ErrorOf(1));
}

TEST(CComBSTRTest, CopiesKeepEmbeddedNuls)
{
    const CComBSTR string(3, L"a\0b");
    CComBSTR copy(string);
    EXPECT_EQ(std::wstring(L"a\0b", 3), Content(copy));
    EXPECT_NE(string.m_str, copy.m_str);
    CComBSTR assigned(L"old");
    assigned = string;
    EXPECT_EQ(std::wstring(L"a\0b", 3), Content(assigned));
    EXPECT_TRUE(!CComBSTR(CComBSTR()));
    EXPECT_EQ(nullptr, CComBSTR().Copy());
    const CComBSTR detached(std::move(copy));
    EXPECT_EQ(std::wstring(L"a\0b", 3), Content(detached));
}

TEST(CComBSTRTest, MovesLeaveNull)
{
    CComBSTR source(L"text");
    CComBSTR target(L"old");
    const auto move = [](CComBSTR& from, CComBSTR& to) { to = std::move(from); };
    move(source, target);
    EXPECT_EQ(L"text", Content(target));
    EXPECT_TRUE(!source);
}

TEST(CComBSTRTest, AssignmentToItselfKeepsTheString)
{
    CComBSTR string(L"text");
    CComBSTR& same = string;
    const BSTR before = string.m_str;
    string = same;
    EXPECT_EQ(before, string.m_str);
    string = std::move(same);
    EXPECT_EQ(L"text", Content(string));
    string = static_cast<const OLECHAR*>(string.m_str);
    EXPECT_EQ(before, string.m_str);
    EXPECT_EQ(L"text", Content(string));
}

TEST(CComBSTRTest, TakesAString)
{
    CComBSTR string(L"old");
    string = L"new";
    EXPECT_EQ(L"new", Content(string));
    string = static_cast<const OLECHAR*>(nullptr);
    EXPECT_TRUE(!string);
}

TEST(CComBSTRTest, AppendsCharacters)
{
    CComBSTR string;
    EXPECT_EQ(S_OK, string.Append(L"abc", 2));
    EXPECT_EQ(S_OK, string.Append(L"c"));
    EXPECT_EQ(S_OK, string.Append(CComBSTR(2, L"\0d")));
    EXPECT_EQ(std::wstring(L"abc\0d", 5), Content(string));
}

TEST(CComBSTRTest, AppendsNothing)
{
    CComBSTR string;
    EXPECT_EQ(S_OK, string.Append(L"a", 0));
    EXPECT_EQ(S_OK, string.Append(nullptr, 0));
    EXPECT_EQ(S_OK, string.Append(static_cast<const OLECHAR*>(nullptr)));
    EXPECT_TRUE(!string);
}

TEST(CComBSTRTest, RejectsWhatItCannotAppend)
{
    CComBSTR string(L"ab");
    EXPECT_EQ(E_INVALIDARG, string.Append(nullptr, 1));
    EXPECT_EQ(E_INVALIDARG, string.Append(L"a", -1));
    EXPECT_EQ(E_OUTOFMEMORY, string.Append(L"a", kMaxLength - 1));
    EXPECT_EQ(L"ab", Content(string));
}

TEST(CComBSTRTest, AsksForNoStringThatCannotBe)
{
    CComBSTR string(L"ab");
    const Allocator allocator(&AllocateNothing);
    EXPECT_EQ(E_OUTOFMEMORY, string.Append(L"a", kMaxLength - 1));
    EXPECT_EQ(0U, g_asked);
    EXPECT_EQ(E_OUTOFMEMORY, string.Append(L"a", kMaxLength - 2));
    EXPECT_EQ(static_cast<UINT>(kMaxLength), g_asked);
    EXPECT_EQ(L"ab", Content(string));
}

TEST(CComBSTRTest, ThrowsWhereMemoryRunsOut)
{
    const CComBSTR string(L"ab");
    CComBSTR target(L"old");
    const Allocator allocator(&AllocateNothing);
    EXPECT_EQ(E_OUTOFMEMORY, ErrorOf(1));
    EXPECT_THROW(const CComBSTR copy(string), CAtlException);
    EXPECT_THROW(target = string, CAtlException);
    EXPECT_EQ(L"old", Content(target));
    EXPECT_EQ(nullptr, string.Copy());
    EXPECT_EQ(E_OUTOFMEMORY, target.Append(L"a"));
}

TEST(CComBSTRTest, DoesNotFreeItsOwnString)
{
    CComBSTR string(L"text");
    const ImportPatch counted(kProgram, "SysFreeString", &CountFree);
    g_freed = 0;
    string.Attach(string.m_str);
    EXPECT_EQ(0, g_freed);
    EXPECT_EQ(L"text", Content(string));
}

TEST(CComBSTRTest, GivesItsStringUp)
{
    CComBSTR string(L"text");
    const BSTR copy = string.Copy();
    EXPECT_NE(string.m_str, copy);
    const BSTR own = string.Detach();
    EXPECT_TRUE(!string);
    string.Attach(own);
    EXPECT_EQ(own, string.m_str);
    *&string = nullptr; // freed by hand below, as after a call that returns it through the pointer
    ::SysFreeString(own);
    string.Attach(copy);
    EXPECT_EQ(L"text", Content(string));
    string.Empty();
    EXPECT_TRUE(!string);
}
