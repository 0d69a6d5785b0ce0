// A walk through a directory tree.

#pragma once

#include "agent/platform/FileInformation.h"

#include <string>

namespace agent {

struct TreeEntry {
    std::wstring name;      // relative to the root of the walk
    std::wstring component; // the last one; another system may have put a backslash into it
    std::wstring path;
    FileInformation information;
    int level = 0; // of directories: 1 for those directly below the root
};

// What a walk meets, in the order of the names: first the files of a directory, then each directory with all below it.
class TreeVisitor {
public:
    virtual ~TreeVisitor() = default;

    virtual void OnFile(const TreeEntry& file) = 0;

    // @return whether the walk enters the directory. A link to a directory is a directory, too.
    virtual bool OnDirectory(const TreeEntry& directory) = 0;

    // A directory that cannot be searched, or that leads back to one above it.
    virtual void OnFailure(const std::wstring& directory, const std::wstring& reason) = 0;
};

// Ends early at an interrupt.
void WalkTree(const std::wstring& root, TreeVisitor& visitor);

} // namespace agent
