// Listings of one directory and of whole trees, on the runtime library's find functions.

#include "frame/FileManager.h"

#include "frame/ModuleState.h"
#include "frame/UniqueResource.h"

#include <io.h>

#include <algorithm>
#include <cwchar>
#include <utility>

namespace {

// A search that stands on one entry at a time. An entry that is not there ends it.
class DirectorySearch {
public:
    explicit DirectorySearch(const std::wstring& pattern) : m_search(::_wfindfirst64i32(pattern.c_str(), &m_entry)) {}

    explicit operator bool() const noexcept { return static_cast<bool>(m_search); }
    bool Next() noexcept { return ::_wfindnext64i32(m_search.Get(), &m_entry) == 0; }

    const wchar_t* Name() const noexcept { return m_entry.name; }
    bool IsDirectory() const noexcept { return (m_entry.attrib & _A_SUBDIR) != 0; }
    bool IsSubdirectory() const noexcept
    {
        return IsDirectory() && std::wcscmp(Name(), L".") != 0 && std::wcscmp(Name(), L"..") != 0;
    }

private:
    _wfinddata64i32_t m_entry = {};
    UniqueRuntimeSearch m_search;
};

// "*" would leave out names without a dot on some systems.
std::wstring WidenedFilter(const std::wstring& filter)
{
    return IsEqual(filter, L"*") ? L"*.*" : filter;
}

} // namespace

namespace quorvantavss {

// A directory whose entries are gone through one after the other.
class SearchedDirectory {
public:
    // `base` ends with a backslash; `search` stands on its first entry.
    SearchedDirectory(std::wstring base, DirectorySearch search) : m_base(std::move(base)), m_search(std::move(search))
    {
    }

    // Goes to the next entry, at first to the first one; false when there is none.
    bool Advance() noexcept { return std::exchange(m_isFresh, false) || m_search.Next(); }

    bool IsSubdirectory() const noexcept { return m_search.IsSubdirectory(); }
    std::wstring Path() const { return m_base + m_search.Name(); } // of the entry

private:
    std::wstring m_base;
    DirectorySearch m_search;
    bool m_isFresh = true;
};

void CVssFileManager::TickKeepAlive()
{
    const double secondsSince = TicksSince(m_keepAliveStamp, std::clock()) / static_cast<double>(kClockTicksPerSecond);
    if (secondsSince + 1.0 > kKeepAlivePeriod) {
        m_pfnKeepAlive(kKeepAlivePeriod);
        m_keepAliveStamp = std::clock();
    }
}

void CVssFileManager::LogFile(const std::wstring& file)
{
    m_pfnLogger(kProgressLevel, "file =  %S\n", file.c_str());
}

bool CVssFileManager::ScanDirectory(const std::wstring& filter, const std::wstring& directory,
                                    std::vector<std::wstring>& files, bool fullPath)
{
    ClearErrorText();
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return false;
    }
    if (!isDirectoryExists(base)) {
        RecordErrno(directory);
        return false;
    }
    TickKeepAlive();
    DirectorySearch search(base + filter);
    if (!search) {
        return true;
    }
    // Files are logged as a sorted insertion would log them: when they belong at the end of what was found so far.
    // One sort at the end then gives the same list without moving its elements for every file.
    std::size_t last = files.empty() ? 0 : files.size() - 1; // where the greatest element is
    do {
        TickKeepAlive();
        if (search.IsDirectory()) {
            continue;
        }
        files.push_back(fullPath ? base + search.Name() : std::wstring(search.Name()));
        if (!(files.back() < files[last])) {
            last = files.size() - 1;
            LogFile(files.back());
        }
    } while (search.Next());
    std::sort(files.begin(), files.end());
    return true;
}

