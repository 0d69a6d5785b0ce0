// Small files that are read and written as a whole.

#include "agent/WholeFile.h"

#include "win32/UniqueResource.h"

#include <windows.h>

#include <cstdint>

namespace agent {

namespace {

constexpr std::int64_t kLargestFile = 1LL << 30; // bytes

} // namespace

bool WriteWholeFile(const std::wstring& path, const std::string& text)
{
    const UniqueFileHandle file(
        ::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr));
    DWORD written = 0;
    return file && ::WriteFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &written, nullptr) &&
           written == text.size() && ::FlushFileBuffers(file.Get());
}

std::optional<std::string> ReadWholeFile(const std::wstring& path)
{
    const UniqueFileHandle file(
        ::CreateFileW(path.c_str(), GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING, 0, nullptr));
    LARGE_INTEGER size = {};
    if (!file || !::GetFileSizeEx(file.Get(), &size)) {
        return std::nullopt;
    }
    if (size.QuadPart > kLargestFile) {
        ::SetLastError(ERROR_FILE_TOO_LARGE);
        return std::nullopt;
    }
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    if (!::ReadFile(file.Get(), text.data(), static_cast<DWORD>(text.size()), &read, nullptr)) {
        return std::nullopt;
    }
    text.resize(read);
    return text;
}

} // namespace agent
