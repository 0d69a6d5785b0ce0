// Resolution of paths to volume names, and of volume names to readable mount paths.

#include <Kestrovane.h>

#include "win32/CrtPrintf.h"
#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <cstddef>
#include <optional>
#include <string_view>
#include <utility>

namespace {

// A buffer for a string or list of strings that Windows returns.
class OutputBuffer {
public:
    // Windows may fill `capacity` characters; one more ends the string in any case.
    explicit OutputBuffer(std::size_t capacity = MAX_PATH) : m_characters(capacity + 1, L'\0') {}

    wchar_t* Data() noexcept { return m_characters.data(); }
    [[nodiscard]] DWORD Capacity() const noexcept { return static_cast<DWORD>(m_characters.size() - 1); }
    [[nodiscard]] std::wstring FirstString() const { return m_characters.substr(0, m_characters.find(L'\0')); }

private:
    std::wstring m_characters;
};

// Requires a trailing backslash.
std::optional<std::wstring> QueryVolumePath(const std::wstring& path)
{
    OutputBuffer volumePath;
    if (!::GetVolumePathNameW(path.c_str(), volumePath.Data(), volumePath.Capacity())) {
        return std::nullopt;
    }
    return volumePath.FirstString();
}

// `mountPoint` is a volume path or a volume name. Requires a trailing backslash.
std::optional<std::wstring> QueryVolumeName(const std::wstring& mountPoint)
{
    OutputBuffer name;
    if (!::GetVolumeNameForVolumeMountPointW(mountPoint.c_str(), name.Data(), name.Capacity())) {
        return std::nullopt;
    }
    return name.FirstString();
}

} // namespace

bool IsVolume(std::wstring path)
{
    if (path.empty()) {
        return false;
    }
    path = AppendBackslash(std::move(path));
    if (QueryVolumeName(path)) {
        return true;
    }
    const LastErrorGuard keepLastError;
    const DWORD error = ::GetLastError();
    CrtPrintf("GetVolumeNameForVolumeMountPoint(%S) failed with %d\n", Printable(std::move(path)).c_str(),
              static_cast<int>(error));
    return false;
}

std::wstring GetUniqueVolumeNameForPath(std::wstring path)
{
    if (path.empty()) {
        // Deliberately not the empty string: hosts expect the unused buffer.
        path.assign(MAX_PATH, L'\0');
        return path;
    }
    const auto volumePath = QueryVolumePath(AppendBackslash(std::move(path)));
    if (!volumePath) {
        return {};
    }
    const auto name = QueryVolumeName(*volumePath);
    if (!name) {
        return *volumePath; // a share has no volume name
    }
    // A volume may have more than one name; each look-up of one returns the unique name.
    return QueryVolumeName(*name).value_or(*name);
}

bool GetUniqueVolumeNameForPathNoThrow(std::wstring path, std::wstring& uniqueName)
{
    if (path.empty()) {
        return false;
    }
    const auto volumePath = QueryVolumePath(AppendBackslash(std::move(path)));
    if (!volumePath) {
        return false;
    }
    const auto name = QueryVolumeName(*volumePath);
    if (!name) {
        return false;
    }
    auto unique = QueryVolumeName(*name);
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
    // Deliberately the first dot anywhere: after the server name it repeats the string between backslash and dot.
    return name.substr(0, dot) + name.substr(serverEnd);
}

bool GetDisplayNameForVolumeNoThrow(std::wstring volumeName, std::wstring& displayName)
{
    OutputBuffer paths;
    DWORD needed = 0;
    if (!::GetVolumePathNamesForVolumeNameW(volumeName.c_str(), paths.Data(), paths.Capacity(), &needed)) {
        if (needed == 0) {
            return false;
        }
        paths = OutputBuffer(needed);
        if (!::GetVolumePathNamesForVolumeNameW(volumeName.c_str(), paths.Data(), paths.Capacity(), &needed)) {
            return false;
        }
    }
    // Deliberately the first path of the list, even if a later one is shorter.
    displayName = paths.FirstString();
    return true;
}