// Nothing when the directory is refused or cannot be searched.
std::optional<SearchedDirectory> CVssFileManager::SearchSubdirectories(const std::wstring& directory)
{
    ClearErrorText();
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return std::nullopt;
    }
    const std::wstring pattern = base + L"*.*";
    TickKeepAlive();
    DirectorySearch search(pattern);
    if (!search) {
        RecordErrno(pattern);
        return std::nullopt;
    }
    return SearchedDirectory(std::move(base), std::move(search));
}

// The levels of the tree stand in a list of their own: long paths can be deeper than the stack.
bool CVssFileManager::WalkDirectories(const std::wstring& directory, std::vector<std::wstring>& directories)
{
    std::vector<SearchedDirectory> levels;
    const auto enter = [&](const std::wstring& path) {
        std::optional<SearchedDirectory> level = SearchSubdirectories(path);
        if (!level) {
            return false;
        }
        levels.push_back(*std::move(level));
        return true;
    };
    if (!enter(directory)) {
        return false;
    }
    while (!levels.empty()) {
        if (!levels.back().Advance()) {
            levels.pop_back();
            continue;
        }
        TickKeepAlive();
        if (levels.back().IsSubdirectory()) {
            const std::wstring path = levels.back().Path();
            directories.push_back(path + L'\\');
            if (!enter(path)) {
                return false;
            }
        }
    }
    return true;
}

std::vector<std::wstring> CVssFileManager::ListFiles(const std::wstring& directory, const std::wstring& filter,
                                                     bool fullPath)
{
    std::vector<std::wstring> files;
    ScanDirectory(WidenedFilter(filter), directory, files, fullPath);
    return files;
}

// Adds the sorted files of one directory to those of the tree.
bool CVssFileManager::AppendScan(const std::wstring& filter, const std::wstring& directory,
                                 std::vector<std::wstring>& files)
{
    std::vector<std::wstring> found;
    if (!ScanDirectory(filter, directory, found, true)) {
        return false;
    }
    for (std::wstring& file : found) {
        files.push_back(std::move(file));
        LogFile(files.back());
    }
    return true;
}

bool CVssFileManager::ListTreeInto(const std::wstring& filter, const std::wstring& directory,
                                   std::vector<std::wstring>& files)
{
    std::vector<std::wstring> directories;
    return AppendScan(filter, directory, files) && WalkDirectories(directory, directories) &&
           std::all_of(directories.begin(), directories.end(),
                       [&](const std::wstring& subdirectory) { return AppendScan(filter, subdirectory, files); });
}

std::vector<std::wstring> CVssFileManager::ListTree(const std::wstring& directory, const std::wstring& filter,
                                                    bool fullPath)
{
    std::vector<std::wstring> files;
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return files;
    }
    ListTreeInto(WidenedFilter(filter), base, files);
    if (fullPath) {
        return files;
    }
    int index = 0;
    for (std::wstring& file : files) {
        file.erase(0, base.size());
        m_pfnLogger(kProgressLevel, "temp[ %d ] =  %S\n", index, file.c_str());
        ++index;
    }
    return files;
}

std::vector<std::wstring> CVssFileManager::ListDirectories(const std::wstring& directory)
{
    std::vector<std::wstring> directories;
    std::optional<SearchedDirectory> searched = SearchSubdirectories(directory);
    while (searched && searched->Advance()) {
        TickKeepAlive();
        if (searched->IsSubdirectory()) {
            directories.push_back(searched->Path());
        }
    }
    return directories;
}

} // namespace quorvantavss

std::vector<std::wstring> ListFilesFilter(const std::wstring& directory, const std::wstring& filter, bool fullPath)
{
    return g_fileManager.ListFiles(directory, filter, fullPath);
}

std::vector<std::wstring> ListFilesFilterRecursive(const std::wstring& directory, const std::wstring& filter,
                                                   bool fullPath)
{
    return g_fileManager.ListTree(directory, filter, fullPath);
}

std::vector<std::wstring> ListDirecoriesRecursive(const std::wstring& directory)
{
    return g_fileManager.ListDirectories(directory);
}
