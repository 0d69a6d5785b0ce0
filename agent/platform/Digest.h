// SHA-256 of files, by Windows' own hash service.

#pragma once

#include <windows.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace agent {

struct FileDigest {
    std::string sha256; // 64 lower-case hexadecimal digits
    std::int64_t size = 0;

    bool operator==(const FileDigest&) const = default;
};

constexpr std::size_t kReadBlock = 1U << 20U; // bytes: larger blocks are no faster

// A hash object that serves one file after another. One thread at a time.
class Sha256 {
public:
    Sha256();
    ~Sha256();
    Sha256(const Sha256&) = delete;
    Sha256& operator=(const Sha256&) = delete;

    // false when the hash service fails; the last error tells.
    bool Add(const void* bytes, std::size_t size);

    // The digest of what was added since the last call; nothing when the hash service fails.
    std::optional<FileDigest> Finish();

private:
    struct Service;
    std::unique_ptr<Service> m_service;
    std::int64_t m_size = 0;
};

// Receives each block that was read. @return false to end the reading.
using OnBlock = std::function<bool(const char* bytes, DWORD size)>;

// The digest of an open file from its current position to its end; nothing when it cannot be read or `onBlock` ends the
// reading. The last error tells why. Any number of threads may call this at once; hash objects and buffers are used
// again.
std::optional<FileDigest> DigestOpenFile(HANDLE file, const OnBlock& onBlock);

// Receives the number of bytes of each block that was read.
using OnBytes = std::function<void(std::int64_t bytes)>;

// The digest of a file; nothing when the file cannot be read to its end. The last error tells why.
std::optional<FileDigest> DigestFile(const std::wstring& path, const OnBytes& onBytes = {});

} // namespace agent
