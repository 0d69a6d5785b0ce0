// Lists of cache files: their creation for many live files, their copy beside the live files, and their deletion.

#include "cache/CacheFile.h"

#include "frame/FileManager.h"

#include <windows.h>

#include <algorithm>
#include <cwchar>
#include <optional>

namespace {

// Returns the path of an entry of a file list; nothing for an entry that gets no cache file.
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
    UnnamedCacheFile created(cacheFile.c_str());
    cacheMap[WString2UpperCase(entry)] = WString2UpperCase(cacheFile);
    created.Keep();
    return true;
}

// Deletes a cache file, or registers its deletion at the next reboot if it is in use.
void DeleteNowOrAtReboot(const std::wstring& path)
{
    if (path.empty() || ::DeleteFileW(path.c_str())) {
        return;
    }
    // Deliberately unchecked: there is no further fallback.
    ::MoveFileExW(path.c_str(), nullptr, MOVEFILE_DELAY_UNTIL_REBOOT);
}

bool CopyBeside(const std::wstring& liveFile, const std::wstring& cacheFile)
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
            DeleteNowOrAtReboot(separator == L'\0' ? cacheFile : WStringAfterWCHAR(cacheFile, separator));
        }
        return true;
    } catch (...) {
        return false;
    }
}

bool DeleteCacheFileList(std::vector<std::wstring>& paths)
{
    try {
        std::for_each(paths.begin(), paths.end(), DeleteNowOrAtReboot);
    } catch (...) { // NOLINT(bugprone-empty-catch): deliberate, unlike the other overload true in every case
    }
    return true;
}

bool RestoreFileListCache(std::map<std::wstring, std::wstring>& cacheMap)
{
    bool allCopied = true;
    try {
        for (const auto& [liveFile, cacheFile] : cacheMap) {
            if (!CopyBeside(liveFile, cacheFile)) {
                allCopied = false;
            }
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): deliberate, the result so far is returned
    }
    return allCopied;
}
