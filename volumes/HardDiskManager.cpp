// Queries about volumes: their mount paths and their space.

#include "volumes/HardDiskManager.h"

#include <windows.h>

#include <cwchar>

namespace {

constexpr DWORD kUsualRoom = MAX_PATH + 1; // characters

// Cuts a list of names, each with its terminator, that ends with an empty name.
std::vector<std::wstring> CutAtTerminators(const wchar_t* names)
{
    std::vector<std::wstring> list;
    for (const wchar_t* name = names; *name != L'\0'; name += std::wcslen(name) + 1) {
        list.emplace_back(name);
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
    DWORD length = kUsualRoom;
    for (;;) {
        // Two terminators behind what Windows may write end the list in any case.
        std::vector<wchar_t> names(std::size_t{length} + 2);
        if (::GetVolumePathNamesForVolumeNameW(volumeName, names.data(), length, &length)) {
            return CutAtTerminators(names.data());
        }
        if (::GetLastError() != ERROR_MORE_DATA) {
            return {};
        }
    }
}

} // namespace quorvantavss
