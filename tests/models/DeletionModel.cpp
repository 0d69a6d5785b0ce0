// A plain restatement of the tree deletion's steps, and the simulated file system that it and the library work on.

#include "tests/models/DeletionModel.h"

#include <algorithm>
#include <cwchar>

namespace {

constexpr int kDetail = 0;             // level of log lines
constexpr std::size_t kCapacity = 260; // characters of a path and a pattern, terminator included
constexpr BOOL kRemoved = 7;           // unlike TRUE: the deletion returns this result

void Fill(WIN32_FIND_DATAW& data, const SimulatedTree::Entry& entry)
{
    data = {};
    data.dwFileAttributes = entry.attributes;
    entry.name.copy(data.cFileName, std::size(data.cFileName));
}

std::wstring NameOf(const WIN32_FIND_DATAW& entry)
{
    return {entry.cFileName, ::wcsnlen(entry.cFileName, std::size(entry.cFileName))};
}

std::wstring Number(HANDLE search)
{
    return std::to_wstring(reinterpret_cast<std::uintptr_t>(search));
}

// A closing call leaves the last error as it was, even if it fails.
void Close(SimulatedTree& tree, HANDLE search)
{
    const DWORD error = ::GetLastError();
    tree.FindClose(search);
    ::SetLastError(error);
}

void Log(SimulatedTree& tree, const char* format, const std::wstring& path)
{
    tree.script.Succeeds(LogLine(kDetail, format, {path}));
}

void ReportFailure(SimulatedTree& tree)
{
    const FailureReport report = {"%S call failed: %d\n", L"RecursivelyDeleteVirtualDir", kDetail};
    AddFailureReport(tree.script, report, ::GetLastError());
}

void LogUndeleted(SimulatedTree& tree, bool isDirectory, const std::wstring& path)
{
    Log(tree, isDirectory ? "Directory couldn't be deleted: %s \n" : "File couldn't be deleted: %s \n", path);
    ReportFailure(tree);
}

// An entry whose path is too long, or whose name leads out of its directory, fails like one that cannot be deleted.
DWORD ErrorOfName(const std::wstring& base, const std::wstring& name)
{
    if (name.find_first_of(LR"(\/)") != std::wstring::npos) {
        return ERROR_INVALID_NAME;
    }
    return (base + name).size() >= kCapacity ? ERROR_FILENAME_EXCED_RANGE : ERROR_SUCCESS;
}

// Returns whether the entry is deleted. `isClosed` tells whether the search was closed on the way.
bool DeleteEntry(SimulatedTree& tree, const std::wstring& base, const WIN32_FIND_DATAW& entry, HANDLE search,
                 bool& isClosed)
{
    const std::wstring path = base + NameOf(entry);
    const bool isDirectory = (entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    const DWORD nameError = ErrorOfName(base, NameOf(entry));
    if (isDirectory && (nameError != ERROR_SUCCESS || DeleteDirectoryByModel(tree, path) == 0)) {
        Close(tree, search);
        isClosed = true;
        if (nameError != ERROR_SUCCESS) {
            ::SetLastError(nameError);
        }
        LogUndeleted(tree, true, path);
        return false;
    }
    if (isDirectory) {
        Log(tree, "Deleting directory: %S \n", path);
        tree.RemoveDirectory(path);
        return true;
    }
    if (nameError != ERROR_SUCCESS) {
        ::SetLastError(nameError);
        LogUndeleted(tree, false, path);
        return false;
    }
    Log(tree, "Deleting file: %S \n", path);
    if (tree.DeleteFile(path) == FALSE) {
        LogUndeleted(tree, false, path);
        return false;
    }
    return true;
}

} // namespace

HANDLE SimulatedTree::FindFirst(const std::wstring& pattern, WIN32_FIND_DATAW& entry)
{
    if (!script.Succeeds(L"FindFirstFileW " + pattern)) {
        return INVALID_HANDLE_VALUE;
    }
    const auto directory = m_directories.find(pattern.substr(0, pattern.size() - 2));
    if (directory == m_directories.end() || directory->second.empty()) {
        ::SetLastError(ERROR_PATH_NOT_FOUND);
        return INVALID_HANDLE_VALUE;
    }
    m_searches.push_back({directory->second, 1});
    Fill(entry, directory->second.front());
    return reinterpret_cast<HANDLE>(m_searches.size());
}

BOOL SimulatedTree::FindNext(HANDLE search, WIN32_FIND_DATAW& entry)
{
    if (!script.Succeeds(L"FindNextFileW " + Number(search))) {
        return FALSE;
    }
    Search& open = m_searches[reinterpret_cast<std::uintptr_t>(search) - 1];
    if (open.next == open.entries.size()) {
        ::SetLastError(ERROR_NO_MORE_FILES);
        return FALSE;
    }
    Fill(entry, open.entries[open.next++]);
    return TRUE;
}

BOOL SimulatedTree::FindClose(HANDLE search)
{
    return script.Succeeds(L"FindClose " + Number(search)) ? TRUE : FALSE;
}

BOOL SimulatedTree::RemoveEntry(const std::wstring& path, bool isDirectory)
{
    const auto backslash = path.rfind(L'\\');
    const auto parent = m_directories.find(path.substr(0, backslash));
    const std::wstring name = path.substr(backslash + 1);
    const bool isThere =
        parent != m_directories.end() && std::erase_if(parent->second, [&](const Entry& entry) {
                                             return entry.name == name &&
                                                    ((entry.attributes & FILE_ATTRIBUTE_DIRECTORY) != 0) == isDirectory;
                                         }) > 0;
    if (!isThere) {
        ::SetLastError(ERROR_FILE_NOT_FOUND);
    }
    return isThere ? kRemoved : FALSE;
}

BOOL SimulatedTree::DeleteFile(const std::wstring& path)
{
    return script.Succeeds(L"DeleteFileW " + path) ? RemoveEntry(path, false) : FALSE;
}

BOOL SimulatedTree::RemoveDirectory(const std::wstring& path)
{
    if (!script.Succeeds(L"RemoveDirectoryW " + path)) {
        return FALSE;
    }
    const auto directory = m_directories.find(path);
    if (directory != m_directories.end() &&
        std::any_of(directory->second.begin(), directory->second.end(),
                    [](const Entry& entry) { return entry.name != L"." && entry.name != L".."; })) {
        ::SetLastError(ERROR_DIR_NOT_EMPTY);
        return FALSE;
    }
    m_directories.erase(path);
    return RemoveEntry(path, true);
}

int DeleteDirectoryByModel(SimulatedTree& tree, const std::wstring& directory)
{
    const std::wstring pattern = directory + L"\\*";
    if (pattern.size() >= kCapacity) {
        ::SetLastError(ERROR_FILENAME_EXCED_RANGE);
        return 0;
    }
    WIN32_FIND_DATAW entry = {};
    HANDLE search = tree.FindFirst(pattern, entry);
    if (search == INVALID_HANDLE_VALUE) {
        return 0;
    }
    while (tree.FindNext(search, entry) != FALSE) { // the first entry is not examined
        bool isClosed = false;
        const bool isDot = NameOf(entry) == L"." || NameOf(entry) == L"..";
        if (!isDot && !DeleteEntry(tree, directory + L"\\", entry, search, isClosed)) {
            if (!isClosed) {
                Close(tree, search);
            }
            return 0;
        }
    }
    const DWORD error = ::GetLastError();
    Close(tree, search);
    return error == ERROR_NO_MORE_FILES ? tree.RemoveDirectory(directory) : 0;
}
