// Cache files: uniquely named copies of files that are in use during a restore.

#include "cache/CacheFile.h"

#include "frame/FileManager.h"
#include "win32/Bstr.h"
#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <algorithm>
#include <string_view>

namespace {

// GetTempFileNameW appends up to 14 characters.
constexpr std::size_t kMaxDirectoryLength = MAX_PATH - 14; // characters
constexpr const wchar_t* kFallbackDirectory = LR"(C:\#Quorvanta\Cache)";

// A buffer that holds whatever Windows appends to the directory.
CComBSTR BufferFor(const std::wstring& directory)
{
    return ZeroedBstr(directory.size() + MAX_PATH);
}

std::wstring TemporaryDirectory(const std::wstring& liveDirectory)
{
    const CComBSTR buffer = BufferFor(liveDirectory);
    // Deliberately unchecked: after a failure the buffer is empty, and an empty directory is rejected below.
    ::GetTempPathW(MAX_PATH, buffer.m_str);
    return ToWString(buffer);
}

std::wstring ChooseDirectory(const std::wstring& liveFile, bool useTempPath)
{
    std::wstring directory = g_fileManager.DirectoryPart(liveFile);
    if (directory.size() > kMaxDirectoryLength) {
        directory = kFallbackDirectory;
    }
    return useTempPath ? TemporaryDirectory(directory) : directory;
}

bool EnsureDirectory(const std::wstring& directory)
{
    return g_fileManager.isDirectoryExists(directory) || g_fileManager.RecursivelyCreateDirectory(directory);
}

// Whether the prefix can begin a file name. Some systems report success for another one, although the file is created
// elsewhere or not at all.
bool IsValidPrefix(std::wstring_view prefix)
{
    constexpr std::size_t kUsedLength = 3; // characters; GetTempFileNameW ignores the rest
    constexpr wchar_t kFirstPrintable = L' ';
    const auto used = prefix.substr(0, kUsedLength);
    return std::none_of(used.begin(), used.end(), [](wchar_t character) {
        return (character < kFirstPrintable && character != L'\0') ||
               std::wstring_view(LR"(\/:*?"<>|)").find(character) != std::wstring_view::npos;
    });
}

// Creates an empty file with a unique name. Returns false with the last error of the failure.
bool CreateUniqueFile(const std::wstring& directory, const std::wstring& prefix, std::wstring& path)
{
    const CComBSTR buffer = BufferFor(directory);
    if (::GetTempFileNameW(directory.c_str(), prefix.c_str(), 0, buffer.m_str) == 0) {
        return false;
    }
    UnnamedCacheFile created(buffer.m_str);
    path = ToWString(buffer);
    created.Keep();
    return !path.empty();
}

bool CreateAndFill(const std::wstring& liveFile, std::wstring& cacheFile, const std::wstring& prefix, bool useTempPath,
                   bool copyOriginal)
{
    if (!IsValidPrefix(prefix)) {
        ::SetLastError(ERROR_INVALID_NAME);
        return false;
    }
    const std::wstring directory = ChooseDirectory(liveFile, useTempPath);
    if (!EnsureDirectory(directory) || !CreateUniqueFile(directory, prefix, cacheFile)) {
        return false;
    }
    return !copyOriginal || g_fileManager.CopyToDirectoryAs(liveFile, directory, g_fileManager.FileNamePart(cacheFile));
}

bool RegisterMove(const std::wstring& cacheFile, const std::wstring& target)
{
    return EnsureDirectory(g_fileManager.DirectoryPart(target)) &&
           ::MoveFileExW(cacheFile.c_str(), target.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_DELAY_UNTIL_REBOOT);
}

} // namespace

UnnamedCacheFile::~UnnamedCacheFile()
{
    if (m_path != nullptr) {
        const LastErrorGuard keepLastError;
        ::DeleteFileW(m_path);
    }
}

bool CreateCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, std::wstring prefix, bool useTempPath,
                     bool copyOriginal)
{
    try {
        return CreateAndFill(liveFile, cacheFile, prefix, useTempPath, copyOriginal);
    } catch (...) {
        return false;
    }
}

bool MoveCacheFile(const std::wstring& cacheFile, std::wstring& target)
{
    try {
        return RegisterMove(cacheFile, target);
    } catch (...) {
        return false;
    }
}
