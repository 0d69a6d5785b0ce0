// Small tools for files and texts, independent of the library under test.

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

#include <random>

namespace {

UniqueHandle Open(const std::wstring& path, DWORD access, DWORD share, DWORD disposition)
{
    return UniqueHandle(
        ::CreateFileW(path.c_str(), access, share, nullptr, disposition, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
}

} // namespace

std::string Utf8(const std::wstring& text)
{
    const int length = static_cast<int>(text.size());
    const int room = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(room), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), room, nullptr, nullptr);
    return utf8;
}

void WriteFileBytes(const std::wstring& path, const std::string& bytes)
{
    const UniqueHandle file = Open(path, GENERIC_WRITE, 0, CREATE_ALWAYS);
    ASSERT_NE(INVALID_HANDLE_VALUE, file.get()) << Utf8(path) << " error " << ::GetLastError();
    DWORD written = 0;
    ::WriteFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ASSERT_EQ(bytes.size(), written) << Utf8(path);
}

std::string ReadFileBytes(const std::wstring& path)
{
    constexpr DWORD kAnyone = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const UniqueHandle file = Open(path, GENERIC_READ, kAnyone, OPEN_EXISTING);
    if (file.get() == INVALID_HANDLE_VALUE) {
        return {};
    }
    LARGE_INTEGER size = {};
    ::GetFileSizeEx(file.get(), &size);
    std::string bytes(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    ::ReadFile(file.get(), bytes.data(), static_cast<DWORD>(bytes.size()), &read, nullptr);
    bytes.resize(read);
    return bytes;
}

bool PathExists(const std::wstring& path)
{
    return ::GetFileAttributesW(path.c_str()) != INVALID_FILE_ATTRIBUTES;
}

bool IsDirectory(const std::wstring& path)
{
    const DWORD attributes = ::GetFileAttributesW(path.c_str());
    return attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
}

std::wstring CurrentDirectory()
{
    std::wstring directory(::GetCurrentDirectoryW(0, nullptr), L'\0');
    directory.resize(::GetCurrentDirectoryW(static_cast<DWORD>(directory.size()), directory.data()));
    return directory;
}

LockedFile::LockedFile(const std::wstring& path, DWORD access, DWORD share)
    : m_file(Open(path, access, share, OPEN_EXISTING))
{
    EXPECT_NE(INVALID_HANDLE_VALUE, m_file.get()) << Utf8(path) << " error " << ::GetLastError();
}

std::vector<WIN32_FIND_DATAW> EntriesOf(const std::wstring& directory)
{
    std::vector<WIN32_FIND_DATAW> entries;
    WIN32_FIND_DATAW entry = {};
    const UniqueSearch search(::FindFirstFileW((directory + L"\\*").c_str(), &entry));
    for (bool found = search.get() != INVALID_HANDLE_VALUE; found;
         found = ::FindNextFileW(search.get(), &entry) != FALSE) {
        const std::wstring name = entry.cFileName;
        if (name != L"." && name != L"..") {
            entries.push_back(entry);
        }
    }
    return entries;
}

std::string SampleBytes(std::size_t size, unsigned seed)
{
    std::mt19937 random(seed);
    std::string bytes(size, '\0');
    for (char& value : bytes) {
        value = static_cast<char>(random() & 0xFFU);
    }
    return bytes;
}
