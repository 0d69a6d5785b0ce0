// Where a backup reads its files: from their own places, or from a snapshot.

#pragma once

#include "agent/backup/Snapshots.h"

#include <optional>
#include <string>
#include <vector>

namespace agent {

class SourcePaths {
public:
    // `directory` is the live one. @return a reason when it cannot be read.
    std::optional<std::wstring> Open(const std::wstring& directory, const std::vector<std::wstring>& snapshots);

    // The directory that a walk starts at.
    [[nodiscard]] const std::wstring& Root() const { return m_root; }

    // The live path of a name.
    [[nodiscard]] std::wstring Live(const std::wstring& name) const;

    // Whether a directory of the tree can be read from a snapshot, where snapshots are used: it is not when another
    // volume is mounted in it.
    [[nodiscard]] bool Covers(const std::wstring& name) const;

private:
    std::wstring m_directory;
    std::wstring m_root;
    Snapshots m_snapshots;
};

constexpr const wchar_t* kNoSnapshot = L"no --snapshot is given for its volume";

} // namespace agent
