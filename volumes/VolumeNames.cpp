// From a path to the name of its volume, and from a volume to a path that people can read.

#include <Kestrovane.h>

#include "frame/RuntimeOutput.h"
#include "frame/UniqueResource.h"

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string_view>

namespace {

// Room for what Windows tells about a volume.
class NameBuffer {
public:
    // Windows is offered `capacity` characters; one more ends the text whatever it writes.
    explicit NameBuffer(std::size_t capacity = MAX_PATH) : m_text(capacity + 1, L'\0') {}

    wchar_t* Data() noexcept { return m_text.data(); }
    DWORD Capacity() const noexcept { return static_cast<DWORD>(m_text.size() - 1); }
    std::wstring Text() const { return m_text.substr(0, m_text.find(L'\0')); }

private:
    std::wstring m_text;
};

// `path` ends with a backslash.
std::optional<std::wstring> FindVolumePath(const std::wstring& path)
{
    NameBuffer volumePath;
    if (!::GetVolumePathNameW(path.c_str(), volumePath.Data(), volumePath.Capacity())) {
        return std::nullopt;
    }
    return volumePath.Text();
}

// `mountPoint`, a volume path or a volume name, ends with a backslash.
std::optional<std::wstring> FindVolumeName(const std::wstring& mountPoint)
{
    NameBuffer name;
    if (!::GetVolumeNameForVolumeMountPointW(mountPoint.c_str(), name.Data(), name.Capacity())) {
        return std::nullopt;
    }
    return name.Text();
}

} // namespace

bool IsVolume(std::wstring path)
{
    if (path.empty()) {
        return false;
    }
    path = AppendBackslash(std::move(path));
    if (FindVolumeName(path)) {
        return true;
    }
    const LastErrorKeeper keeper;
    const DWORD error = ::GetLastError();
    RuntimePrintf("GetVolumeNameForVolumeMountPoint(%S) failed with %d\n", path.c_str(), static_cast<int>(error));
    return false;
}

std::wstring GetUniqueVolumeNameForPath(std::wstring path)
{
    if (path.empty()) {
        // Not the empty text: hosts are prepared for the untouched buffer.
        path.assign(MAX_PATH, L'\0');
        return path;
    }
    const auto volumePath = FindVolumePath(AppendBackslash(std::move(path)));
    if (!volumePath) {
        return {};
    }
    const auto name = FindVolumeName(*volumePath);
    if (!name) {
        return *volumePath; // a share has no volume name
    }
    // A volume may have more than one name; looking up any of them gives the unique one.
    return FindVolumeName(*name).value_or(*name);
}

bool GetUniqueVolumeNameForPathNoThrow(std::wstring path, std::wstring& uniqueName)
{
    if (path.empty()) {
        return false;
    }
    const auto volumePath = FindVolumePath(AppendBackslash(std::move(path)));
    if (!volumePath) {
        return false;
    }
    const auto name = FindVolumeName(*volumePath);
    if (!name) {
        return false;
    }
    auto unique = FindVolumeName(*name);
    if (!unique) {
        return false;
    }
    uniqueName = std::move(*unique);
    return true;
}

std::wstring GetNQUniqueVolumeNameForPath(std::wstring path)
{
    constexpr std::wstring_view kSharePrefix = LR"(\\)";
    std::wstring name = GetUniqueVolumeNameForPath(std::move(path));
    if (!name.starts_with(kSharePrefix)) {
        return name;
    }
    const auto serverEnd = name.find(L'\\', kSharePrefix.size());
    const auto dot = name.find(L'.', kSharePrefix.size());
    if (serverEnd == std::wstring::npos || dot == std::wstring::npos) {
        return name;
    }
    // Wherever the dot stands, on purpose: behind the server's name it makes the text between the two occur twice.
    return name.substr(0, dot) + name.substr(serverEnd);
}

bool GetDisplayNameForVolumeNoThrow(std::wstring volumeName, std::wstring& displayName)
{
    NameBuffer paths;
    DWORD needed = 0;
    if (!::GetVolumePathNamesForVolumeNameW(volumeName.c_str(), paths.Data(), paths.Capacity(), &needed)) {
        if (needed == 0) {
            return false;
        }
        paths = NameBuffer(needed);
        if (!::GetVolumePathNamesForVolumeNameW(volumeName.c_str(), paths.Data(), paths.Capacity(), &needed)) {
            return false;
        }
    }
    // The first path of the list, also where a later one is shorter.
    displayName = paths.Text();
    return true;
}
