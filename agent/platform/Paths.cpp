// Paths as strings: nothing here looks at a file, except for the current directory.

#include "agent/platform/Paths.h"

#include "agent/platform/IgnoringCase.h"

#include <windows.h>

namespace agent {

namespace {

constexpr std::size_t kDriveRoot = 3; // characters of C:\, which keeps its backslash

std::wstring WithoutTrailingBackslash(std::wstring path)
{
    while (path.size() > kDriveRoot && path.ends_with(L'\\')) {
        path.pop_back();
    }
    return path;
}

constexpr std::wstring_view kLongPrefix = LR"(\\?\)";
constexpr std::wstring_view kDevicePrefix = LR"(\\.\)"; // of the same length
constexpr std::wstring_view kLongSharePrefix = LR"(\\?\UNC\)";
constexpr std::wstring_view kSharePrefix = LR"(\\)";
constexpr std::size_t kLongestDirectory = 247; // characters: Windows keeps a buffer of 260 for a name of 12 in it

} // namespace

std::wstring Join(const std::wstring& directory, const std::wstring& name)
{
    return directory.ends_with(L'\\') ? directory + name : directory + L'\\' + name;
}

std::wstring ParentOf(const std::wstring& path)
{
    const auto backslash = path.rfind(L'\\');
    if (backslash == std::wstring::npos) {
        return {};
    }
    const bool isRoot = backslash + 1 == kDriveRoot && path[1] == L':';
    return path.substr(0, isRoot ? kDriveRoot : backslash);
}

std::wstring NameOf(const std::wstring& path)
{
    return path.substr(path.rfind(L'\\') + 1); // npos + 1 is 0: a path without a backslash is a name
}

std::wstring Absolute(const std::wstring& path)
{
    std::wstring absolute(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    absolute.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()), absolute.data(), nullptr));
    return WithoutTrailingBackslash(std::move(absolute));
}

bool IsSameOrBelow(const std::wstring& path, const std::wstring& directory)
{
    const std::wstring outer = Join(directory, L"");
    const std::wstring inner = Join(path, L"");
    return inner.size() >= outer.size() && EqualIgnoringCase(std::wstring_view(inner).substr(0, outer.size()), outer);
}

bool IsTooLong(const std::wstring& path)
{
    return path.size() >= MAX_PATH;
}

std::wstring LongForm(const std::wstring& path)
{
    if (path.size() <= kLongestDirectory || path.starts_with(kLongPrefix)) {
        return path;
    }
    if (path.starts_with(kSharePrefix)) {
        return std::wstring(kLongSharePrefix) + path.substr(kSharePrefix.size());
    }
    return std::wstring(kLongPrefix) + path;
}

std::wstring WithoutLongPrefix(const std::wstring& path)
{
    if (path.starts_with(kLongSharePrefix)) {
        return std::wstring(kSharePrefix) + path.substr(kLongSharePrefix.size());
    }
    if (!path.starts_with(kLongPrefix) && !path.starts_with(kDevicePrefix)) {
        return path;
    }
    const std::wstring rest = path.substr(kLongPrefix.size());
    if (rest.size() < 2 || rest[1] != L':') {
        return path; // a volume name needs its prefix
    }
    return rest.ends_with(L':') ? rest + L'\\' : rest;
}

std::wstring TemporaryDirectory()
{
    wchar_t directory[MAX_PATH + 1] = {};
    ::GetTempPathW(MAX_PATH + 1, directory);
    return WithoutTrailingBackslash(directory);
}

} // namespace agent
