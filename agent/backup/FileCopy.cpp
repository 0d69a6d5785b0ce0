// The copy of one file into a backup.

#include "agent/backup/FileCopy.h"

#include "agent/platform/Digest.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

#include <vector>

namespace agent {

namespace {

// Returns the error that ended the copy.
DWORD CopyBlocks(HANDLE source, HANDLE target)
{
    thread_local std::vector<char> block(kReadBlock); // filled with zeros once, not for each file
    DWORD read = 0;
    do {
        DWORD written = 0;
        if (!::ReadFile(source, block.data(), static_cast<DWORD>(block.size()), &read, nullptr) ||
            (read > 0 && !::WriteFile(target, block.data(), read, &written, nullptr))) {
            return ::GetLastError();
        }
        if (written != read) {
            return ERROR_DISK_FULL;
        }
    } while (read > 0);
    return ERROR_SUCCESS;
}

DWORD CopyOpened(HANDLE source, const std::wstring& target)
{
    const UniqueHandle file = Own(
        ::CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    return file == nullptr ? ::GetLastError() : CopyBlocks(source, file.get());
}

} // namespace

CopyResult CopyWithSharing(const std::wstring& source, const std::wstring& target)
{
    const UniqueHandle file = Own(::CreateFileW(source.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    const DWORD error = file == nullptr ? ::GetLastError() : CopyOpened(file.get(), target);
    if (error != ERROR_SUCCESS) {
        ::DeleteFileW(target.c_str());
    }
    return {error == ERROR_SUCCESS, true, error};
}

CopyResult CopyFileIntoBackup(const std::wstring& source, const std::wstring& target)
{
    if (DoCopyComponentFile(source, target) != 0) {
        return {true, false, ERROR_SUCCESS};
    }
    const bool isInUse = ::GetLastError() == ERROR_SHARING_VIOLATION;
    CopyResult result = CopyWithSharing(source, target);
    result.isShared = isInUse;
    return result;
}

} // namespace agent
