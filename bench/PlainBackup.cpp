// What a plain program does for a backup.

#include "bench/PlainBackup.h"

#include <windows.h>

#include <bcrypt.h>

#include <filesystem>
#include <fstream>
#include <vector>

namespace bench {

namespace {

namespace fs = std::filesystem;

// One provider and one hash object for all files.
class Hasher {
public:
    Hasher()
    {
        ::BCryptOpenAlgorithmProvider(&m_provider, BCRYPT_SHA256_ALGORITHM, nullptr, BCRYPT_HASH_REUSABLE_FLAG);
        ::BCryptCreateHash(m_provider, &m_hash, nullptr, 0, nullptr, 0, BCRYPT_HASH_REUSABLE_FLAG);
    }
    ~Hasher()
    {
        ::BCryptDestroyHash(m_hash);
        ::BCryptCloseAlgorithmProvider(m_provider, 0);
    }
    Hasher(const Hasher&) = delete;
    Hasher& operator=(const Hasher&) = delete;

    void Hash(const fs::path& file)
    {
        std::ifstream stream(file, std::ios::binary);
        while (stream) {
            stream.read(m_buffer.data(), static_cast<std::streamsize>(m_buffer.size()));
            ::BCryptHashData(m_hash, reinterpret_cast<UCHAR*>(m_buffer.data()), static_cast<ULONG>(stream.gcount()), 0);
        }
        constexpr ULONG kDigestSize = 32; // bytes
        UCHAR digest[kDigestSize];
        ::BCryptFinishHash(m_hash, digest, kDigestSize, 0);
    }

private:
    static constexpr std::size_t kBufferSize = 1 << 20; // bytes

    BCRYPT_ALG_HANDLE m_provider = nullptr;
    BCRYPT_HASH_HANDLE m_hash = nullptr;
    std::vector<char> m_buffer = std::vector<char>(kBufferSize);
};

} // namespace

void PlainBackup(const std::wstring& source, const std::wstring& target)
{
    Hasher hasher;
    const fs::path root = source;
    const fs::path copy = target;
    fs::create_directories(copy);
    for (const fs::directory_entry& entry : fs::recursive_directory_iterator(root)) {
        const fs::path place = copy / entry.path().lexically_relative(root);
        if (entry.is_directory()) {
            fs::create_directory(place);
        } else {
            fs::copy_file(entry.path(), place, fs::copy_options::overwrite_existing);
            hasher.Hash(place);
        }
    }
}

} // namespace bench
