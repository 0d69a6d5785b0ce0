// Lists of cache files: creation for many live files, return beside them, removal.

#include "frame/FileManager.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <optional>

namespace {

// The path in an entry of a file list; nothing for the entries that get no cache file.
std::optional<std::wstring> PathOfEntry(const std::wstring& entry, wchar_t separator)
{
    if (separator == L'\0') {
        return entry;
    }
    if (::_wcsicmp(WStringBeforeWCHAR(entry, separator).c_str(), L"XML") == 0) {
        return std::nullopt;
    }
    return WStringAfterWCHAR(entry, separator);
}

bool CacheEntry(const std::wstring& entry, wchar_t separator, const std::wstring& prefix, bool useTempPath,
                std::map<std::wstring, std::wstring>& cacheMap, bool copyOriginal)
{
    const auto path = PathOfEntry(entry, separator);
    if (!path) {
        return true;
    }
    std::wstring cacheFile;
    if (!CreateCacheFile(*path, cacheFile, prefix, useTempPath, copyOriginal)) {
        return false;
    }
    cacheMap[WString2UpperCase(entry)] = WString2UpperCase(cacheFile);
    return true;
}

// Deletes a cache file now or, when it is in use, at the next restart.
void DeleteNowOrAtRestart(const std::wstring& path)
{
    if (path.empty() || ::DeleteFileW(path.c_str())) {
        return;
    }
    // Best effort: there is no third way, so this result is not looked at.
    ::MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
}

bool BringBeside(const std::wstring& liveFile, const std::wstring& cacheFile)
{
    return g_fileManager.CopyToDirectoryAs(cacheFile, g_fileManager.DirectoryPart(liveFile),
                                           g_fileManager.FileNamePart(cacheFile));
}

} // namespace

bool CreateCacheFileList(std::vector<std::wstring> files, wchar_t separator, std::wstring prefix, bool useTempPath,
                         std::map<std::wstring, std::wstring>& cacheMap, bool copyOriginal)
{
    try {
        return std::all_of(files.begin(), files.end(), [&](const std::wstring& entry) {
            return CacheEntry(entry, separator, prefix, useTempPath, cacheMap, copyOriginal);
        });
    } catch (...) {
        return false;
    }
}

bool DeleteCacheFileList(std::map<std::wstring, std::wstring>& cacheMap, wchar_t separator)
{
    try {
        for (const auto& [liveFile, cacheFile] : cacheMap) {
            DeleteNowOrAtRestart(separator == L'\0' ? cacheFile : WStringAfterWCHAR(cacheFile, separator));
        }
        return true;
    } catch (...) {
        return false;
    }
}

bool DeleteCacheFileList(std::vector<std::wstring>& paths)
{
    try {
        std::for_each(paths.begin(), paths.end(), DeleteNowOrAtRestart);
    } catch (...) { // NOLINT(bugprone-empty-catch): unlike the other overload, true whatever happens
    }
    return true;
}

bool RestoreFileListCache(std::map<std::wstring, std::wstring>& cacheMap)
{
    bool allCopied = true;
    try {
        for (const auto& [liveFile, cacheFile] : cacheMap) {
            if (!BringBeside(liveFile, cacheFile)) {
                allCopied = false;
            }
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): the result stands as it was
    }
    return allCopied;
}
