// What is in the directories of a restore before it begins. Each directory is searched once.

#pragma once

#include "agent/platform/FileInformation.h"
#include "agent/platform/IgnoringCase.h"

#include <map>
#include <string>

namespace agent {

struct PresentFile {
    FileInformation information;
    bool isLink = false; // a junction or symbolic link; other reparse points are ordinary files
};

class PresentFiles {
public:
    // Null when the directory has no such entry.
    const PresentFile* Find(const std::wstring& directory, const std::wstring& name);

private:
    using Entries = std::map<std::wstring, PresentFile, LessIgnoringCase>;
    static Entries Search(const std::wstring& directory);

    std::map<std::wstring, Entries, LessIgnoringCase> m_directories;
};

// Whether an entry of a search is a junction or symbolic link, which leads elsewhere.
bool IsLinkEntry(const WIN32_FIND_DATAW& entry);

} // namespace agent
