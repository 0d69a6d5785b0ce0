// Existence, replaceability and size of files.

#include "frame/FileManager.h"

#include "win32/UniqueResource.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cerrno>

namespace quorvantavss {

FileProbe CVssFileManager::ProbeFile(const std::wstring& path)
{
    std::wstring file = path;
    if (!BeginOperation(path) || !ValidatePath(file)) {
        return FileProbe::kNotReadable;
    }
    const UniqueFileDescriptor opened(::_wopen(file.c_str(), _O_RDONLY));
    if (opened) {
        return FileProbe::kReadable;
    }
    if (errno == EMFILE) { // the runtime has not tried the file, and the last error is an older one
        return FileProbe::kUnknown;
    }
    return ::GetLastError() == ERROR_SHARING_VIOLATION ? FileProbe::kSharingViolation : FileProbe::kNotReadable;
}

bool CVssFileManager::isFileExists(const std::wstring& path)
{
    return ProbeFile(path) == FileProbe::kReadable;
}

} // namespace quorvantavss

bool isFileExists(const std::wstring& path)
{
    return g_fileManager.isFileExists(path);
}

bool IsFileExistsSnap(char* path)
{
    return path == nullptr || ::GetFileAttributesA(path) != INVALID_FILE_ATTRIBUTES;
}

bool IsCanReplaceFile(std::wstring& path)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    switch (g_fileManager.ProbeFile(path)) {
    case quorvantavss::FileProbe::kSharingViolation:
        return false;
    case quorvantavss::FileProbe::kNotReadable:
        return true;
    case quorvantavss::FileProbe::kReadable:
    case quorvantavss::FileProbe::kUnknown:
        break;
    }
    const DWORD flags = attributes == INVALID_FILE_ATTRIBUTES ? 0 : attributes;
    const UniqueFileHandle opened(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, flags, nullptr));
    return static_cast<bool>(opened);
}

std::int64_t getFileSize(std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return 0;
    }
    const auto high = static_cast<std::uint64_t>(data.nFileSizeHigh) << 32U;
    return static_cast<std::int64_t>(high | data.nFileSizeLow);
}
