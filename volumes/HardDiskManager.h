// The one disk-space object: mount paths and space of volumes.
//
// A query stores its numbers in the object, so no two threads may query at once.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace quorvantavss {

class CHardDiskManager {
public:
    constexpr CHardDiskManager() noexcept = default;
    virtual ~CHardDiskManager() = default;
    CHardDiskManager(const CHardDiskManager&) = delete;
    CHardDiskManager& operator=(const CHardDiskManager&) = delete;

    // Queries the space of the volume that contains `directory`. On failure, the numbers of the last success stay.
    [[nodiscard]] bool QueryDiskSpace(const wchar_t* directory) noexcept;

    // The numbers of the last successful query, in bytes.
    [[nodiscard]] std::uint64_t FreeBytesAvailable() const noexcept
    {
        return m_freeBytesAvailable;
    } // after the caller's quotas
    [[nodiscard]] std::uint64_t TotalBytes() const noexcept { return m_totalBytes; }

    // Returns the mount paths of a volume in Windows' order; empty if it has none or they cannot be read.
    [[nodiscard]] std::vector<std::wstring> GetVolumePathNames(const wchar_t* volumeName);

private:
    std::uint64_t m_freeBytesAvailable = 0;
    std::uint64_t m_totalBytes = 0;
    std::uint64_t m_totalFreeBytes = 0; // kept with the other two, never read
};

} // namespace quorvantavss

extern quorvantavss::CHardDiskManager g_hardDiskManager;
