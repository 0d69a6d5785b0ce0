// Turning the host's paths into absolute ones, and refusing those with characters that no name can have.

#include "frame/FileManager.h"

#include "paths/CurrentDirectory.h"
#include "paths/PathSplit.h"

#include <algorithm>
#include <cwchar>
#include <string_view>

namespace {

constexpr std::wstring_view kParentStep = LR"(..\)";
constexpr std::wstring_view kSharePrefix = LR"(\\)"; // the extended-length prefix \\?\ begins with it, too

void UseBackslashes(std::wstring& path)
{
    std::replace(path.begin(), path.end(), L'/', L'\\');
}

// Windows reads a path up to a terminator inside it. With more behind one, a listing would find the directory in its
// own place again and again.
void EndAtTerminator(std::wstring& path)
{
    path.resize(std::wcslen(path.c_str()));
}

// A directory of two characters has no prefix, not even if it is one.
bool BeginsWith(const std::wstring& directory, std::wstring_view prefix)
{
    return directory.size() > 2 && directory.starts_with(prefix);
}

bool HasForbiddenCharacter(const PathParts& parts)
{
    constexpr const wchar_t* kForbidden = L":*?";
    return parts.directory.find_first_of(kForbidden) != std::wstring::npos ||
           parts.name.find_first_of(kForbidden) != std::wstring::npos ||
           parts.extension.find_first_of(kForbidden) != std::wstring::npos;
}

// The ancestor of the current directory that `parts` goes up to, followed by the last part of the path. What
// stands between the two is left out on purpose: hosts give paths of the form ..\..\name.
std::wstring ClimbFromCurrentDirectory(const PathParts& parts)
{
    const CurrentDirectoryGuard restore;
    std::wstring directory = parts.directory;
    while (BeginsWith(directory, kParentStep)) {
        ChangeCurrentDirectory(L"..");
        directory.erase(0, kParentStep.size());
    }
    return ReadCurrentDirectory() + L'\\' + parts.name + parts.extension;
}

// Makes `path`, which has no drive, absolute. A rooted path takes the drive of the current directory, and its
// `parts` become those of the current directory: these are what validation looks at then.
void MakeAbsolute(std::wstring& path, PathParts& parts)
{
    if (BeginsWith(parts.directory, kParentStep)) {
        path = ClimbFromCurrentDirectory(parts);
    } else if (parts.directory.starts_with(L'\\')) {
        parts = SplitPathForValidation(ReadCurrentDirectory());
        path.insert(0, parts.drive);
    } else {
        // A root directory brings its own backslash: two in a row are wanted there.
        path.insert(0, ReadCurrentDirectory() + L'\\');
    }
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::ValidatePath(std::wstring& path)
{
    UseBackslashes(path);
    PathParts parts = SplitPathForValidation(path);
    if (parts.drive.empty()) {
        if (BeginsWith(parts.directory, kSharePrefix)) {
            return true;
        }
        MakeAbsolute(path, parts);
    }
    if (HasForbiddenCharacter(parts)) {
        ReportLastError();
        return false;
    }
    return true;
}

bool CVssFileManager::NormalizeDirectoryPath(std::wstring& path)
{
    EndAtTerminator(path);
    UseBackslashes(path);
    if (!path.empty() && path.back() != L'\\') {
        path += L'\\';
    }
    return path.starts_with(kSharePrefix) || ValidatePath(path);
}

} // namespace quorvantavss
