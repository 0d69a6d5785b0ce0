// What the agent asks Windows itself about files and directories.

#include "agent/FileFacts.h"

#include "agent/Text.h"
#include "win32/UniqueResource.h"

#include <Kestrovane.h>

namespace agent {

namespace {

std::int64_t Joined(DWORD high, DWORD low)
{
    return static_cast<std::int64_t>((static_cast<std::uint64_t>(high) << 32U) | low);
}

// The root of the volume that holds a path, a mount folder included; empty when Windows does not know.
std::wstring VolumePath(const std::wstring& path)
{
    wchar_t volume[MAX_PATH] = {};
    return ::GetVolumePathNameW(path.c_str(), volume, MAX_PATH) ? volume : std::wstring();
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

bool IsDirectoryOnDevice(const std::wstring& path)
{
    const auto facts = ReadFacts(Join(path, L""));
    return facts && facts->IsDirectory();
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

std::wstring TopmostMissing(const std::wstring& directory)
{
    std::wstring topmost;
    std::wstring path = directory;
    while (!path.empty() && path.back() != L':' && !ReadFacts(path)) {
        topmost = path;
        const auto backslash = path.rfind(L'\\');
        path.resize(backslash == std::wstring::npos ? 0 : backslash);
    }
    return topmost;
}

std::optional<std::wstring> MakeDirectory(const std::wstring& directory)
{
    RecursivelyCreateDirectory(directory);
    if (isDirectoryExists(directory)) {
        return std::nullopt;
    }
    return L"the directory cannot be made: " + SystemReason(::GetLastError());
}

bool IsTooLong(const std::wstring& path)
{
    return path.size() >= MAX_PATH;
}

bool IsVolumeRoot(const std::wstring& path)
{
    const std::wstring volume = VolumePath(Join(path, L""));
    const bool isShare = path.starts_with(LR"(\\)") && path.find(L'\\', path.find(L'\\', 2) + 1) == std::wstring::npos;
    return isShare || EqualIgnoringCase(volume, Join(path, L""));
}

bool IsOnShare(const std::wstring& path)
{
    constexpr const wchar_t* kLocalPrefix = LR"(\\?\)";
    constexpr const wchar_t* kLongSharePrefix = LR"(\\?\UNC\)";
    if (path.starts_with(LR"(\\)") && (!path.starts_with(kLocalPrefix) || path.starts_with(kLongSharePrefix))) {
        return true;
    }
    return ::GetDriveTypeW(VolumePath(path).c_str()) == DRIVE_REMOTE;
}

bool IsSameVolume(const std::wstring& first, const std::wstring& second)
{
    const std::wstring volume = VolumePath(first);
    return !volume.empty() && EqualIgnoringCase(volume, VolumePath(second));
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
