// BSTR strings as buffers, and their conversion to wide strings.

#pragma once

#include <KestrovaneBstr.h>

#include <windows.h>

#include <algorithm>
#include <cstddef>
#include <string>

// Returns a buffer of `length` characters, all NUL. Throws CAtlException if it cannot be allocated.
inline CComBSTR ZeroedBstr(std::size_t length)
{
    CComBSTR buffer(static_cast<int>(length));
    std::fill_n(buffer.m_str, length, L'\0'); // not every CComBSTR does this itself
    return buffer;
}

// Appends `length` characters. Throws CAtlException with the HRESULT of a failed append; `target` is then unchanged.
inline void AppendOrThrow(CComBSTR& target, const wchar_t* characters, std::size_t length)
{
    const HRESULT appended = target.Append(characters, static_cast<int>(length));
    if (FAILED(appended)) {
        throw CAtlException(appended);
    }
}

// Returns the characters up to the first NUL; empty for a null string.
inline std::wstring ToWString(const CComBSTR& string)
{
    return string.m_str == nullptr ? std::wstring() : std::wstring(string.m_str);
}
