// What the agent asks Windows itself about files and directories, where the library's answer is not enough.

#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

namespace agent {

struct FileFacts {
    DWORD attributes = 0;
    std::int64_t size = 0;     // bytes
    std::int64_t modified = 0; // 100-nanosecond steps since 1601, UTC

    bool IsDirectory() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    bool IsLink() const { return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }
};

// Nothing when there is no such file or directory, or it may not be asked; the last error tells.
std::optional<FileFacts> ReadFacts(const std::wstring& path);

// Best effort: a file that keeps its own time is not a failure.
void SetModified(const std::wstring& path, std::int64_t modified);

// Whether there is a directory to be searched, also on a snapshot device, which no process can change into.
bool IsDirectoryOnDevice(const std::wstring& path);

// Which directory a path stands for, however it is written.
struct DirectoryIdentity {
    DWORD volume = 0;
    std::uint64_t index = 0;

    bool operator==(const DirectoryIdentity&) const = default;
};
std::optional<DirectoryIdentity> ReadIdentity(const std::wstring& directory);

// The outermost directory of a path that is not there; empty when the whole path is.
std::wstring TopmostMissing(const std::wstring& directory);

// Makes a directory with its parents. @return a reason when it is not there afterwards; the library's own result says only
// that the path is well formed.
std::optional<std::wstring> MakeDirectory(const std::wstring& directory);

// Whether a path is too long for the library and most of Windows: they have room for 259 characters.
bool IsTooLong(const std::wstring& path);

// The root of a drive or share, or the folder that a volume is mounted in.
bool IsVolumeRoot(const std::wstring& path);

bool IsOnShare(const std::wstring& path);

// Whether two paths lie on the same volume: only then a file can be moved from one to the other at a restart.
bool IsSameVolume(const std::wstring& first, const std::wstring& second);

// Joined with one backslash.
std::wstring Join(const std::wstring& directory, const std::wstring& name);

// The absolute form, without a trailing backslash except in a root.
std::wstring Absolute(const std::wstring& path);

// Whether `path` is `directory` or lies below it. Both absolute.
bool IsSameOrBelow(const std::wstring& path, const std::wstring& directory);

} // namespace agent
