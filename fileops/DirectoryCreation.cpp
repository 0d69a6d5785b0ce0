// Creation of a directory with all its missing parents.

#include "frame/FileManager.h"

#include "frame/RuntimeOutput.h"
#include "frame/UniqueResource.h"
#include "paths/CurrentDirectory.h"
#include "paths/PathSplit.h"

#include <windows.h>

#include <direct.h>

#include <algorithm>
#include <cerrno>

namespace {

// Where creation starts, and what is to be made below it, outermost first.
struct CreationPlan {
    std::wstring root; // a drive such as C:, a server such as \\server, or nothing
    std::vector<std::wstring> components;
};

// For \\server\share\dir\ the server takes the place of the drive: it cannot be made.
void MoveServerToDrive(PathParts& parts)
{
    std::wstring& directory = parts.directory;
    if (directory.size() <= 2 || !directory.starts_with(LR"(\\)")) {
        return;
    }
    directory.erase(0, 2);
    const auto separator = directory.find(L'\\');
    if (separator != std::wstring::npos) {
        parts.drive = LR"(\\)" + directory.substr(0, separator);
        directory = directory.substr(separator, directory.size() - separator - 1);
    }
}

// Doubled backslashes give empty components: they are tried like all others, and fail harmlessly.
std::vector<std::wstring> CutAtBackslashes(const std::wstring& directory)
{
    std::vector<std::wstring> components;
    auto start = directory.find_first_not_of(L'\\');
    while (start < directory.size()) {
        const auto end = std::min(directory.find(L'\\', start), directory.size());
        components.push_back(directory.substr(start, end - start));
        start = end + 1;
    }
    return components;
}

CreationPlan PlanCreation(const std::wstring& path)
{
    PathParts parts = SplitPath(path);
    MoveServerToDrive(parts);
    CreationPlan plan{parts.drive, CutAtBackslashes(parts.directory)};
    if (!parts.name.empty()) {
        plan.components.push_back(parts.name);
    }
    return plan;
}

void PrintUnreachableDirectory(const std::wstring& directory, int errnoCode)
{
    switch (errnoCode) {
    case ENOENT:
        RuntimePrintf("Unable to locate the directory: %S\n", directory.c_str());
        break;
    case EINVAL:
        RuntimePrintf("Invalid buffer.\n");
        break;
    default:
        RuntimePrintf("Unknown error.\n");
        break;
    }
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::RecursivelyCreateDirectory(const std::wstring& path)
{
    ClearErrorText();
    if (path.empty()) {
        ReportLastError();
        return false;
    }
    std::wstring directory = path;
    if (!NormalizeDirectoryPath(directory)) {
        return false;
    }
    const CurrentDirectoryGuard restore;
    const std::wstring created = CreateComponents(directory);
    if (!ChangeCurrentDirectory(created)) {
        ReportUnreachableDirectory(created);
    }
    // True on purpose, even if the directory could not be entered: callers that need to be sure ask
    // isDirectoryExists afterwards.
    return true;
}

// Gives the path that it has tried to make, component by component; no failure stops it.
std::wstring CVssFileManager::CreateComponents(const std::wstring& directory)
{
    CreationPlan plan = PlanCreation(directory);
    std::wstring created = std::move(plan.root);
    for (const std::wstring& component : plan.components) {
        ChangeCurrentDirectory(created);
        created += L'\\';
        created += component;
        if (::_wmkdir(created.c_str()) == -1) {
            m_lastError = static_cast<std::int32_t>(::GetLastError());
        }
    }
    return created;
}

void CVssFileManager::ReportUnreachableDirectory(const std::wstring& directory)
{
    {
        const LastErrorKeeper keeper;
        PrintUnreachableDirectory(directory, errno);
    }
    ReportLastError();
    ::SetLastError(static_cast<DWORD>(m_lastError));
}

} // namespace quorvantavss

bool RecursivelyCreateDirectory(const std::wstring& path)
{
    return g_fileManager.RecursivelyCreateDirectory(path);
}
