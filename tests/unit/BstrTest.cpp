// The string class that crosses the interface, as hosts use it.

#include <KestrovaneBstr.h>

#include <gtest/gtest.h>

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
    const CComBSTR detached(std::move(copy));
    EXPECT_EQ(std::wstring(L"a\0b", 3), Content(detached));
}

TEST(CComBSTRTest, MovesLeaveNull)
{
    CComBSTR source(L"text");
    CComBSTR target(L"old");
    target = std::move(source);
    EXPECT_EQ(L"text", Content(target));
    EXPECT_TRUE(!source); // NOLINT(bugprone-use-after-move): documented
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
