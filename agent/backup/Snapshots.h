// Reading files from the snapshots of their volumes.

#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace agent {

class Snapshots {
public:
    // Reads VOLUME=DEVICE values: VOLUME is a drive, a mount folder, a volume name or a share. @return a reason when
    // one cannot be used.
    std::optional<std::wstring> Add(const std::vector<std::wstring>& values);

    [[nodiscard]] bool IsEmpty() const { return m_devices.empty(); }

    // Whether there is a snapshot of the volume that holds a path; the library itself cannot tell.
    [[nodiscard]] bool Covers(const std::wstring& path) const;

    // The path in the snapshot; a root ends with a backslash, without which it cannot be opened.
    [[nodiscard]] std::wstring PathOf(const std::wstring& path) const;

private:
    std::map<std::wstring, std::wstring> m_devices; // by volume name, or by share with its trailing backslash
};

} // namespace agent
