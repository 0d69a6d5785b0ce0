// Which volume a path lies on.

#pragma once

#include <string>

namespace agent {

// The root of the volume that holds a path, a mount folder included; empty when Windows does not know it.
std::wstring VolumePath(const std::wstring& path);

// The root of a drive or share, or the folder that a volume is mounted in.
bool IsVolumeRoot(const std::wstring& path);

bool IsOnShare(const std::wstring& path);

// Whether two paths lie on the same volume: only then a file can be moved from one to the other at a reboot.
bool IsSameVolume(const std::wstring& first, const std::wstring& second);

} // namespace agent
