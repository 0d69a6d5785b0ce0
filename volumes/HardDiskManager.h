// The one disk-space object: where volumes are mounted and how much room they have.
//
// A query leaves its numbers in the object, so none is safe for two threads at once.

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

    // Asks for the space of the volume that holds `directory`. On failure the numbers stay those of the last success.
    bool QueryDiskSpace(const wchar_t* directory) noexcept;

    // The numbers of the last successful query, in bytes.
    std::uint64_t FreeBytesAvailable() const noexcept { return m_freeBytesAvailable; } // after the caller's quotas
    std::uint64_t TotalBytes() const noexcept { return m_totalBytes; }

    // The mount paths of a volume in Windows' order; empty when it has none and when they cannot be read.
    std::vector<std::wstring> GetVolumePathNames(const wchar_t* volumeName);

private:
    std::uint64_t m_freeBytesAvailable = 0;
    std::uint64_t m_totalBytes = 0;
    std::uint64_t m_totalFreeBytes = 0; // kept with the other two, never read
};

} // namespace quorvantavss

extern quorvantavss::CHardDiskManager g_hardDiskManager;
