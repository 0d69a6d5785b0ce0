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

std::wstring TemporaryDirectory()
{
    wchar_t directory[MAX_PATH + 1] = {};
    ::GetTempPathW(MAX_PATH + 1, directory);
    return WithoutTrailingBackslash(directory);
}

} // namespace agent
