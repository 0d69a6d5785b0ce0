// What Windows tells about files and directories: attributes, size, times and identity.

#include "agent/platform/FileInformation.h"

#include "agent/platform/Handles.h"
#include "agent/platform/Paths.h"

namespace agent {

namespace {

std::uint64_t Joined(DWORD high, DWORD low)
{
    return (static_cast<std::uint64_t>(high) << 32U) | low;
}

// Both records of Windows have the same members for this.
template <typename Data>
FileInformation FromData(const Data& data)
{
    return {data.dwFileAttributes, static_cast<std::int64_t>(Joined(data.nFileSizeHigh, data.nFileSizeLow)),
            FromWindows(data.ftCreationTime), FromWindows(data.ftLastWriteTime)};
}

} // namespace

FileTime FromWindows(const FILETIME& time)
{
    return static_cast<FileTime>(Joined(time.dwHighDateTime, time.dwLowDateTime));
}

FILETIME ToWindows(FileTime time)
{
    const auto steps = static_cast<std::uint64_t>(time);
    return {static_cast<DWORD>(steps & 0xFFFFFFFFU), static_cast<DWORD>(steps >> 32U)};
}

std::optional<FileInformation> ReadInformation(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return std::nullopt;
    }
    return FromData(data);
}

FileInformation InformationOf(const WIN32_FIND_DATAW& entry)
{
    return FromData(entry);
}

bool IsDirectoryOnDevice(const std::wstring& path)
{
    const auto information = ReadInformation(Join(path, L""));
    return information && information->IsDirectory();
}

std::optional<FileIdentity> ReadIdentity(const std::wstring& path)
{
    const UniqueHandle handle =
        Own(::CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (handle == nullptr || !::GetFileInformationByHandle(handle.get(), &information)) {
        return std::nullopt;
    }
    return FileIdentity{information.dwVolumeSerialNumber,
                        Joined(information.nFileIndexHigh, information.nFileIndexLow)};
}

} // namespace agent
