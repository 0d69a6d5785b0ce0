// SHA-256 of files, by Windows' own hash service.

#include "agent/platform/Digest.h"

#include "agent/platform/Handles.h"

#include <windows.h>

#include <bcrypt.h>

#include <array>
#include <mutex>
#include <utility>
#include <vector>

namespace agent {

namespace {

constexpr std::size_t kDigestSize = 32; // bytes

struct ProviderCloser {
    void operator()(void* provider) const noexcept { ::BCryptCloseAlgorithmProvider(provider, 0); }
};
using UniqueProvider = std::unique_ptr<void, ProviderCloser>;
using UniqueHash = std::unique_ptr<void, Releaser<&::BCryptDestroyHash>>;

// A failure of the hash service, as a Win32 error for the message.
bool Succeeded(NTSTATUS status)
{
    if (status >= 0) {
        return true;
    }
    ::SetLastError(ERROR_INVALID_FUNCTION);
    return false;
}

UniqueProvider OpenProvider()
{
    BCRYPT_ALG_HANDLE provider = nullptr;
    ::BCryptOpenAlgorithmProvider(&provider, BCRYPT_SHA256_ALGORITHM, nullptr, 0);
    return UniqueProvider(provider);
}

UniqueHash CreateHash(void* provider, ULONG flags)
{
    BCRYPT_HASH_HANDLE hash = nullptr;
    Succeeded(::BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, flags));
    return UniqueHash(hash);
}

std::string Hexadecimal(const std::array<UCHAR, kDigestSize>& digest)
{
    constexpr const char* kDigits = "0123456789abcdef";
    std::string digits;
    for (const UCHAR value : digest) {
        digits += kDigits[value >> 4U];
        digits += kDigits[value & 0xFU];
    }
    return digits;
}

} // namespace

struct Sha256::Service {
    UniqueProvider provider = OpenProvider();
    // Reusable hash objects came with Windows 8; elsewhere each file gets its own.
    UniqueHash reusable = CreateHash(provider.get(), BCRYPT_HASH_REUSABLE_FLAG);
    UniqueHash single;

    BCRYPT_HASH_HANDLE Current()
    {
        if (reusable != nullptr) {
            return reusable.get();
        }
        if (single == nullptr) {
            single = CreateHash(provider.get(), 0);
        }
        return single.get();
    }
};

Sha256::Sha256() : m_service(std::make_unique<Service>()) {}

Sha256::~Sha256() = default;

bool Sha256::Add(const void* bytes, std::size_t size)
{
    m_size += static_cast<std::int64_t>(size);
    auto* const data = static_cast<PUCHAR>(const_cast<void*>(bytes)); // an input, in spite of its type
    return Succeeded(::BCryptHashData(m_service->Current(), data, static_cast<ULONG>(size), 0));
}

std::optional<FileDigest> Sha256::Finish()
{
    std::array<UCHAR, kDigestSize> digest = {};
    const bool finished =
        Succeeded(::BCryptFinishHash(m_service->Current(), digest.data(), static_cast<ULONG>(digest.size()), 0));
    const std::int64_t size = std::exchange(m_size, 0);
    m_service->single.reset();
    if (!finished) {
        return std::nullopt;
    }
    return FileDigest{Hexadecimal(digest), size};
}

namespace {

// What reading and hashing one file takes.
struct Reader {
    Sha256 hash;
    std::vector<char> block = std::vector<char>(kReadBlock);
};

// Readers that wait for the next file. A thread_local one would be freed before its destructor runs: the toolchain's
// runtime ends a thread in that order.
class ReaderPool {
public:
    std::unique_ptr<Reader> Take()
    {
        const std::lock_guard lock(m_mutex);
        if (m_readers.empty()) {
            return std::make_unique<Reader>();
        }
        auto reader = std::move(m_readers.back());
        m_readers.pop_back();
        return reader;
    }

    void Return(std::unique_ptr<Reader> reader)
    {
        const std::lock_guard lock(m_mutex);
        m_readers.push_back(std::move(reader));
    }

private:
    std::mutex m_mutex;
    std::vector<std::unique_ptr<Reader>> m_readers;
};

bool DigestBlocks(Reader& reader, HANDLE file, const OnBlock& onBlock)
{
    DWORD read = 0;
    do {
        if (!::ReadFile(file, reader.block.data(), static_cast<DWORD>(reader.block.size()), &read, nullptr)) {
            return false;
        }
        if (read > 0 && (!reader.hash.Add(reader.block.data(), read) || !onBlock(reader.block.data(), read))) {
            return false;
        }
    } while (read > 0);
    return true;
}

} // namespace

std::optional<FileDigest> DigestOpenFile(HANDLE file, const OnBlock& onBlock)
{
    static ReaderPool pool;
    auto reader = pool.Take();
    const bool isRead = DigestBlocks(*reader, file, onBlock);
    const DWORD error = ::GetLastError();
    auto digest = reader->hash.Finish(); // after a failure, this discards what was added
    pool.Return(std::move(reader));
    if (!isRead) {
        ::SetLastError(error);
        return std::nullopt;
    }
    return digest;
}

std::optional<FileDigest> DigestFile(const std::wstring& path, const OnBytes& onBytes)
{
    const UniqueHandle file = Own(::CreateFileW(path.c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (file == nullptr) {
        return std::nullopt;
    }
    return DigestOpenFile(file.get(), [&](const char* /*bytes*/, DWORD size) {
        if (onBytes) {
            onBytes(size);
        }
        return true;
    });
}

} // namespace agent
