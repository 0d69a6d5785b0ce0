// Under which names a version stores its files.

#include "agent/backup/StoredNames.h"

#include "agent/backup/Manifest.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/platform/WholeFile.h"

namespace agent {

StoredNames::StoredNames()
{
    const std::wstring manifest = FoldCase(kManifestName);
    m_taken = {manifest, manifest + FoldCase(kFreshSuffix)};
}

std::wstring StoredNames::Add(const std::wstring& name)
{
    const std::wstring parent = ParentOf(name);
    const auto renamed = m_directories.find(parent);
    const std::wstring wanted = renamed == m_directories.end() ? name : Join(renamed->second, NameOf(name));
    std::wstring stored = wanted;
    for (int number = 2; !m_taken.insert(FoldCase(stored)).second; ++number) {
        stored = wanted + L'~' + std::to_wstring(number);
    }
    if (stored != name) {
        m_directories.emplace(name, stored);
    }
    return stored;
}

} // namespace agent
