// Deletion of directory trees: on Win32 within its 260 characters, on the runtime library for longer paths.

#include "frame/FileManager.h"

#include "frame/FailureReport.h"
#include "frame/ModuleState.h"
#include "win32/FindData.h"
#include "win32/InvalidParameter.h"
#include "win32/UniqueResource.h"

#include <windows.h>

#include <direct.h>

#include <cwchar>
#include <string_view>

namespace {

// A path in a buffer of 260 characters, terminator included. A string that does not fit is not appended at all.
class FixedPath {
public:
    [[nodiscard]] const wchar_t* Get() const noexcept { return m_path; }
    [[nodiscard]] std::size_t Length() const noexcept { return m_length; }

    [[nodiscard]] bool Append(std::wstring_view string) noexcept
    {
        if (string.size() >= MAX_PATH - m_length) {
            return false;
        }
        string.copy(m_path + m_length, string.size());
        CutTo(m_length + string.size());
        return true;
    }

    void CutTo(std::size_t length) noexcept
    {
        m_length = length;
        m_path[length] = L'\0';
    }

private:
    wchar_t m_path[MAX_PATH] = {};
    std::size_t m_length = 0;
};

// Deliberately pairs %s with a wide path: hosts know these formats. The error is read after the log line, so a logger
// that changes the thread's last error changes the report.
void LogUndeletedFile(const wchar_t* path)
{
    g_pfnLogger(g_detailLevel, "File couldn't be deleted: %s \n", path);
}

void LogUndeletedDirectory(const wchar_t* path)
{
    g_pfnLogger(g_detailLevel, "Directory couldn't be deleted: %s \n", path);
}

void ReportDeletionFailure()
{
    const DWORD error = ::GetLastError();
    if (error == ERROR_SUCCESS) {
        return;
    }
    const UniqueLocalMemory<wchar_t> message = FormatSystemError(error);
    LogWin32Failure(g_pfnLogger, g_detailLevel, "%S call failed: %d\n", L"RecursivelyDeleteVirtualDir", error,
                    message.get());
}

int DeleteTree(const wchar_t* directory);

bool DeleteSubdirectory(const wchar_t* path, UniqueFindHandle& search)
{
    if (DeleteTree(path) == 0) {
        search.Reset();
        LogUndeletedDirectory(path);
        ReportDeletionFailure();
        return false;
    }
    g_pfnLogger(g_detailLevel, "Deleting directory: %S \n", path);
    ::RemoveDirectoryW(path); // already removed; the second attempt is part of what hosts observe
    return true;
}

bool DeleteOneFile(const wchar_t* path)
{
    g_pfnLogger(g_detailLevel, "Deleting file: %S \n", path);
    if (!::DeleteFileW(path)) {
        LogUndeletedFile(path);
        ReportDeletionFailure();
        return false;
    }
    return true;
}

// Reports an entry that is not even tried: its path is too long, or its name invalid. The path is logged whole. Not
// inlined: its buffer would become part of each level of the recursion.
[[gnu::noinline]] void RejectEntry(const FixedPath& base, const WIN32_FIND_DATAW& entry, UniqueFindHandle& search,
                                   DWORD error)
{
    wchar_t path[MAX_PATH + MAX_PATH] = {};
    const std::wstring_view name = EntryName(entry);
    std::wmemcpy(path, base.Get(), base.Length());
    name.copy(path + base.Length(), name.size());
    if (IsDirectory(entry)) {
        search.Reset();
    }
    ::SetLastError(error);
    if (IsDirectory(entry)) {
        LogUndeletedDirectory(path);
    } else {
        LogUndeletedFile(path);
    }
    ReportDeletionFailure();
}

// `path` holds the directory with its trailing backslash; the entry's name is appended.
bool DeleteEntry(FixedPath& path, const WIN32_FIND_DATAW& entry, UniqueFindHandle& search)
{
    if (NameHasSeparator(EntryName(entry))) {
        RejectEntry(path, entry, search, ERROR_INVALID_NAME);
        return false;
    }
    if (!path.Append(EntryName(entry))) {
        RejectEntry(path, entry, search, ERROR_FILENAME_EXCED_RANGE);
        return false;
    }
    return IsDirectory(entry) ? DeleteSubdirectory(path.Get(), search) : DeleteOneFile(path.Get());
}

int DeleteTree(const wchar_t* directory)
{
    FixedPath path;
    if (!path.Append(directory) || !path.Append(L"\\*")) {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return 0;
    }
    WIN32_FIND_DATAW entry = {};
    UniqueFindHandle search(::FindFirstFileW(path.Get(), &entry));
    if (!search) {
        return 0;
    }
    const std::size_t base = path.Length() - 1; // the directory with its trailing backslash
    path.CutTo(base);
    // Kept for compatibility: the first entry is assumed to be "." and not examined. A drive's root has no such entry,
    // so its first entry stays.
    while (::FindNextFileW(search.Get(), &entry)) {
        if (IsDotEntry(entry)) {
            continue;
        }
        if (!DeleteEntry(path, entry, search)) {
            return 0;
        }
        path.CutTo(base);
    }
    if (::GetLastError() != ERROR_NO_MORE_FILES) {
        return 0;
    }
    search.Reset();
    return ::RemoveDirectoryW(directory);
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::RemoveOneDirectory(const std::wstring& directory)
{
    if (!BeginOperation(directory)) {
        return false;
    }
    std::wstring base = directory;
    if (!NormalizeDirectoryPath(base) || !DeleteFilesOf(base)) {
        return false;
    }
    if (::_wrmdir(base.c_str()) == -1) {
        RecordErrno(base);
    }
    return true; // deliberate: only the deletion of the files decides
}

bool CVssFileManager::CleanUpLongPath(const std::wstring& directory)
{
    if (!BeginOperation(directory)) {
        return false;
    }
    std::wstring base = directory;
    std::vector<std::wstring> directories;
    if (!NormalizeDirectoryPath(base) || !WalkDirectories(base, directories)) {
        return false;
    }
    // Kept for compatibility: this loop has no end of its own. After the first directory, and at once after a failure,
    // it accesses an element that does not exist, which is reported as an invalid parameter.
    bool result = true;
    for (std::size_t i = directories.size() - 1; i < directories.size() && result; --i) {
        result = RemoveOneDirectory(directories[i]);
    }
    ReportInvalidParameter();
    return result;
}

} // namespace quorvantavss

int DeleteDirectoryRecursive(const wchar_t* directory)
{
    // The pattern of an empty path would be that of the current drive's root.
    if (directory == nullptr || *directory == L'\0') {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    return DeleteTree(directory);
}

bool CleanupDirectory(const std::wstring& directory)
{
    constexpr std::size_t kLongestWin32Path = 260; // characters
    if (directory.size() <= kLongestWin32Path && directory.find(L'\0') != std::wstring::npos) {
        ::SetLastError(ERROR_INVALID_NAME); // the deleter would see the directory before the NUL
        return false;
    }
    if (directory.size() <= kLongestWin32Path) {
        return DeleteDirectoryRecursive(directory.c_str()) != 0;
    }
    return g_fileManager.CleanUpLongPath(directory);
}
