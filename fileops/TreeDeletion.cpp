// Deletion of a directory tree on Win32, in the fixed room that Windows' paths have.

#include <Kestrovane.h>

#include "frame/FailureReport.h"
#include "frame/ModuleState.h"
#include "frame/UniqueResource.h"

#include <windows.h>

#include <cwchar>

namespace {

// A path in the 260 characters that Windows has for it, terminator included. Text that does not fit is refused whole.
class FixedPath {
public:
    const wchar_t* Text() const noexcept { return m_text; }
    std::size_t Length() const noexcept { return m_length; }

    bool Append(const wchar_t* text) noexcept
    {
        const std::size_t length = std::wcslen(text);
        if (length >= MAX_PATH - m_length) {
            return false;
        }
        std::wmemcpy(m_text + m_length, text, length + 1);
        m_length += length;
        return true;
    }

    void CutTo(std::size_t length) noexcept
    {
        m_length = length;
        m_text[length] = L'\0';
    }

private:
    wchar_t m_text[MAX_PATH] = {};
    std::size_t m_length = 0;
};

constexpr const char* kUndeletedDirectory = "Directory couldn't be deleted: %s \n";
constexpr const char* kUndeletedFile = "File couldn't be deleted: %s \n";

bool IsDotEntry(const WIN32_FIND_DATAW& entry)
{
    return std::wcscmp(entry.cFileName, L".") == 0 || std::wcscmp(entry.cFileName, L"..") == 0;
}

bool IsDirectory(const WIN32_FIND_DATAW& entry)
{
    return (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

// The formats pair %s with a wide path on purpose: hosts know them. The error is the thread's last one again afterwards,
// whatever the host's logger does.
void LogUndeleted(const char* format, const wchar_t* path, DWORD error)
{
    g_pfnLogger(g_detailLevel, format, path);
    if (error != ERROR_SUCCESS) {
        LogWin32Failure(g_pfnLogger, g_detailLevel, "%S call failed: %d\n", L"RecursivelyDeleteVirtualDir", error);
    }
    ::SetLastError(error);
}

int DeleteTree(const wchar_t* directory);

bool DeleteSubdirectory(const wchar_t* path, UniqueFindHandle& search)
{
    if (DeleteTree(path) == 0) {
        const DWORD error = ::GetLastError();
        search.Reset();
        LogUndeleted(kUndeletedDirectory, path, error);
        return false;
    }
    g_pfnLogger(g_detailLevel, "Deleting directory: %S \n", path);
    ::RemoveDirectoryW(path); // it has gone already; the second attempt is part of what hosts observe
    return true;
}

bool DeleteOneFile(const wchar_t* path)
{
    g_pfnLogger(g_detailLevel, "Deleting file: %S \n", path);
    if (!::DeleteFileW(path)) {
        LogUndeleted(kUndeletedFile, path, ::GetLastError());
        return false;
    }
    return true;
}

// An entry whose path has no room cannot be deleted; it is named whole all the same. Not inlined: its buffer would be
// part of every level of the recursion.
[[gnu::noinline]] void RefuseOverlongEntry(const FixedPath& base, const WIN32_FIND_DATAW& entry,
                                           UniqueFindHandle& search)
{
    wchar_t path[MAX_PATH + MAX_PATH] = {};
    std::wcscpy(path, base.Text());
    std::wcscpy(path + base.Length(), entry.cFileName);
    if (IsDirectory(entry)) {
        search.Reset();
    }
    LogUndeleted(IsDirectory(entry) ? kUndeletedDirectory : kUndeletedFile, path, ERROR_FILENAME_EXCED_RANGE);
}

// `path` holds the directory with its backslash, and the entry's name behind it afterwards.
bool DeleteEntry(FixedPath& path, const WIN32_FIND_DATAW& entry, UniqueFindHandle& search)
{
    if (!path.Append(entry.cFileName)) {
        RefuseOverlongEntry(path, entry, search);
        return false;
    }
    return IsDirectory(entry) ? DeleteSubdirectory(path.Text(), search) : DeleteOneFile(path.Text());
}

int DeleteTree(const wchar_t* directory)
{
    FixedPath path;
    if (!path.Append(directory) || !path.Append(L"\\*")) {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return 0;
    }
    WIN32_FIND_DATAW entry = {};
    UniqueFindHandle search(::FindFirstFileW(path.Text(), &entry));
    if (!search) {
        return 0;
    }
    const std::size_t base = path.Length() - 1; // up to and with the backslash
    path.CutTo(base);
    // The first entry is taken for "." without a look; in a drive's root, which has none, it stays.
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

int DeleteDirectoryRecursive(const wchar_t* directory)
{
    // Behind an empty path the pattern would be that of the current drive's root.
    if (directory == nullptr || *directory == L'\0') {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return 0;
    }
    return DeleteTree(directory);
}
