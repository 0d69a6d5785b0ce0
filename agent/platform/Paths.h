// Paths as strings: nothing here looks at a file, except for the current directory.

#pragma once

#include <string>
#include <string_view>

namespace agent {

// Joined with one backslash.
std::wstring Join(const std::wstring& directory, const std::wstring& name);

std::wstring ParentOf(const std::wstring& path); // the string before the last backslash; that of a root keeps it: C:\.
std::wstring NameOf(const std::wstring& path);   // the string after the last backslash

// The absolute form, normalised, without a trailing backslash except in a root.
std::wstring Absolute(const std::wstring& path);

// Whether `path` is `directory` or lies below it. Both absolute.
bool IsSameOrBelow(const std::wstring& path, const std::wstring& directory);

// Whether a path is too long for the library and most of Windows, whose buffers take 259 characters.
bool IsTooLong(const std::wstring& path);

// A path that Windows takes at any length: with its long prefix where it needs one. Absolute paths only.
std::wstring LongForm(const std::wstring& path);

// A path without the prefixes \\?\ and \\.\.
std::wstring WithoutLongPrefix(const std::wstring& path);

// The directory for temporary files, from the environment, without a trailing backslash.
std::wstring TemporaryDirectory();

} // namespace agent
