// Lists and maps of strings in the host's log, and map look-ups that log the entries they visit.

#include <Kestrovane.h>

#include "frame/ModuleState.h"

#include <cwchar>

namespace {

using StringMap = std::map<std::wstring, std::wstring>;
using Entry = StringMap::value_type;

void LogTitle(const std::string& title)
{
    constexpr const char* kRule = "------------------------------------\n";
    g_pfnLogger(g_detailLevel, kRule);
    g_pfnLogger(g_detailLevel, "%s\n", title.c_str());
    g_pfnLogger(g_detailLevel, kRule);
}

void LogEntry(const Entry& entry)
{
    g_pfnLogger(g_detailLevel, "key: '%S' ---->  value: '%S'  \n", entry.first.c_str(), entry.second.c_str());
}

// Returns the value of the first entry whose `part`, key or value, equals `sought` ignoring case. Deliberately a linear
// search: the map's own search is case-sensitive.
std::wstring ValueOfFirstMatch(const StringMap& map, const std::wstring Entry::*part, const std::wstring& sought)
{
    for (const Entry& entry : map) {
        LogEntry(entry);
        if (::_wcsicmp(sought.c_str(), (entry.*part).c_str()) == 0) {
            g_pfnLogger(g_detailLevel, "Match !!! \n");
            return entry.second;
        }
    }
    return L"NA";
}

} // namespace

void PrintStringVector(std::string title, std::vector<std::wstring> list)
{
    LogTitle(title);
    for (const std::wstring& element : list) {
        g_pfnLogger(g_detailLevel, "%S\n", element.c_str());
    }
}

void PrintStringMap(std::string title, std::map<std::wstring, std::wstring> map)
{
    LogTitle(title);
    for (const Entry& entry : map) {
        LogEntry(entry);
    }
}

std::wstring FindStringValueInMap(std::wstring key, std::map<std::wstring, std::wstring> map)
{
    g_pfnLogger(g_detailLevel, "Find a key: '%S'\n", key.c_str());
    return ValueOfFirstMatch(map, &Entry::first, key);
}

std::wstring FindStringKeyInMap(std::wstring value, std::map<std::wstring, std::wstring> map)
{
    g_pfnLogger(g_detailLevel, "Find a value :'%S'\n", value.c_str());
    // Deliberately the stored value, in spite of the name: hosts ask how a string is spelled in the map.
    return ValueOfFirstMatch(map, &Entry::second, value);
}
