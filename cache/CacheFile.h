// A new cache file whose path the host does not have yet.

#pragma once

// Deletes the file at the end of the scope, unless it is kept: after an exception nobody could name it any more.
class UnnamedCacheFile {
public:
    // `path` must stay valid; an empty one names no file.
    explicit UnnamedCacheFile(const wchar_t* path) noexcept : m_path(*path == L'\0' ? nullptr : path) {}
    ~UnnamedCacheFile();
    UnnamedCacheFile(const UnnamedCacheFile&) = delete;
    UnnamedCacheFile& operator=(const UnnamedCacheFile&) = delete;

    void Keep() noexcept { m_path = nullptr; }

private:
    const wchar_t* m_path;
};
