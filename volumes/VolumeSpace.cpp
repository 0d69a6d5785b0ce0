// Free and total space of volumes.

#include <Kestrovane.h>

#include "volumes/HardDiskManager.h"

namespace {

constexpr double kBytesPerGigabyte = 1000000000.0;

double Gigabytes(std::uint64_t bytes)
{
    // Deliberately signed: no volume has 2^63 bytes, and such a count becomes a negative number.
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
    std::wstring mostFree;
    try {
        double most = 0.0;
        for (const std::wstring& path : EnumVolumes()) {
            const double space = GetAvailableVolumeSpace(path);
            if (space > most) {
                most = space;
                mostFree = path;
            }
        }
    } catch (...) { // NOLINT(bugprone-empty-catch): the best volume so far is returned
    }
    return mostFree;
}
