// Under which names a version stores its files.

#pragma once

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace agent {

// Files are stored under their own names. Where two names differ only in case, as other systems allow it, or a name is
// one of the agent's own, the later one gets a suffix: no file is ever written over another.
class StoredNames {
public:
    StoredNames();

    // The stored name for a name relative to the original directory. Parents first, each name once.
    std::wstring Add(const std::wstring& name);

private:
    std::unordered_set<std::wstring> m_taken;                     // in one case
    std::unordered_map<std::wstring, std::wstring> m_directories; // those that are stored under another name
};

} // namespace agent
