// A file of a backup, written anew and verified before it takes anything's place.

#include "agent/restore/NewContent.h"

#include "agent/backup/FileCopy.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

namespace agent {

namespace {

UniqueHandle OpenForReading(const std::wstring& path)
{
    return Own(::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
}

// The library opens both files exclusively, and does not tell why a write stored only a part of a block.
std::optional<RestoreFailure> Copy(const std::wstring& source, const std::wstring& path, const std::wstring& target)
{
    if (DoCopyComponentFile(source, path) != 0) {
        return std::nullopt;
    }
    const CopyResult result = CopyWithSharing(source, path);
    if (result.isCopied) {
        return std::nullopt;
    }
    if (OpenForReading(source) == nullptr) {
        return RestoreFailure{source, LastReason()};
    }
    return RestoreFailure{target, SystemReason(result.error)};
}

RestoreFailure WhyDifferent(const std::wstring& source, const ManifestFile& file, const std::wstring& target)
{
    if (DigestFile(source) == file.digest) {
        return {target, L"its new content differs from the manifest after it was written"};
    }
    return {source, L"the copy in the backup is damaged: it differs from the manifest"};
}

bool Flush(const std::wstring& path)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    return file != nullptr && ::FlushFileBuffers(file.get());
}

} // namespace

std::optional<RestoreFailure> WriteVerified(const std::wstring& source, const std::wstring& path,
                                            const ManifestFile& file, const std::wstring& target)
{
    if (auto failure = Copy(source, path, target)) {
        return failure;
    }
    if (!Flush(path)) {
        return RestoreFailure{target, LastReason()};
    }
    // The copy ends with success also when a read error cuts it short.
    const auto digest = DigestFile(path);
    if (!digest) {
        return RestoreFailure{target, LastReason()};
    }
    if (*digest != file.digest) {
        return WhyDifferent(source, file, target);
    }
    return std::nullopt;
}

bool SetInformation(const std::wstring& path, FileTime created, FileTime modified, DWORD attributes)
{
    const UniqueHandle file = Own(::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, kShareAll, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    FILE_BASIC_INFO information = {};
    information.CreationTime.QuadPart = created;
    information.LastWriteTime.QuadPart = modified;
    information.FileAttributes = attributes;
    return file != nullptr &&
           ::SetFileInformationByHandle(file.get(), FileBasicInfo, &information, sizeof(information)) != FALSE;
}

} // namespace agent
