// Small tools for files and texts, independent of the library under test.

#pragma once

#include "tests/support/UniqueResource.h"

#include <windows.h>

#include <cstdint>
#include <string>
#include <vector>

using StringList = std::vector<std::wstring>;

std::string Utf8(const std::wstring& text);

void WriteFileBytes(const std::wstring& path, const std::string& bytes); // replaces the file
std::string ReadFileBytes(const std::wstring& path);                     // empty when it is missing, too
bool PathExists(const std::wstring& path);                               // a file or a directory
bool IsDirectory(const std::wstring& path);

std::wstring CurrentDirectory();

// The entries of a directory (no trailing backslash), without "." and "..".
std::vector<WIN32_FIND_DATAW> EntriesOf(const std::wstring& directory);

// An existing file, kept open in this process with the given access and share mode until the end of the scope.
class LockedFile {
public:
    LockedFile(const std::wstring& path, DWORD access, DWORD share);

private:
    UniqueHandle m_file;
};

// Bytes that differ from place to place, the same for the same seed.
std::string SampleBytes(std::size_t size, unsigned seed = 1);
