// A copy of one file, which is hashed while it is copied.

#include "agent/platform/FileCopy.h"

#include "agent/platform/Handles.h"

namespace agent {

namespace {

UniqueHandle OpenSource(const std::wstring& path, DWORD sharing)
{
    return Own(
        ::CreateFileW(path.c_str(), GENERIC_READ, sharing, nullptr, OPEN_EXISTING, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
}

// Returns the error that ended the write.
DWORD WriteBlock(HANDLE target, const char* bytes, DWORD size)
{
    DWORD written = 0;
    if (!::WriteFile(target, bytes, size, &written, nullptr)) {
        return ::GetLastError();
    }
    return written == size ? ERROR_SUCCESS : ERROR_DISK_FULL;
}

CopyResult CopyOpened(HANDLE source, HANDLE target)
{
    CopyResult result;
    DWORD writeError = ERROR_SUCCESS;
    result.digest = DigestOpenFile(source, [&](const char* bytes, DWORD size) {
        writeError = WriteBlock(target, bytes, size);
        return writeError == ERROR_SUCCESS;
    });
    if (!result.digest) {
        result.isSourceError = writeError == ERROR_SUCCESS;
        result.error = result.isSourceError ? ::GetLastError() : writeError;
    }
    return result;
}

CopyResult SourceFailed()
{
    return {std::nullopt, false, true, ::GetLastError()};
}

} // namespace

CopyResult CopyAndDigest(const std::wstring& source, const std::wstring& target)
{
    UniqueHandle from = OpenSource(source, 0);
    const bool isShared = from == nullptr && ::GetLastError() == ERROR_SHARING_VIOLATION;
    if (isShared) {
        from = OpenSource(source, kShareAll);
    }
    if (from == nullptr) {
        return SourceFailed();
    }
    UniqueHandle to = Own(
        ::CreateFileW(target.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (to == nullptr) {
        return {std::nullopt, isShared, false, ::GetLastError()};
    }
    CopyResult result = CopyOpened(from.get(), to.get());
    result.isShared = isShared;
    to.reset();
    if (!result.digest) {
        ::DeleteFileW(target.c_str());
    }
    return result;
}

CopyResult CopyInto(HANDLE target, const std::wstring& source)
{
    const UniqueHandle from = OpenSource(source, kShareAll);
    return from == nullptr ? SourceFailed() : CopyOpened(from.get(), target);
}

} // namespace agent
