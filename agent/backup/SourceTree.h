// A directory tree as a backup sees it.

#pragma once

#include <string>
#include <utility>
#include <vector>

namespace agent {

struct SourceTree {
    std::vector<std::wstring> files;                             // relative to the root
    std::vector<std::wstring> directories;                       // relative to the root, parents first
    std::vector<std::wstring> links;                             // directories that are links: named, not entered
    std::vector<std::pair<std::wstring, std::wstring>> failures; // directory and reason
};

// Lists the files that match `filter`. The library gives an empty list for a directory that it cannot search, so each
// directory is asked for first. A directory that leads back to one above it is a failure, not a loop.
SourceTree ReadSourceTree(const std::wstring& root, const std::wstring& filter);

} // namespace agent
