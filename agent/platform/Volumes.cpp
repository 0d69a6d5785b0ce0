// Which volume a path lies on.

#include "agent/platform/Volumes.h"

#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"

#include <windows.h>

namespace agent {

std::wstring VolumePath(const std::wstring& path)
{
    wchar_t volume[MAX_PATH] = {};
    return ::GetVolumePathNameW(path.c_str(), volume, MAX_PATH) ? volume : std::wstring();
}

bool IsVolumeRoot(const std::wstring& path)
{
    const bool isShare = path.starts_with(LR"(\\)") && path.find(L'\\', path.find(L'\\', 2) + 1) == std::wstring::npos;
    return isShare || EqualIgnoringCase(VolumePath(Join(path, L"")), Join(path, L""));
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

} // namespace agent
