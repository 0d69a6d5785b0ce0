// The built-in host functions, in use until the host registers its own.

#include "frame/LogSinks.h"

#include "win32/CrtPrintf.h"

#include <cstdarg>
#include <new>
#include <string>

namespace {

void PrintPrefixed(const char* prefix, const char* format, va_list arguments) noexcept
{
    try {
        const std::string prefixed = std::string(prefix) + format;
        CrtVPrintf(prefixed.c_str(), arguments);
    } catch (const std::bad_alloc&) {
        // The same line in two steps, which need no memory.
        CrtPrintf("%s", prefix);
        CrtVPrintf(format, arguments);
    }
}

} // namespace

int __cdecl DefaultLogSink(int /*level*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    PrintPrefixed("Kestrovane: ", format, arguments);
    va_end(arguments);
    return 0;
}

int __cdecl PlainLogSink(int /*level*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    PrintPrefixed("", format, arguments);
    va_end(arguments);
    return 0;
}

int __cdecl NullKeepAlive(int /*seconds*/, ...)
{
    return 0;
}
