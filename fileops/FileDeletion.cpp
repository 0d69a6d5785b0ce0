// Deletion of files and directories on the runtime library, and the clean-up of directories with long paths.

#include "frame/FileManager.h"

#include "frame/InvalidParameter.h"

#include <direct.h>
#include <io.h>

#include <algorithm>

namespace quorvantavss {

bool CVssFileManager::DeleteFileOrRecord(const std::wstring& path)
{
    if (::_wunlink(path.c_str()) == -1) {
        RecordErrno(path);
        return false;
    }
    return true;
}

bool CVssFileManager::DeleteOneFile(const std::wstring& path)
{
    ClearErrorText();
    if (path.empty()) {
        ReportLastError();
        return false;
    }
    std::wstring valid = path;
    return ValidatePath(valid) && DeleteFileOrRecord(valid);
}

bool CVssFileManager::DeleteMatchingFiles(const std::wstring& directory, const std::wstring& filter)
{
    std::vector<std::wstring> files;
    ScanDirectory(filter, directory, files, true);
    return std::all_of(files.begin(), files.end(), [this](const std::wstring& file) { return DeleteOneFile(file); });
}

bool CVssFileManager::DeleteFilesOf(const std::wstring& directory)
{
    ClearErrorText();
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return false;
    }
    std::vector<std::wstring> names;
    if (!ScanDirectory(L"*.*", base, names, false)) {
        return false;
    }
    return std::all_of(names.begin(), names.end(),
                       [&](const std::wstring& name) { return DeleteFileOrRecord(base + name); });
}

bool CVssFileManager::RemoveOneDirectory(const std::wstring& directory)
{
    ClearErrorText();
    if (directory.empty()) {
        ReportLastError();
        return false;
    }
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base) || !DeleteFilesOf(base)) {
        return false;
    }
    if (::_wrmdir(base.c_str()) == -1) {
        RecordErrno(base);
    }
    return true; // on purpose: only the files decide
}

bool CVssFileManager::CleanUpLongPath(const std::wstring& directory)
{
    ClearErrorText();
    if (directory.empty()) {
        ReportLastError();
        return false;
    }
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return false;
    }
    std::vector<std::wstring> directories;
    if (!WalkDirectories(base, directories)) {
        return false;
    }
    // Hosts know this loop for not ending by itself: behind the first directory, and at once after a failure, it asks for
    // an element that is not there, which is reported as an invalid parameter.
    bool result = true;
    for (std::size_t i = directories.size() - 1; i < directories.size() && result; --i) {
        result = RemoveOneDirectory(directories[i]);
    }
    ReportInvalidParameter();
    return result;
}

} // namespace quorvantavss

bool DeleteFilesFilter(const std::wstring& directory, const std::wstring& filter)
{
    return g_fileManager.DeleteMatchingFiles(directory, filter);
}

bool CleanupDirectory(const std::wstring& directory)
{
    constexpr std::size_t kLongestForWin32 = 260; // characters
    if (directory.size() <= kLongestForWin32) {
        return DeleteDirectoryRecursive(directory.c_str()) != 0;
    }
    return g_fileManager.CleanUpLongPath(directory);
}
