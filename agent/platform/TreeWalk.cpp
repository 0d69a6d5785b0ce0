// A walk through a directory tree.

#include "agent/platform/TreeWalk.h"

#include "agent/console/Interrupt.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"

#include <algorithm>
#include <utility>
#include <vector>

namespace agent {

namespace {

struct Contents {
    std::vector<TreeEntry> files;
    std::vector<TreeEntry> directories;
    DWORD error = ERROR_SUCCESS;
};

bool IsDots(const wchar_t* name)
{
    return name[0] == L'.' && (name[1] == L'\0' || (name[1] == L'.' && name[2] == L'\0'));
}

void SortByName(std::vector<TreeEntry>& entries)
{
    std::sort(entries.begin(), entries.end(), [](const TreeEntry& a, const TreeEntry& b) { return a.name < b.name; });
}

Contents ReadContents(const TreeEntry& directory)
{
    Contents contents;
    WIN32_FIND_DATAW data = {};
    const UniqueSearch search =
        OwnSearch(::FindFirstFileExW(LongForm(Join(directory.path, L"*")).c_str(), FindExInfoBasic, &data,
                                     FindExSearchNameMatch, nullptr, FIND_FIRST_EX_LARGE_FETCH));
    for (bool found = search != nullptr; found; found = ::FindNextFileW(search.get(), &data) != FALSE) {
        if (IsDots(data.cFileName)) {
            continue;
        }
        const FileInformation information = InformationOf(data);
        const std::wstring name = directory.name.empty() ? data.cFileName : directory.name + L'\\' + data.cFileName;
        (information.IsDirectory() ? contents.directories : contents.files)
            .push_back({name, data.cFileName, Join(directory.path, data.cFileName), information, directory.level + 1});
    }
    const DWORD error = ::GetLastError();
    const bool isEmptyRoot = search == nullptr && error == ERROR_FILE_NOT_FOUND; // no "." in a root
    contents.error = error == ERROR_NO_MORE_FILES || isEmptyRoot ? ERROR_SUCCESS : error;
    SortByName(contents.files);
    SortByName(contents.directories);
    return contents;
}

class Walk {
public:
    explicit Walk(TreeVisitor& visitor) : m_visitor(visitor) {}

    void Enter(const TreeEntry& directory)
    {
        const auto identity = ReadIdentity(LongForm(directory.path));
        if (identity && std::find(m_above.begin(), m_above.end(), *identity) != m_above.end()) {
            m_visitor.OnFailure(directory.path, L"it leads back to a directory above it");
            return;
        }
        m_above.push_back(identity.value_or(FileIdentity()));
        Visit(ReadContents(directory), directory.path);
        m_above.pop_back();
    }

private:
    void Visit(const Contents& contents, const std::wstring& path)
    {
        for (const TreeEntry& file : contents.files) {
            m_visitor.OnFile(file);
        }
        for (const TreeEntry& directory : contents.directories) {
            if (IsInterrupted()) {
                return;
            }
            if (m_visitor.OnDirectory(directory)) {
                Enter(directory);
            }
        }
        if (contents.error != ERROR_SUCCESS) {
            m_visitor.OnFailure(path, L"the directory cannot be searched: " + SystemReason(contents.error));
        }
    }

    TreeVisitor& m_visitor;
    std::vector<FileIdentity> m_above;
};

} // namespace

void WalkTree(const std::wstring& root, TreeVisitor& visitor)
{
    Walk(visitor).Enter({L"", L"", root, {}, 0});
}

} // namespace agent
