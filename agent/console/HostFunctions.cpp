// The agent's side of the library: its log function and its keep-alive function.

#include "agent/console/HostFunctions.h"

#include "agent/console/Interrupt.h"
#include "agent/console/Output.h"
#include "agent/platform/Encoding.h"

#include <Kestrovane.h>

#include <cstdarg>
#include <cstdio>
#include <string>

namespace agent {

namespace {

bool g_verbose = false;
bool g_isInterruptible = false;
LogListener::Receive g_receive;

// The argument of one conversion. The runtime's printf would stop at a wide string outside the locale, so strings are
// taken over as they are.
std::wstring FormatArgument(const std::string& conversion, va_list& arguments)
{
    constexpr std::size_t kLongestNumber = 64; // characters
    char number[kLongestNumber] = {};
    switch (conversion.back()) {
    case 'S':
        return va_arg(arguments, const wchar_t*);
    case 's':
        return Wide(va_arg(arguments, const char*));
    default: // numbers of 32 bits: %d, %u, %08lx
        static_cast<void>(std::snprintf(number, kLongestNumber, conversion.c_str(), va_arg(arguments, int)));
        return Wide(number);
    }
}

// The library pairs %s with a wide path in these two formats.
bool TakesWidePath(const std::string& format)
{
    return format.ends_with("couldn't be deleted: %s \n");
}

std::wstring FormatLine(std::string format, va_list& arguments)
{
    if (TakesWidePath(format)) {
        format.replace(format.find("%s"), 2, "%S");
    }
    std::wstring line;
    for (std::size_t i = 0; i < format.size(); ++i) {
        const auto end = format[i] == '%' ? format.find_first_of("sSdux%", i + 1) : std::string::npos;
        if (end == std::string::npos || format[end] == '%') {
            line += static_cast<wchar_t>(format[i]);
            continue;
        }
        line += FormatArgument(format.substr(i, end - i + 1), arguments);
        i = end;
    }
    line.erase(line.find_last_not_of(L" \r\n") + 1);
    return line;
}

int __cdecl Log(int level, const char* format, ...)
{
    if (g_isInterruptible && IsInterrupted()) {
        throw Interrupted();
    }
    if (!g_verbose && !g_receive) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const std::wstring line = FormatLine(format, arguments);
    va_end(arguments);
    if (g_verbose) {
        WriteMessage(line);
    }
    if (g_receive) {
        g_receive(level, line);
    }
    return 0;
}

// Nobody waits for a console program with a time limit, so there is nobody to be told.
int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

} // namespace

void RegisterHost(bool verbose)
{
    g_verbose = verbose;
    SetVssFileManagerLogger(&Log, &KeepAlive, &Log);
}

InterruptibleScope::InterruptibleScope()
{
    g_isInterruptible = true;
}

InterruptibleScope::~InterruptibleScope()
{
    g_isInterruptible = false;
}

LogListener::LogListener(Receive receive)
{
    g_receive = std::move(receive);
}

LogListener::~LogListener()
{
    g_receive = nullptr;
}

} // namespace agent
