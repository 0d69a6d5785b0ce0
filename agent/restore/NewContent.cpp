// A file of a backup, written anew and verified before it takes anything's place.

#include "agent/restore/NewContent.h"

#include "agent/backup/FileCopy.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

#include <future>

namespace agent {

namespace {

constexpr std::int64_t kLargeFile = 8LL << 20U; // bytes: a thread costs less than its flush

UniqueHandle OpenForReading(const std::wstring& path)
{
    return Own(::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
}

RestoreFailure WhyDifferent(const std::wstring& source, const ManifestFile& file, const std::wstring& target)
{
    if (DigestFile(source) == file.digest) {
        return {target, L"its new content differs from the manifest after it was written"};
    }
    return {source, L"the copy in the backup is damaged: it differs from the manifest"};
}

// @return the error that kept the file from the disk.
DWORD Flush(const std::wstring& path)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_WRITE, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    return file != nullptr && ::FlushFileBuffers(file.get()) ? ERROR_SUCCESS : ::GetLastError();
}

} // namespace

// The library opens both files exclusively, and does not tell why a write stored only a part of a block. Where it
// fails, the agent copies by itself.
std::optional<RestoreFailure> WriteNewContent(const std::wstring& source, const std::wstring& path,
                                              const std::wstring& target)
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

std::optional<RestoreFailure> VerifyNewContent(const std::wstring& source, const std::wstring& path,
                                               const ManifestFile& file, const std::wstring& target,
                                               Durability durability)
{
    // A large file is read while it is being flushed.
    const bool isLarge = durability == Durability::kFlushed && file.digest.size >= kLargeFile;
    auto flushed = std::async(isLarge ? std::launch::async : std::launch::deferred, &Flush, path);
    const auto digest = DigestFile(path);
    if (!digest) {
        return RestoreFailure{target, LastReason()};
    }
    // The copy ends with success also when a read error cuts it short.
    if (*digest != file.digest) {
        return WhyDifferent(source, file, target);
    }
    const DWORD error = durability == Durability::kFlushed ? flushed.get() : ERROR_SUCCESS;
    return error == ERROR_SUCCESS ? std::nullopt : std::optional(RestoreFailure{target, SystemReason(error)});
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
