// Listings of the files of one directory and of whole trees.

#include "frame/FileManager.h"

#include "frame/ModuleState.h"

#include <algorithm>
#include <iterator>

namespace {

using quorvantavss::CVssFileManager;

// "*" would leave out names without a dot on some systems.
std::wstring WidenedFilter(const std::wstring& filter)
{
    return IsEqual(filter, L"*") ? L"*.*" : filter;
}

// Appends the sorted files of one directory to those of the tree.
bool AppendScan(CVssFileManager& manager, const std::wstring& filter, const std::wstring& directory,
                std::vector<std::wstring>& files)
{
    std::vector<std::wstring> found;
    if (!manager.ScanDirectory(filter, directory, found, true)) {
        return false;
    }
    for (std::wstring& file : found) {
        files.push_back(std::move(file));
        manager.Logger()(kProgressLevel, "file =  %S\n", files.back().c_str());
    }
    return true;
}

// Ends at the first directory that cannot be searched; what was added before stays in the list.
void AppendTree(CVssFileManager& manager, const std::wstring& filter, const std::wstring& directory,
                std::vector<std::wstring>& files)
{
    std::vector<std::wstring> directories;
    if (AppendScan(manager, filter, directory, files) && manager.WalkDirectories(directory, directories)) {
        static_cast<void>(std::all_of(directories.begin(), directories.end(), [&](const std::wstring& subdirectory) {
            return AppendScan(manager, filter, subdirectory, files);
        }));
    }
}

} // namespace

namespace quorvantavss {

std::vector<std::wstring> CVssFileManager::ListFiles(const std::wstring& directory, const std::wstring& filter,
                                                     bool fullPath)
{
    std::vector<std::wstring> files;
    ScanDirectory(WidenedFilter(filter), directory, files, fullPath);
    return files;
}

std::vector<std::wstring> CVssFileManager::ListTree(const std::wstring& directory, const std::wstring& filter,
                                                    bool fullPath)
{
    std::vector<std::wstring> files;
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return files;
    }
    AppendTree(*this, WidenedFilter(filter), base, files);
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
