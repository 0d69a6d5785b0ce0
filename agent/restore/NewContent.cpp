// What the new content of a restored file must be, and what it gets besides.

#include "agent/restore/NewContent.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

namespace agent {

namespace {

// @return the error that kept the file from the disk.
DWORD Flush(const std::wstring& path)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    return file != nullptr && ::FlushFileBuffers(file.get()) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace

RestoreFailure Damaged(const std::wstring& source)
{
    return {source, L"the copy in the backup is damaged: it differs from the manifest"};
}

// The library's copy ends with success also when a read error cuts it short, so what it wrote is read again.
std::optional<RestoreFailure> FillCacheFile(const std::wstring& cacheFile, const std::wstring& source,
                                            const ManifestFile& file, const std::wstring& target)
{
    if (DoCopyComponentFile(source, cacheFile) == 0) {
        const std::wstring reason = LastReason();
        const bool isReadable = DigestFile(source).has_value();
        return RestoreFailure{isReadable ? target : source, reason};
    }
    const auto digest = DigestFile(cacheFile);
    if (!digest) {
        return RestoreFailure{target, LastReason()};
    }
    if (*digest != file.digest) {
        return Damaged(source);
    }
    const DWORD error = Flush(cacheFile);
    return error == ERROR_SUCCESS ? std::nullopt : std::optional(RestoreFailure{target, SystemReason(error)});
}

bool SetInformation(HANDLE file, FileTime created, FileTime modified, DWORD attributes)
{
    FILE_BASIC_INFO information = {};
    information.CreationTime.QuadPart = created;
    information.LastWriteTime.QuadPart = modified;
    information.FileAttributes = attributes;
    return ::SetFileInformationByHandle(file, FileBasicInfo, &information, sizeof(information)) != FALSE;
}

bool SetInformation(const std::wstring& path, FileTime created, FileTime modified, DWORD attributes)
{
    const UniqueHandle file = Own(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return file != nullptr && SetInformation(file.get(), created, modified, attributes);
}

} // namespace agent
