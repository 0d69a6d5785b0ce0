// SHA-256 of a file, by Windows' own hash service.

#include "agent/Sha256.h"

#include "win32/UniqueResource.h"

#include <windows.h>

#include <bcrypt.h>

#include <array>
#include <vector>

namespace agent {

namespace {

constexpr DWORD kBlock = 256 * 1024;    // bytes
constexpr std::size_t kDigestSize = 32; // bytes

struct HashProviderTraits {
    using Value = BCRYPT_ALG_HANDLE;
    static Value None() noexcept { return nullptr; }
    static void Free(Value provider) noexcept { ::BCryptCloseAlgorithmProvider(provider, 0); }
};

struct HashTraits {
    using Value = BCRYPT_HASH_HANDLE;
    static Value None() noexcept { return nullptr; }
    static void Free(Value hash) noexcept { ::BCryptDestroyHash(hash); }
};

// A refusal of the hash service, as a Win32 error for the message.
bool Refused(NTSTATUS status)
{
    if (status >= 0) {
        return false;
    }
    ::SetLastError(ERROR_INVALID_FUNCTION);
    return true;
}

std::string Hexadecimal(const std::array<UCHAR, kDigestSize>& digest)
{
    constexpr const char* kDigits = "0123456789abcdef";
    std::string text;
    for (const UCHAR value : digest) {
        text += kDigits[value >> 4U];
        text += kDigits[value & 0xFU];
    }
    return text;
}

std::optional<FileDigest> DigestOpened(HANDLE file, BCRYPT_HASH_HANDLE hash)
{
    FileDigest result;
    std::vector<UCHAR> block(kBlock);
    DWORD read = 0;
    do {
        if (!::ReadFile(file, block.data(), kBlock, &read, nullptr) ||
            Refused(::BCryptHashData(hash, block.data(), read, 0))) {
            return std::nullopt;
        }
        result.size += read;
    } while (read > 0);
    std::array<UCHAR, kDigestSize> digest = {};
    if (Refused(::BCryptFinishHash(hash, digest.data(), static_cast<ULONG>(digest.size()), 0))) {
        return std::nullopt;
    }
    result.sha256 = Hexadecimal(digest);
    return result;
}

} // namespace

std::optional<FileDigest> DigestFile(const std::wstring& path)
{
    constexpr DWORD kWithAnyone = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueFileHandle file(::CreateFileW(path.c_str(), GENERIC_READ, kWithAnyone, nullptr, OPEN_EXISTING,
                                              FILE_FLAG_SEQUENTIAL_SCAN, nullptr));
    if (!file) {
        return std::nullopt;
    }
    BCRYPT_ALG_HANDLE provider = nullptr;
    if (Refused(::BCryptOpenAlgorithmProvider(&provider, BCRYPT_SHA256_ALGORITHM, nullptr, 0))) {
        return std::nullopt;
    }
    const UniqueResource<HashProviderTraits> ownedProvider(provider);
    BCRYPT_HASH_HANDLE hash = nullptr;
    if (Refused(::BCryptCreateHash(provider, &hash, nullptr, 0, nullptr, 0, 0))) {
        return std::nullopt;
    }
    const UniqueResource<HashTraits> ownedHash(hash);
    return DigestOpened(file.Get(), hash);
}

} // namespace agent
