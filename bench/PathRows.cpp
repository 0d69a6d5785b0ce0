// Decomposition of paths, strings and maps.

#include "bench/Rows.h"

#include <Kestrovane.h>

#include <windows.h>

#include <cstdlib>
#include <cwchar>
#include <direct.h>
#include <filesystem>
#include <memory>

namespace bench {

namespace {

const std::wstring kPath = LR"(C:\Data\Component\Sub\document.txt)";
const std::wstring kRelative = LR"(Sub\document.txt)";
volatile std::size_t g_sink; // keeps results alive

// The platform's splitter, a look at the components, and the one string of the result.
std::wstring BareSplit(const std::wstring& path, wchar_t mark)
{
    wchar_t drive[3];
    wchar_t directory[256];
    wchar_t name[256];
    wchar_t extension[256];
    ::_wsplitpath_s(path.c_str(), drive, directory, name, extension);
    g_sink = std::wcscspn(directory, L":*?") + std::wcscspn(name, L":*?") + std::wcscspn(extension, L":*?");
    return path.substr(path.rfind(mark) + 1);
}

std::wstring BareRelative(const std::wstring& path)
{
    wchar_t current[MAX_PATH];
    const wchar_t* const directory = ::_wgetcwd(current, MAX_PATH);
    return BareSplit((directory == nullptr ? L"" : directory) + (L"\\" + path), L'\\');
}

Row SplitRow(const std::string& name, std::wstring (*function)(const std::wstring&), wchar_t mark)
{
    return {"paths",
            name,
            [function] { g_sink = function(kPath).size(); },
            [mark] { g_sink = BareSplit(kPath, mark).size(); },
            "std::filesystem",
            [] { g_sink = std::filesystem::path(kPath).filename().wstring().size(); },
            {}};
}

Row ExpansionRow()
{
    return {"strings",
            "DoExpandEnvironmentStrings",
            [] {
                CComBSTR string(LR"(%SystemRoot%\system32)");
                DoExpandEnvironmentStrings(string);
                g_sink = string.Length();
            },
            [] {
                CComBSTR string(LR"(%SystemRoot%\system32)");
                wchar_t expanded[MAX_PATH];
                ::ExpandEnvironmentStringsW(string, expanded, MAX_PATH);
                string = expanded;
                g_sink = string.Length();
            },
            {},
            {},
            {}};
}

} // namespace

std::vector<Row> PathRows()
{
    return {
        SplitRow("GetFileName", &GetFileName, L'\\'),
        SplitRow("GetPathFileName", &GetPathFileName, L'\\'),
        SplitRow("GetVolume", &GetVolume, L':'),
        {"paths",
         "GetFileName, relative",
         [] { g_sink = GetFileName(kRelative).size(); },
         [] { g_sink = BareRelative(kRelative).size(); },
         "std::filesystem::absolute",
         [] { g_sink = std::filesystem::absolute(kRelative).filename().wstring().size(); },
         {}},
        ExpansionRow(),
    };
}

} // namespace bench
