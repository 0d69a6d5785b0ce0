// Printing through the platform runtime's own printf family.
//
// The toolchain replaces printf by its own, which treats a wide string outside the locale differently.

#pragma once

#include <algorithm>
#include <climits>
#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <string>

#if defined(_UCRT) || defined(_MSC_VER)

inline int CrtVPrintf(const char* format, va_list arguments)
{
    return ::__stdio_common_vfprintf(0, stdout, format, nullptr, arguments);
}

inline int CrtPrintf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int printed = CrtVPrintf(format, arguments);
    va_end(arguments);
    return printed;
}

#else

inline int CrtVPrintf(const char* format, va_list arguments)
{
    return ::__ms_vprintf(format, arguments);
}

template <typename... Arguments>
int CrtPrintf(const char* format, Arguments... arguments)
{
    return ::__ms_printf(format, arguments...);
}

#endif

// Replaces the characters that %S cannot convert in the current locale by '?'. The runtime's printf stops at such a
// character, so that the rest of the line would be lost.
inline std::wstring Printable(std::wstring string)
{
    const auto isUnprintable = [](wchar_t character) {
        char converted[MB_LEN_MAX];
        return std::wctomb(converted, character) < 0;
    };
    std::replace_if(string.begin(), string.end(), isUnprintable, L'?');
    return string;
}
