// What is in the directories of a restore before it begins.

#include "agent/restore/PresentFiles.h"

#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"

namespace agent {

bool IsLinkEntry(const WIN32_FIND_DATAW& entry)
{
    const DWORD tag = entry.dwReserved0;
    const bool isReparsePoint = (entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0;
    // A file system that does not tell the tag may mean a link.
    return isReparsePoint && (tag == 0 || IsReparseTagNameSurrogate(tag));
}

const PresentFile* PresentFiles::Find(const std::wstring& directory, const std::wstring& name)
{
    auto entries = m_directories.find(directory);
    if (entries == m_directories.end()) {
        entries = m_directories.emplace(directory, Search(directory)).first;
    }
    const auto entry = entries->second.find(name);
    return entry == entries->second.end() ? nullptr : &entry->second;
}

PresentFiles::Entries PresentFiles::Search(const std::wstring& directory)
{
    Entries entries;
    WIN32_FIND_DATAW entry = {};
    const UniqueSearch search = OwnSearch(::FindFirstFileW(Join(directory, L"*").c_str(), &entry));
    for (bool found = search != nullptr; found; found = ::FindNextFileW(search.get(), &entry) != FALSE) {
        entries.emplace(entry.cFileName, PresentFile{InformationOf(entry), IsLinkEntry(entry)});
    }
    return entries;
}

} // namespace agent
