// SHA-256 of a file, by Windows' own hash service.

#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace agent {

struct FileDigest {
    std::string sha256; // 64 lower-case hexadecimal digits
    std::int64_t size = 0;

    bool operator==(const FileDigest&) const = default;
};

// The digest of what can be read; nothing when the file cannot be read to its end. The last error tells why.
std::optional<FileDigest> DigestFile(const std::wstring& path);

} // namespace agent
