// Cache files: uniquely named copies of files that are in use during a restore.

#include "frame/FileManager.h"

#include <windows.h>

namespace {

// A unique file name adds up to 14 characters to its directory.
constexpr std::size_t kLongestDirectory = MAX_PATH - 14; // characters
constexpr const wchar_t* kFallbackDirectory = LR"(C:\#Quorvanta\Cache)";

// All zero, and long enough for whatever Windows appends to the directory.
CComBSTR NameBuffer(const std::wstring& directory)
{
    return CComBSTR(static_cast<int>(directory.size() + MAX_PATH));
}

std::wstring TextOf(const CComBSTR& buffer)
{
    return buffer.m_str == nullptr ? std::wstring() : std::wstring(buffer.m_str);
}

std::wstring TemporaryDirectory(const std::wstring& liveDirectory)
{
    const CComBSTR buffer = NameBuffer(liveDirectory);
    // A directory that Windows has no room for leaves the buffer empty, and an empty directory cannot be made below.
    ::GetTempPathW(MAX_PATH, buffer.m_str);
    return TextOf(buffer);
}

std::wstring ChooseDirectory(const std::wstring& liveFile, bool useTempPath)
{
    std::wstring directory = g_fileManager.DirectoryPart(liveFile);
    if (directory.size() > kLongestDirectory) {
        directory = kFallbackDirectory;
    }
    return useTempPath ? TemporaryDirectory(directory) : directory;
}

bool EnsureDirectory(const std::wstring& directory)
{
    return g_fileManager.isDirectoryExists(directory) || g_fileManager.RecursivelyCreateDirectory(directory);
}

bool MakeCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, const std::wstring& prefix, bool useTempPath,
                   bool copyOriginal)
{
    const std::wstring directory = ChooseDirectory(liveFile, useTempPath);
    if (!EnsureDirectory(directory)) {
        return false;
    }
    const CComBSTR name = NameBuffer(directory);
    if (::GetTempFileNameW(directory.c_str(), prefix.c_str(), 0, name.m_str) == 0) {
        return false;
    }
    cacheFile = TextOf(name);
    if (cacheFile.empty()) {
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

bool CreateCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, std::wstring prefix, bool useTempPath,
                     bool copyOriginal)
{
    try {
        return MakeCacheFile(liveFile, cacheFile, prefix, useTempPath, copyOriginal);
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
