// Conversions of what Windows returns.

#include "win32/Bstr.h"
#include "win32/HResult.h"

#include <gtest/gtest.h>

TEST(HResultFromWin32Test, KeepsSuccessAndHResultsAndWrapsErrors)
{
    EXPECT_EQ(S_OK, HResultFromWin32(ERROR_SUCCESS));
    EXPECT_EQ(E_INVALIDARG, HResultFromWin32(static_cast<DWORD>(E_INVALIDARG)));
    EXPECT_EQ(static_cast<HRESULT>(0x80070005U), HResultFromWin32(ERROR_ACCESS_DENIED));
}

TEST(ToWStringTest, OfANullStringIsEmpty)
{
    EXPECT_EQ(L"", ToWString(CComBSTR()));
    EXPECT_EQ(L"a", ToWString(CComBSTR(L"a")));
}
