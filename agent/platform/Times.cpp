// Times as strings.

#include "agent/platform/Times.h"

#include <cwchar>
#include <iterator>

namespace agent {

FileTime Now()
{
    FILETIME now = {};
    ::GetSystemTimeAsFileTime(&now);
    return FromWindows(now);
}

std::wstring FormatUtc(FileTime time)
{
    const FILETIME steps = ToWindows(time);
    SYSTEMTIME fields = {};
    if (time == 0 || !::FileTimeToSystemTime(&steps, &fields)) {
        return {};
    }
    wchar_t buffer[32] = {}; // characters: 20 are enough until the year 9999
    static_cast<void>(std::swprintf(buffer, std::size(buffer), L"%04u-%02u-%02uT%02u:%02u:%02uZ", fields.wYear,
                                    fields.wMonth, fields.wDay, fields.wHour, fields.wMinute, fields.wSecond));
    return buffer;
}

} // namespace agent
