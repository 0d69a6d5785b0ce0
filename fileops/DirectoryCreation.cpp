// Creation of a directory with all missing parents.

#include "frame/FileManager.h"

#include "paths/CurrentDirectory.h"
#include "paths/PathComponents.h"
#include "win32/CrtPrintf.h"
#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <direct.h>

#include <algorithm>
#include <cerrno>
#include <string_view>
#include <utility>

namespace {

// Where creation starts, and what is to be created below it, outermost first.
struct CreationPlan {
    std::wstring root; // a drive such as C:, a server such as \\server, or empty
    std::vector<std::wstring> components;
};

// Doubled backslashes yield empty components. They are tried like all others, and fail harmlessly.
std::vector<std::wstring> SplitComponents(std::wstring_view directory)
{
    std::vector<std::wstring> components;
    auto start = directory.find_first_not_of(L'\\');
    while (start < directory.size()) {
        const auto end = std::min(directory.find(L'\\', start), directory.size());
        components.emplace_back(directory.substr(start, end - start));
        start = end + 1;
    }
    return components;
}

// For \\server\share\dir\ the server takes the place of the drive: it cannot be created. Requires a trailing backslash.
CreationPlan PlanShareCreation(std::wstring_view directory)
{
    constexpr std::size_t kPrefixLength = 2; // characters: the two backslashes
    const auto separator = directory.find(L'\\', kPrefixLength);
    const auto below = directory.substr(separator, directory.size() - separator - 1); // less the trailing backslash
    return {std::wstring(directory.substr(0, separator)), SplitComponents(below)};
}

// Requires a trailing backslash: the path has no name, then.
CreationPlan PlanCreation(const std::wstring& path)
{
    const PathComponents components(path);
    const std::wstring_view directory = components.Directory();
    const bool isShare = directory.size() > 2 && directory.starts_with(LR"(\\)");
    return isShare ? PlanShareCreation(directory)
                   : CreationPlan{std::wstring(components.Drive()), SplitComponents(directory)};
}

void PrintUnreachableDirectory(const std::wstring& directory, int errnoCode)
{
    switch (errnoCode) {
    case ENOENT:
        CrtPrintf("Unable to locate the directory: %S\n", directory.c_str());
        break;
    case EINVAL:
        CrtPrintf("Invalid buffer.\n");
        break;
    default:
        CrtPrintf("Unknown error.\n");
        break;
    }
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::RecursivelyCreateDirectory(const std::wstring& path)
{
    if (!BeginOperation(path)) {
        return false;
    }
    std::wstring directory = path;
    if (!NormalizeDirectoryPath(directory)) {
        return false;
    }
    const CurrentDirectoryGuard currentDirectory;
    directory.resize(std::min(directory.find(L'\0'), directory.size())); // where Windows ends it
    const std::wstring created = CreateComponents(AppendBackslash(std::move(directory)), currentDirectory);
    if (!currentDirectory.Enter(created)) {
        ReportUnreachableDirectory(created);
    }
    // Deliberately true, even if the directory could not be entered: callers that need certainty call isDirectoryExists
    // afterwards.
    return true;
}

// Returns the path of the innermost component. No failure stops the creation.
std::wstring CVssFileManager::CreateComponents(const std::wstring& directory,
                                               const CurrentDirectoryGuard& currentDirectory)
{
    CreationPlan plan = PlanCreation(directory);
    std::wstring created = std::move(plan.root);
    for (const std::wstring& component : plan.components) {
        static_cast<void>(currentDirectory.Enter(created));
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
        const LastErrorGuard keepLastError;
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
