// The new content of one file, written beside its target.

#include "agent/restore/StagedFile.h"

#include "agent/platform/Errors.h"
#include "agent/platform/FileCopy.h"

namespace agent {

StagedFile::StagedFile(std::wstring path) : m_path(std::move(path)) {}

StagedFile::~StagedFile()
{
    m_file.reset();
    if (!m_isPlaced) {
        const DWORD error = ::GetLastError();
        ::SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL); // a read-only file cannot be deleted
        ::DeleteFileW(m_path.c_str());
        ::SetLastError(error);
    }
}

std::optional<RestoreFailure> StagedFile::Fill(const std::wstring& source, const ManifestFile& file,
                                               const std::wstring& target)
{
    // With sharing, because streams and the DACL are set by the path while it is open.
    m_file = Own(::CreateFileW(m_path.c_str(), GENERIC_WRITE, kShareAll, nullptr, CREATE_ALWAYS,
                               FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (m_file == nullptr) {
        return RestoreFailure{target, L"its new content cannot be written: " + LastReason()};
    }
    const CopyResult result = CopyInto(m_file.get(), source);
    if (result.digest) {
        return *result.digest == file.digest ? std::nullopt : std::optional(Damaged(source));
    }
    if (result.isSourceError) {
        return RestoreFailure{source, SystemReason(result.error)};
    }
    return RestoreFailure{target, L"its new content cannot be written: " + SystemReason(result.error)};
}

bool StagedFile::Complete(FileTime created, FileTime modified, DWORD attributes, Durability durability)
{
    const bool isComplete = SetInformation(m_file.get(), created, modified, attributes) &&
                            (durability == Durability::kUnflushed || ::FlushFileBuffers(m_file.get()));
    m_file.reset();
    return isComplete;
}

bool StagedFile::TakePlace(const std::wstring& target, bool replaces)
{
    const DWORD flags = replaces ? MOVEFILE_WRITE_THROUGH | MOVEFILE_REPLACE_EXISTING : 0;
    m_isPlaced = ::MoveFileExW(m_path.c_str(), target.c_str(), flags) != FALSE;
    return m_isPlaced;
}

} // namespace agent
