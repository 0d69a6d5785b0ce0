// Queries about volumes: mount paths and space.

#include "volumes/HardDiskManager.h"

#include <windows.h>

#include <cwchar>

namespace {

constexpr DWORD kUsualCapacity = MAX_PATH + 1; // characters

// Splits a list of NUL-terminated strings that ends with an empty string.
std::vector<std::wstring> SplitMultiSz(const wchar_t* strings)
{
    std::vector<std::wstring> list;
    for (const wchar_t* string = strings; *string != L'\0'; string += list.back().size() + 1) {
        list.emplace_back(string);
    }
    return list;
}

} // namespace

namespace quorvantavss {

bool CHardDiskManager::QueryDiskSpace(const wchar_t* directory) noexcept
{
    try {
        ULARGE_INTEGER available = {};
        ULARGE_INTEGER total = {};
        ULARGE_INTEGER totalFree = {};
        if (!::GetDiskFreeSpaceExW(directory, &available, &total, &totalFree)) {
            return false;
        }
        m_freeBytesAvailable = available.QuadPart;
        m_totalBytes = total.QuadPart;
        m_totalFreeBytes = totalFree.QuadPart;
        return true;
    } catch (...) {
        return false;
    }
}

std::vector<std::wstring> CHardDiskManager::GetVolumePathNames(const wchar_t* volumeName)
{
    DWORD capacity = kUsualCapacity;
    for (;;) {
        // Two NULs after what Windows may write end the list in any case.
        std::vector<wchar_t> names(std::size_t{capacity} + 2);
        DWORD needed = capacity;
        if (::GetVolumePathNamesForVolumeNameW(volumeName, names.data(), capacity, &needed)) {
            return SplitMultiSz(names.data());
        }
        // A length that does not grow would be asked for again and again.
        if (::GetLastError() != ERROR_MORE_DATA || needed <= capacity) {
            return {};
        }
        capacity = needed;
    }
}

} // namespace quorvantavss
