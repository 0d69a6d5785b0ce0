// Free and total space of volumes.

#include <Kestrovane.h>

#include "volumes/HardDiskManager.h"

namespace {

constexpr double kBytesPerGigabyte = 1000000000.0;

double Gigabytes(std::uint64_t bytes)
{
    // Signed on purpose: no volume has 2^63 bytes, and a count that says so shows as a negative number.
    return static_cast<double>(static_cast<std::int64_t>(bytes)) / kBytesPerGigabyte;
}

} // namespace

double GetAvailableVolumeSpace(const std::wstring& path)
{
    return g_hardDiskManager.QueryDiskSpace(path.c_str()) ? Gigabytes(g_hardDiskManager.FreeBytesAvailable()) : 0.0;
}

double GetTotalVolumeSpace(const std::wstring& path)
{
    return g_hardDiskManager.QueryDiskSpace(path.c_str()) ? Gigabytes(g_hardDiskManager.TotalBytes()) : 0.0;
}

std::wstring GetVolumeMaxFreeSpace()
{
    std::wstring roomiest;
    try {
        double most = 0.0;
        for (const std::wstring& path : EnumVolumes()) {
            const double space = GetAvailableVolumeSpace(path);
            if (space > most) {
                most = space;
                roomiest = path;
            }
        }
    } catch (...) { // the roomiest volume so far counts
    }
    return roomiest;
}
