// The functions that stand in until the host registers its own.

#include "frame/LogSinks.h"

#include "frame/RuntimeOutput.h"

#include <cstdarg>
#include <string>

namespace {

void PrintPrefixed(const char* prefix, const char* format, va_list arguments)
{
    const std::string prefixed = std::string(prefix) + format;
    RuntimeVPrintf(prefixed.c_str(), arguments);
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
