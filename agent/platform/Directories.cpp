// Creating directories.

#include "agent/platform/Directories.h"

#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"

#include <Kestrovane.h>

namespace agent {

std::wstring TopmostMissing(const std::wstring& directory)
{
    std::wstring topmost;
    std::wstring path = directory;
    while (!path.empty() && path.back() != L':' && !ReadInformation(path)) {
        topmost = path;
        const auto backslash = path.rfind(L'\\');
        path.resize(backslash == std::wstring::npos ? 0 : backslash);
    }
    return topmost;
}

std::optional<std::wstring> EnsureDirectory(const std::wstring& directory)
{
    RecursivelyCreateDirectory(directory);
    if (isDirectoryExists(directory)) {
        return std::nullopt;
    }
    return L"the directory cannot be created: " + LastReason();
}

} // namespace agent
