// Printing through the platform runtime's own printf family.
//
// The toolchain would put its own printf in its place, which treats a wide text outside the locale differently.

#pragma once

#include <cstdarg>
#include <cstdio>

#ifdef _UCRT

inline int RuntimeVPrintf(const char* format, va_list arguments)
{
    return ::__stdio_common_vfprintf(0, stdout, format, nullptr, arguments);
}

inline int RuntimePrintf(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int printed = RuntimeVPrintf(format, arguments);
    va_end(arguments);
    return printed;
}

#else

inline int RuntimeVPrintf(const char* format, va_list arguments)
{
    return ::__ms_vprintf(format, arguments);
}

template <typename... Arguments>
int RuntimePrintf(const char* format, Arguments... arguments)
{
    return ::__ms_printf(format, arguments...);
}

#endif
