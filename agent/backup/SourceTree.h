// A directory tree as a backup sees it.

#pragma once

#include "agent/backup/Selection.h"
#include "agent/platform/TreeWalk.h"

#include <cstdint>
#include <string>
#include <vector>

namespace agent {

struct SourceFailure {
    std::wstring path;
    std::wstring reason;
    std::int64_t files = 1; // that are not backed up because of it
};

struct SourceTree {
    std::vector<TreeEntry> files;       // the selected ones
    std::vector<TreeEntry> directories; // parents first
    std::vector<std::wstring> links;    // relative to the root: directories that are links, which are not entered
    std::vector<SourceFailure> failures;
    std::int64_t bytes = 0;   // of the files
    std::int64_t leftOut = 0; // files that the selection does not take
};

// Lists a tree and checks that every name fits a backup: names of more than `longestName` characters, and names that no
// manifest can hold, are failures.
SourceTree ReadSourceTree(const std::wstring& root, const Selection& selection, std::size_t longestName);

} // namespace agent
