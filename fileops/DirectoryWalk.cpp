// The subdirectories of a directory, at any depth or at the first level.

#include "frame/FileManager.h"

#include "fileops/DirectorySearch.h"
#include "win32/LifoStack.h"

#include <optional>
#include <utility>

namespace {

using quorvantavss::CVssFileManager;

// A directory whose subdirectories are visited one after the other.
class SearchedDirectory {
public:
    // `search` points to the first entry of `base`, which ends with a backslash.
    SearchedDirectory(std::wstring base, DirectorySearch search) : m_base(std::move(base)), m_search(std::move(search))
    {
    }

    // Moves to the next entry, at first to the first one; false if there is none.
    bool Advance() noexcept { return std::exchange(m_isFresh, false) || m_search.Next(); }

    [[nodiscard]] bool IsSubdirectory() const noexcept { return m_search.IsSubdirectory(); }
    [[nodiscard]] std::wstring Path() const { return std::wstring(m_base).append(m_search.Name()); }

private:
    std::wstring m_base;
    DirectorySearch m_search;
    bool m_isFresh = true;
};

// Returns nothing if the directory is invalid or cannot be searched.
std::optional<SearchedDirectory> SearchSubdirectories(CVssFileManager& manager, const std::wstring& directory)
{
    manager.ClearErrorText();
    std::wstring base = directory;
    if (!manager.NormalizeDirectoryPath(base)) {
        return std::nullopt;
    }
    const std::wstring filter = L"*.*";
    manager.TickKeepAlive();
    DirectorySearch search(base, filter);
    if (!search) {
        manager.RecordErrno(base + filter);
        return std::nullopt;
    }
    return SearchedDirectory(std::move(base), std::move(search));
}

// The directories from the top to the current one. They are on the heap: a tree with long paths can be deeper than the
// stack allows.
using OpenDirectories = LifoStack<SearchedDirectory>;

bool Enter(CVssFileManager& manager, const std::wstring& directory, OpenDirectories& open)
{
    std::optional<SearchedDirectory> searched = SearchSubdirectories(manager, directory);
    if (!searched) {
        return false;
    }
    open.Push(*std::move(searched));
    return true;
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::WalkDirectories(const std::wstring& directory, std::vector<std::wstring>& directories)
{
    OpenDirectories open;
    if (!Enter(*this, directory, open)) {
        return false;
    }
    while (!open.IsEmpty()) {
        SearchedDirectory& current = open.Top();
        if (!current.Advance()) {
            open.Pop();
            continue;
        }
        TickKeepAlive();
        if (current.IsSubdirectory()) {
            const std::wstring path = current.Path();
            directories.push_back(path + L'\\');
            if (!Enter(*this, path, open)) {
                return false;
            }
        }
    }
    return true;
}

std::vector<std::wstring> CVssFileManager::ListDirectories(const std::wstring& directory)
{
    std::vector<std::wstring> directories;
    std::optional<SearchedDirectory> searched = SearchSubdirectories(*this, directory);
    while (searched && searched->Advance()) {
        TickKeepAlive();
        if (searched->IsSubdirectory()) {
            directories.push_back(searched->Path());
        }
    }
    return directories;
}

} // namespace quorvantavss

std::vector<std::wstring> ListDirecoriesRecursive(const std::wstring& directory)
{
    return g_fileManager.ListDirectories(directory);
}
