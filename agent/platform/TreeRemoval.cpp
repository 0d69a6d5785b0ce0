// Removing a directory with everything in it.

#include "agent/platform/TreeRemoval.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/TreeWalk.h"

#include <vector>

namespace agent {

namespace {

class Removal : public TreeVisitor {
public:
    void OnFile(const TreeEntry& file) override
    {
        const std::wstring path = LongForm(file.path);
        if (file.information.IsReadOnly()) {
            ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        }
        Check(::DeleteFileW(path.c_str()), file.path);
    }

    bool OnDirectory(const TreeEntry& directory) override
    {
        m_directories.push_back(directory.path);
        return !directory.information.IsLink();
    }

    void OnFailure(const std::wstring& directory, const std::wstring& reason) override
    {
        m_reason = m_reason.value_or(directory + L": " + reason);
    }

    // Children come after their parents in the list.
    std::optional<std::wstring> RemoveDirectories(const std::wstring& root)
    {
        const std::vector<std::wstring> childrenFirst(m_directories.rbegin(), m_directories.rend());
        for (const std::wstring& directory : childrenFirst) {
            Check(::RemoveDirectoryW(LongForm(directory).c_str()), directory);
        }
        Check(::RemoveDirectoryW(LongForm(root).c_str()), root);
        return m_reason;
    }

private:
    void Check(BOOL removed, const std::wstring& path)
    {
        if (!removed && !m_reason) {
            m_reason = path + L": " + LastReason();
        }
    }

    std::vector<std::wstring> m_directories;
    std::optional<std::wstring> m_reason;
};

} // namespace

std::optional<std::wstring> RemoveTree(const std::wstring& directory)
{
    Removal removal;
    WalkTree(directory, removal);
    return removal.RemoveDirectories(directory);
}

} // namespace agent
