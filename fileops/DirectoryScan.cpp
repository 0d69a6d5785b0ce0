// The scan of one directory for files that match a filter.

#include "frame/FileManager.h"

#include "fileops/DirectorySearch.h"
#include "frame/ModuleState.h"

#include <algorithm>
#include <string_view>
#include <utility>

namespace {

using quorvantavss::CVssFileManager;

// Allocates once.
std::wstring Joined(std::wstring_view prefix, std::wstring_view name)
{
    std::wstring joined;
    joined.reserve(prefix.size() + name.size());
    joined.append(prefix).append(name);
    return joined;
}

// `list` may be null.
void AddIfWanted(std::vector<std::wstring>* list, std::wstring file)
{
    if (list != nullptr) {
        list->push_back(std::move(file));
    }
}

// Adds files to a sorted list. One sort at the end yields the same list as sorted insertion does, without moving
// elements for each file.
class SortedFiles {
public:
    explicit SortedFiles(std::vector<std::wstring>& files)
        : m_files(files), m_greatest(files.empty() ? 0 : files.size() - 1)
    {
    }

    // Returns whether sorted insertion would append the file at the end.
    bool Add(std::wstring file)
    {
        m_files.push_back(std::move(file));
        if (m_files.back() < m_files[m_greatest]) {
            m_isSorted = false;
            return false;
        }
        m_greatest = m_files.size() - 1;
        return true;
    }

    void Sort()
    {
        if (!m_isSorted) {
            std::sort(m_files.begin(), m_files.end());
        }
    }

private:
    std::vector<std::wstring>& m_files;
    std::size_t m_greatest; // index of the greatest element
    bool m_isSorted = true;
};

// Normalises the directory. Returns false if it is invalid, missing or cannot be searched.
bool PrepareScan(CVssFileManager& manager, std::wstring& directory)
{
    const std::wstring given = directory;
    manager.ClearErrorText();
    if (!manager.NormalizeDirectoryPath(directory)) {
        return false;
    }
    if (!DirectorySearch::IsSearchable(directory) || !manager.isDirectoryExists(directory)) {
        manager.RecordErrno(given);
        return false;
    }
    return true;
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::ScanDirectory(const std::wstring& filter, const std::wstring& directory,
                                    std::vector<std::wstring>& files, bool fullPath, std::vector<std::wstring>* invalid)
{
    std::wstring base = directory;
    if (!PrepareScan(*this, base)) {
        return false;
    }
    TickKeepAlive();
    DirectorySearch search(base, filter);
    if (!search) {
        return true;
    }
    const std::wstring_view prefix = fullPath ? std::wstring_view(base) : std::wstring_view();
    SortedFiles sorted(files);
    do {
        TickKeepAlive();
        if (search.IsDirectory()) {
            continue;
        }
        const std::wstring_view name = search.Name();
        std::wstring file = Joined(prefix, name);
        if (NameHasSeparator(name)) {
            AddIfWanted(invalid, std::move(file));
        } else if (sorted.Add(std::move(file))) {
            m_pfnLogger(kProgressLevel, "file =  %S\n", files.back().c_str());
        }
    } while (search.Next());
    sorted.Sort();
    return true;
}

} // namespace quorvantavss
