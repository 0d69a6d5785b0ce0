// What the agent asks Windows itself about files and directories.

#include "agent/FileFacts.h"

#include "agent/Text.h"
#include "frame/UniqueResource.h"

namespace agent {

namespace {

std::int64_t Joined(DWORD high, DWORD low)
{
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(high) << 32U) | low);
}

} // namespace

std::optional<FileFacts> ReadFacts(const std::wstring& path)
{
    WIN32_FILE_ATTRIBUTE_DATA data = {};
    if (!::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) {
        return std::nullopt;
    }
    return FileFacts{data.dwFileAttributes, Joined(data.nFileSizeHigh, data.nFileSizeLow),
                     Joined(data.ftLastWriteTime.dwHighDateTime, data.ftLastWriteTime.dwLowDateTime)};
}

void SetModified(const std::wstring& path, std::int64_t modified)
{
    const UniqueFileHandle file(
        ::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    if (file) {
        const auto time = static_cast<std::uint64_t>(modified);
        const FILETIME written = {static_cast<DWORD>(time & 0xFFFFFFFFU), static_cast<DWORD>(time >> 32U)};
        ::SetFileTime(file.Get(), nullptr, nullptr, &written);
    }
}

std::optional<DirectoryIdentity> ReadIdentity(const std::wstring& directory)
{
    const UniqueFileHandle handle(::CreateFileW(directory.c_str(), 0,
                                                FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                                OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!handle || !::GetFileInformationByHandle(handle.Get(), &information)) {
        return std::nullopt;
    }
    return DirectoryIdentity{information.dwVolumeSerialNumber,
                             static_cast<std::uint64_t>(Joined(information.nFileIndexHigh, information.nFileIndexLow))};
}

bool IsTooLong(const std::wstring& path)
{
    return path.size() >= MAX_PATH;
}

std::wstring Join(const std::wstring& directory, const std::wstring& name)
{
    return directory.ends_with(L'\\') ? directory + name : directory + L'\\' + name;
}

std::wstring Absolute(const std::wstring& path)
{
    std::wstring absolute(::GetFullPathNameW(path.c_str(), 0, nullptr, nullptr), L'\0');
    absolute.resize(::GetFullPathNameW(path.c_str(), static_cast<DWORD>(absolute.size()), absolute.data(), nullptr));
    constexpr std::size_t kDriveRoot = 3; // characters: C:\ keeps its backslash
    while (absolute.size() > kDriveRoot && absolute.ends_with(L'\\')) {
        absolute.pop_back();
    }
    return absolute;
}

bool IsSameOrBelow(const std::wstring& path, const std::wstring& directory)
{
    const std::wstring outer = Join(directory, L"");
    const std::wstring inner = Join(path, L"");
    return inner.size() >= outer.size() && EqualIgnoringCase(std::wstring_view(inner).substr(0, outer.size()), outer);
}

} // namespace agent
