// What Windows tells about files and directories: attributes, size, times and identity.

#pragma once

#include <windows.h>

#include <cstdint>
#include <optional>
#include <string>

namespace agent {

using FileTime = std::int64_t; // 100-nanosecond steps since 1601, UTC

struct FileInformation {
    DWORD attributes = 0;
    std::int64_t size = 0; // bytes
    FileTime created = 0;
    FileTime modified = 0;

    [[nodiscard]] bool IsDirectory() const { return (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0; }
    [[nodiscard]] bool IsLink() const { return (attributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0; }
    [[nodiscard]] bool IsReadOnly() const { return (attributes & FILE_ATTRIBUTE_READONLY) != 0; }
};

FileTime FromWindows(const FILETIME& time);
FILETIME ToWindows(FileTime time);

// Nothing when there is no such file or directory, or it may not be queried; the last error tells.
std::optional<FileInformation> ReadInformation(const std::wstring& path);
FileInformation InformationOf(const WIN32_FIND_DATAW& entry);

// Whether there is a directory to be searched, also on a snapshot device, which no process can change into.
bool IsDirectoryOnDevice(const std::wstring& path);

// Which file or directory a path leads to, however it is written.
struct FileIdentity {
    DWORD volume = 0; // serial number
    std::uint64_t index = 0;

    bool operator==(const FileIdentity&) const = default;
};
std::optional<FileIdentity> ReadIdentity(const std::wstring& path);

} // namespace agent
