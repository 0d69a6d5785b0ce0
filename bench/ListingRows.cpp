// Listings: real directories, and the library's own share without the platform.

#include "bench/Rows.h"

#include "bench/Imports.h"

#include <Kestrovane.h>

#include <windows.h>

#include <direct.h>
#include <io.h>

#include <algorithm>
#include <ctime>
#include <cwchar>

namespace bench {

namespace {

using StringList = std::vector<std::wstring>;

volatile std::size_t g_sink; // keeps results alive

// A search of the runtime library that ends with its scope.
class Search {
public:
    explicit Search(const std::wstring& pattern) : m_handle(::_wfindfirst64i32(pattern.c_str(), &m_entry)) {}
    ~Search() { ::_findclose(m_handle); }
    Search(const Search&) = delete;
    Search& operator=(const Search&) = delete;

    [[nodiscard]] bool IsOpen() const { return m_handle != -1; }
    bool Next() { return ::_wfindnext64i32(m_handle, &m_entry) == 0; }
    [[nodiscard]] bool IsDirectory() const { return (m_entry.attrib & _A_SUBDIR) != 0; }
    [[nodiscard]] bool IsSubdirectory() const
    {
        return IsDirectory() && std::wcscmp(Name(), L".") != 0 && std::wcscmp(Name(), L"..") != 0;
    }
    [[nodiscard]] const wchar_t* Name() const { return m_entry.name; }

private:
    _wfinddata64i32_t m_entry = {};
    std::intptr_t m_handle;
};

// The directory is entered and left once, the clock is read for each entry, and the result is sorted.
void BareScan(const std::wstring& base, StringList& files)
{
    wchar_t current[MAX_PATH];
    const wchar_t* const before = ::_wgetcwd(current, MAX_PATH);
    g_sink = static_cast<std::size_t>(::_wchdir(base.c_str()));
    g_sink = static_cast<std::size_t>(::_wchdir(before));
    Search search(base + L"*.*");
    if (!search.IsOpen()) {
        return;
    }
    const auto start = static_cast<std::ptrdiff_t>(files.size());
    do {
        g_sink = static_cast<std::size_t>(std::clock());
        if (!search.IsDirectory()) {
            files.push_back(base + search.Name());
        }
    } while (search.Next());
    std::sort(files.begin() + start, files.end());
}

void BareWalk(const std::wstring& base, StringList& directories)
{
    Search search(base + L"*.*");
    if (!search.IsOpen()) {
        return;
    }
    do {
        g_sink = static_cast<std::size_t>(std::clock());
        if (search.IsSubdirectory()) {
            directories.push_back(base + search.Name() + L"\\");
            BareWalk(directories.back(), directories);
        }
    } while (search.Next());
}

StringList BareTree(const std::wstring& base)
{
    StringList files;
    StringList directories;
    BareScan(base, files);
    BareWalk(base, directories);
    for (const std::wstring& directory : directories) {
        BareScan(directory, files);
    }
    return files;
}

// What a user would write without the library.
StringList LargeFetch(const std::wstring& directory)
{
    StringList files;
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = ::FindFirstFileExW((directory + L"\\*").c_str(), FindExInfoBasic, &entry,
                                             FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH);
    if (search == INVALID_HANDLE_VALUE) {
        return files;
    }
    do {
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            files.push_back(directory + L"\\" + entry.cFileName);
        }
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
    std::sort(files.begin(), files.end());
    return files;
}

Row DirectoryRow(int files)
{
    const std::wstring directory = kRoot + LR"(\files-)" + std::to_wstring(files);
    return {"listing",
            "ListFilesFilter, " + std::to_string(files) + " files",
            [directory] { g_sink = ListFilesFilter(directory, L"*", true).size(); },
            [directory] {
                StringList found;
                BareScan(directory + L"\\", found);
                g_sink = found.size();
            },
            "FindFirstFileExW",
            [directory] { g_sink = LargeFetch(directory).size(); },
            {},
            0,
            files};
}

Row TreeRow()
{
    const std::wstring tree = kRoot + LR"(\tree)";
    return {"listing",
            "ListFilesFilterRecursive, 50,000 files in 5,000 folders",
            [tree] { g_sink = ListFilesFilterRecursive(tree, L"*", true).size(); },
            [tree] { g_sink = BareTree(tree + L"\\").size(); },
            {},
            {},
            {}};
}

// The platform's calls are replaced by free ones in both sides, so that the library's own share is seen.
constexpr int kSimulatedFiles = 10000;
int g_next = 0;

void FillName(wchar_t* name)
{
    constexpr const wchar_t* kPrefix = L"a file with number 00000";
    constexpr std::size_t kDigits = 5;
    std::wcscpy(name, kPrefix);
    wchar_t* last = name + std::wcslen(name) - 1;
    int rest = g_next++;
    for (std::size_t i = 0; i < kDigits; ++i, rest /= 10) {
        *last-- = static_cast<wchar_t>(L'0' + rest % 10);
    }
}

std::intptr_t __cdecl FreeFirst(const wchar_t* /*pattern*/, _wfinddata64_t* entry)
{
    g_next = 0;
    entry->attrib = _A_NORMAL;
    FillName(entry->name);
    return 1;
}

int __cdecl FreeNext(std::intptr_t /*search*/, _wfinddata64_t* entry)
{
    if (g_next == kSimulatedFiles) {
        return -1;
    }
    FillName(entry->name);
    return 0;
}

int __cdecl FreeClose(std::intptr_t /*search*/)
{
    return 0;
}

std::clock_t __cdecl FreeClock()
{
    return 0;
}

void OwnListing()
{
    const ImportPatch first("_wfindfirst64", reinterpret_cast<void*>(&FreeFirst));
    const ImportPatch next("_wfindnext64", reinterpret_cast<void*>(&FreeNext));
    const ImportPatch close("_findclose", reinterpret_cast<void*>(&FreeClose));
    const ImportPatch clock("clock", reinterpret_cast<void*>(&FreeClock));
    g_sink = ListFilesFilter(L"C:\\", L"*", true).size();
}

void OwnListingBare()
{
    const std::wstring base = L"C:\\";
    StringList files;
    _wfinddata64_t entry = {};
    FreeFirst(nullptr, &entry);
    do {
        files.push_back(base + entry.name);
    } while (FreeNext(1, &entry) == 0);
    std::sort(files.begin(), files.end());
    g_sink = files.size();
}

} // namespace

std::vector<Row> ListingRows()
{
    return {DirectoryRow(1000),
            DirectoryRow(10000),
            DirectoryRow(100000),
            TreeRow(),
            {"listing", "own time without the platform, 10,000 files", &OwnListing, &OwnListingBare, {}, {}, {}}};
}

} // namespace bench
