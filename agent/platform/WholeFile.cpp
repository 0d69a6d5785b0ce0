// Small files that are read and written as a whole.

#include "agent/platform/WholeFile.h"

#include "agent/platform/Handles.h"

#include <windows.h>

#include <cstdint>

namespace agent {

namespace {

constexpr std::int64_t kLargestFile = 1LL << 30; // bytes

bool WriteAndFlush(const std::wstring& path, const std::string& content)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file != nullptr &&
           ::WriteFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &written, nullptr) &&
           written == content.size() && ::FlushFileBuffers(file.get());
}

} // namespace

bool WriteWholeFile(const std::wstring& path, const std::string& content)
{
    const std::wstring fresh = path + kFreshSuffix;
    if (WriteAndFlush(fresh, content) &&
        ::MoveFileExW(fresh.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return true;
    }
    const DWORD error = ::GetLastError();
    ::DeleteFileW(fresh.c_str());
    ::SetLastError(error);
    return false;
}

std::optional<std::string> ReadWholeFile(const std::wstring& path)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size = {};
    if (file == nullptr || !::GetFileSizeEx(file.get(), &size)) {
        return std::nullopt;
    }
    if (size.QuadPart > kLargestFile) {
        ::SetLastError(ERROR_FILE_TOO_LARGE);
        return std::nullopt;
    }
    std::string content(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.get(), content.data(), static_cast<DWORD>(content.size()), &read, nullptr)) {
        return std::nullopt;
    }
    content.resize(read);
    return content;
}

} // namespace agent
