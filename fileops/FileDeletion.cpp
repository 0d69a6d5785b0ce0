// Deletion of the files of one directory, all of them or those that match a filter.

#include "frame/FileManager.h"

#include <windows.h>

#include <io.h>

#include <algorithm>
#include <cerrno>

namespace {

using quorvantavss::CVssFileManager;

// What a scan has found: files in their sorted order, and apart from them those whose names lead out of the directory.
struct FilesToDelete {
    std::vector<std::wstring> files;
    std::vector<std::wstring> invalid;
};

// Deletes the files in their order. A file with an invalid name counts as one that cannot be deleted, at its place in
// the order: later files are not tried.
template <typename Delete>
bool DeleteInOrder(CVssFileManager& manager, const FilesToDelete& found, Delete deleteOne)
{
    const auto invalid = std::min_element(found.invalid.begin(), found.invalid.end());
    const bool hasInvalid = invalid != found.invalid.end();
    const auto end =
        hasInvalid ? std::lower_bound(found.files.begin(), found.files.end(), *invalid) : found.files.end();
    if (!std::all_of(found.files.begin(), end, deleteOne)) {
        return false;
    }
    if (hasInvalid) {
        errno = EINVAL;
        ::SetLastError(ERROR_INVALID_NAME);
        manager.RecordErrno(*invalid);
    }
    return !hasInvalid;
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::DeleteOneFile(const std::wstring& path)
{
    if (!BeginOperation(path)) {
        return false;
    }
    std::wstring file = path;
    if (!ValidatePath(file)) {
        return false;
    }
    if (::_wunlink(file.c_str()) == -1) {
        RecordErrno(path);
        return false;
    }
    return true;
}

bool CVssFileManager::DeleteMatchingFiles(const std::wstring& directory, const std::wstring& filter)
{
    FilesToDelete found;
    ScanDirectory(filter, directory, found.files, true, &found.invalid);
    return DeleteInOrder(*this, found, [this](const std::wstring& file) { return DeleteOneFile(file); });
}

bool CVssFileManager::DeleteFilesOf(const std::wstring& directory)
{
    ClearErrorText();
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base)) {
        return false;
    }
    FilesToDelete found;
    if (!ScanDirectory(L"*.*", base, found.files, false, &found.invalid)) {
        return false;
    }
    return DeleteInOrder(*this, found, [&](const std::wstring& name) {
        const std::wstring file = base + name;
        if (::_wunlink(file.c_str()) != 0) {
            RecordErrno(file);
            return false;
        }
        return true;
    });
}

} // namespace quorvantavss

bool DeleteFilesFilter(const std::wstring& directory, const std::wstring& filter)
{
    return g_fileManager.DeleteMatchingFiles(directory, filter);
}
