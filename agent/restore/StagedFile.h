// The new content of one file, written beside its target.

#pragma once

#include "agent/platform/Handles.h"
#include "agent/restore/NewContent.h"

#include <optional>
#include <string>

namespace agent {

// The file is deleted at the end of the scope, unless it has taken the target's place.
class StagedFile {
public:
    explicit StagedFile(std::wstring path);
    ~StagedFile();
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    [[nodiscard]] const std::wstring& Path() const { return m_path; }

    // Copies `source`, and compares what was copied with the manifest. `target` is named by failures.
    std::optional<RestoreFailure> Fill(const std::wstring& source, const ManifestFile& file,
                                       const std::wstring& target);

    // Sets times and attributes, and completes the file. Whatever is done to the file by its path comes before. On
    // failure the last error tells why.
    bool Complete(FileTime created, FileTime modified, DWORD attributes, Durability durability);

    // Takes the target's place in one step: there is no moment without a whole file. ReplaceFileW has one, between the
    // removal of the old file and the move of the new one. On failure the last error tells why, and the target is as it
    // was.
    bool TakePlace(const std::wstring& target, bool replaces);

private:
    std::wstring m_path;
    UniqueHandle m_file; // until the file is complete
    bool m_isPlaced = false;
};

} // namespace agent
