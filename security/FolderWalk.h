// The entries of a folder whose owner is changed, and the identity of folders.

#pragma once

#include "win32/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

// Two paths lead to the same file or folder if their identities are equal.
struct FileIdentity {
    DWORD volumeSerialNumber = 0;
    std::uint64_t fileIndex = 0;

    bool operator==(const FileIdentity&) const = default;
};

// Follows reparse points. Returns nothing if the file or folder cannot be opened. The last error is unchanged.
[[nodiscard]] std::optional<FileIdentity> ReadFileIdentity(const std::wstring& path);

// Visits the entries of one folder, one after the other.
class FolderWalk {
public:
    // `account` is the account that the entries are given to.
    FolderWalk(std::wstring folder, std::wstring account);

    // Moves to the first or next entry. Skips ".", ".." and names that lead out of the folder. Returns false if there
    // is no further entry, and for a folder that cannot be searched.
    bool Next();

    [[nodiscard]] std::wstring EntryPath() const;
    [[nodiscard]] bool IsAtReparsePoint() const noexcept;
    [[nodiscard]] const std::wstring& Account() const noexcept { return m_account; }

    // The identity of the folder itself, read at the first call.
    [[nodiscard]] const std::optional<FileIdentity>& Identity();

private:
    bool Open();

    std::wstring m_folder;
    std::wstring m_account;
    WIN32_FIND_DATAW m_entry = {};
    UniqueFindHandle m_search;
    std::optional<FileIdentity> m_identity;
    bool m_hasReadIdentity = false;
};
