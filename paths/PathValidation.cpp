// Validation of the host's paths: they become absolute, and characters that no name may have are rejected.

#include "frame/FileManager.h"

#include "paths/CurrentDirectory.h"
#include "paths/PathComponents.h"

#include <algorithm>
#include <string_view>

namespace {

constexpr std::wstring_view kParentStep = LR"(..\)";
constexpr std::wstring_view kSharePrefix = LR"(\\)"; // the extended-length prefix \\?\ begins with it, too
constexpr std::size_t kValidatedLength = 255;        // characters of a component; the rest is not validated

void UseBackslashes(std::wstring& path)
{
    std::replace(path.begin(), path.end(), L'/', L'\\');
}

// A directory component of two characters has no prefix, not even if it equals one.
bool BeginsWith(std::wstring_view directory, std::wstring_view prefix)
{
    return directory.size() > 2 && directory.starts_with(prefix);
}

bool HasInvalidCharacter(std::wstring_view component)
{
    const auto validated = component.substr(0, kValidatedLength);
    return std::any_of(validated.begin(), validated.end(),
                       [](wchar_t character) { return character == L':' || character == L'*' || character == L'?'; });
}

bool HasInvalidCharacter(const PathComponents& components)
{
    return HasInvalidCharacter(components.Directory()) || HasInvalidCharacter(components.Name()) ||
           HasInvalidCharacter(components.Extension());
}

// Returns the ancestor of the current directory that the parent steps lead to, followed by the name. Components between
// the two are deliberately left out: hosts pass paths of the form ..\..\name. Nothing if the current directory cannot
// be read, or a step fails: the path would lead to another directory.
std::optional<std::wstring> ResolveParentSteps(const PathComponents& components)
{
    const CurrentDirectoryGuard restore;
    if (!restore.CanRestore()) {
        return std::nullopt;
    }
    std::wstring_view directory = components.Directory().substr(0, kValidatedLength);
    while (BeginsWith(directory, kParentStep)) {
        if (!ChangeCurrentDirectory(L"..")) {
            return std::nullopt;
        }
        directory.remove_prefix(kParentStep.size());
    }
    std::optional<std::wstring> path = ReadCurrentDirectory();
    if (path) {
        path->append(1, L'\\').append(components.Name()).append(components.Extension());
    }
    return path;
}

// Prepends the current directory. If that is a root with its own backslash, two backslashes in a row are expected.
bool PrependCurrentDirectory(std::wstring& path)
{
    const std::optional<std::wstring> current = ReadCurrentDirectory();
    if (current) {
        path.insert(0, 1, L'\\').insert(0, *current);
    }
    return current.has_value();
}

// Prepends the drive of the current directory. Its components replace those of the path in the validation that follows.
bool PrependCurrentDrive(std::wstring& path, PathComponents& components)
{
    const std::optional<std::wstring> current = ReadCurrentDirectory();
    if (current) {
        components.Split(*current);
        path.insert(0, components.Drive());
    }
    return current.has_value();
}

// Makes a path without a drive absolute; false if that takes the current directory, which cannot be read.
bool MakeAbsolute(std::wstring& path, PathComponents& components)
{
    if (BeginsWith(components.Directory(), kParentStep)) {
        std::optional<std::wstring> resolved = ResolveParentSteps(components);
        if (!resolved) {
            return false;
        }
        path = *std::move(resolved);
        return true;
    }
    if (components.Directory().starts_with(L'\\')) {
        return PrependCurrentDrive(path, components);
    }
    return PrependCurrentDirectory(path);
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::ValidatePath(std::wstring& path)
{
    UseBackslashes(path);
    PathComponents components(path);
    if (components.Drive().empty()) {
        if (BeginsWith(components.Directory(), kSharePrefix)) {
            return true;
        }
        // Without a current directory, the path would lead to the root of the drive.
        if (!MakeAbsolute(path, components)) {
            ReportLastError();
            return false;
        }
    }
    if (HasInvalidCharacter(components)) {
        ReportLastError();
        return false;
    }
    return true;
}

bool CVssFileManager::NormalizeDirectoryPath(std::wstring& path)
{
    UseBackslashes(path);
    if (!path.empty() && path.back() != L'\\') {
        path += L'\\';
    }
    return path.starts_with(kSharePrefix) || ValidatePath(path);
}

} // namespace quorvantavss
