// A directory tree as a backup sees it.

#include "agent/backup/SourceTree.h"

#include "agent/console/Interrupt.h"
#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"

#include <Kestrovane.h>

#include <algorithm>

namespace agent {

namespace {

class Reader {
public:
    Reader(std::wstring root, std::wstring filter) : m_root(std::move(root)), m_filter(std::move(filter)) {}

    SourceTree Read()
    {
        ReadDirectory(L"");
        return std::move(m_tree);
    }

private:
    std::vector<std::wstring> FileNames(const std::wstring& directory) const
    {
        if (isDirectoryExists(directory)) {
            return ListFilesFilter(directory, m_filter, false);
        }
        // The library lists what a process can change into, and a snapshot device is not such a directory.
        std::vector<std::wstring> names;
        WIN32_FIND_DATAW entry = {};
        const UniqueSearch search = OwnSearch(::FindFirstFileW(Join(directory, m_filter).c_str(), &entry));
        for (bool found = static_cast<bool>(search); found; found = ::FindNextFileW(search.get(), &entry) != 0) {
            if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
                names.emplace_back(entry.cFileName);
            }
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // `relative` is empty for the root, else it ends with a backslash.
    void ReadDirectory(const std::wstring& relative)
    {
        const std::wstring directory = Join(m_root, relative);
        if (IsInterrupted() || !CanBeRead(directory)) {
            return;
        }
        for (const std::wstring& name : FileNames(directory)) {
            m_tree.files.push_back(relative + name);
        }
        for (const std::wstring& path : ListDirecoriesRecursive(directory)) {
            ReadSubdirectory(relative + path.substr(path.rfind(L'\\') + 1), path);
        }
    }

    void ReadSubdirectory(const std::wstring& relative, const std::wstring& path)
    {
        const auto information = ReadInformation(path);
        if (information && information->IsLink()) {
            m_tree.links.push_back(relative);
            return;
        }
        const auto identity = ReadIdentity(path);
        if (identity && std::find(m_above.begin(), m_above.end(), *identity) != m_above.end()) {
            m_tree.failures.emplace_back(path, L"leads back to a directory above it");
            return;
        }
        m_tree.directories.push_back(relative);
        m_above.push_back(identity.value_or(FileIdentity()));
        ReadDirectory(relative + L'\\');
        m_above.pop_back();
    }

    bool CanBeRead(const std::wstring& directory)
    {
        if (IsTooLong(directory)) {
            m_tree.failures.emplace_back(directory, L"the path has more than 259 characters");
            return false;
        }
        WIN32_FIND_DATAW entry = {};
        const UniqueSearch search = OwnSearch(::FindFirstFileW(Join(directory, L"*").c_str(), &entry));
        if (!search) {
            const DWORD error = ::GetLastError();
            if (error == ERROR_FILE_NOT_FOUND) {
                return true; // an empty root has no entries at all
            }
            m_tree.failures.emplace_back(directory, SystemReason(error));
            return false;
        }
        return true;
    }

    std::wstring m_root;
    std::wstring m_filter;
    std::vector<FileIdentity> m_above;
    SourceTree m_tree;
};

} // namespace

SourceTree ReadSourceTree(const std::wstring& root, const std::wstring& filter)
{
    return Reader(root, filter).Read();
}

} // namespace agent
