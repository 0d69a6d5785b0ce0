// A directory tree as a backup sees it.

#include "agent/backup/SourceTree.h"

#include "agent/backup/ManifestNames.h"
#include "agent/console/Progress.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Paths.h"

#include <map>

namespace agent {

namespace {

std::optional<std::wstring> WhyNameDoesNotFit(const std::wstring& component)
{
    if (!IsWellFormed(component)) {
        return L"the name is not valid Unicode, so no manifest can hold it";
    }
    if (component.find(L'\\') != std::wstring::npos) {
        return L"the name has a backslash in it";
    }
    return WhyNameIsInvalid(component);
}

class Scan : public TreeVisitor {
public:
    Scan(const std::wstring& root, const Selection& selection, std::size_t longestName)
        : m_root(root), m_selection(selection), m_longestName(longestName)
    {
    }

    void OnFile(const TreeEntry& file) override
    {
        if (!m_selection.TakesFile(file.component)) {
            ++m_tree.leftOut;
        } else if (const auto reason = WhyNameDoesNotFit(file.component)) {
            m_tree.failures.push_back({file.path, *reason, 1});
        } else if (file.name.size() > m_longestName) {
            ++m_tooLong[DirectoryOfTooLong(file)];
        } else {
            m_tree.files.push_back(file);
            m_tree.bytes += file.information.size;
        }
        m_progress.FileDone(0);
    }

    bool OnDirectory(const TreeEntry& directory) override
    {
        if (!m_selection.TakesDirectory(directory.component)) {
            return false;
        }
        if (directory.information.IsLink()) {
            m_tree.links.push_back(directory.name);
            return false;
        }
        if (const auto reason = WhyNameDoesNotFit(directory.component)) {
            m_tree.failures.push_back({directory.path, *reason + L"; nothing below it is backed up", 1});
            return false;
        }
        if (directory.name.size() > m_longestName) {
            m_tooLong.try_emplace(DirectoryOfTooLong(directory), 0);
        } else {
            m_tree.directories.push_back(directory);
        }
        return true;
    }

    void OnFailure(const std::wstring& directory, const std::wstring& reason) override
    {
        m_tree.failures.push_back({directory, reason, 1});
    }

    SourceTree Result()
    {
        for (const auto& [directory, files] : m_tooLong) {
            m_tree.failures.push_back({directory,
                                       L"not backed up here and below, because a path or that of its copy has more "
                                       L"than 259 characters: " +
                                           Counted(files, L"file") + L"; a shorter TARGET may help",
                                       files});
        }
        return std::move(m_tree);
    }

private:
    // The outermost directory whose files are too long: one message covers all of them.
    [[nodiscard]] std::wstring DirectoryOfTooLong(const TreeEntry& entry) const
    {
        std::wstring name = entry.name;
        while (name.size() > m_longestName) {
            const auto backslash = name.rfind(L'\\');
            name.resize(backslash == std::wstring::npos ? 0 : backslash);
        }
        return name.empty() ? m_root : Join(m_root, name);
    }

    const std::wstring& m_root;
    const Selection& m_selection;
    std::size_t m_longestName;
    std::map<std::wstring, std::int64_t> m_tooLong; // directory and number of files
    Progress m_progress{L"Scanning"};
    SourceTree m_tree;
};

} // namespace

SourceTree ReadSourceTree(const std::wstring& root, const Selection& selection, std::size_t longestName)
{
    Scan scan(root, selection, longestName);
    WalkTree(root, scan);
    return scan.Result();
}

} // namespace agent
