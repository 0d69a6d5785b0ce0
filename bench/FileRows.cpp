// Copies and deletion.

#include "bench/Rows.h"

#include <Kestrovane.h>

#include <windows.h>

#include <direct.h>
#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cwchar>
#include <filesystem>
#include <memory>

namespace bench {

namespace {

volatile int g_sink; // keeps results alive

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const { ::CloseHandle(handle); }
};
using UniqueHandle = std::unique_ptr<HANDLE, HandleCloser>;

UniqueHandle Open(const std::wstring& path, DWORD access, DWORD disposition)
{
    constexpr DWORD kFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN;
    const HANDLE handle = ::CreateFileW(path.c_str(), access, 0, nullptr, disposition, kFlags, nullptr);
    return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

// The calls that create a directory that exists, in the library's order.
void BareCreateDirectory(const std::wstring& directory)
{
    wchar_t current[MAX_PATH];
    const wchar_t* const before = ::_wgetcwd(current, MAX_PATH);
    for (std::size_t end = directory.find(L'\\'); end != std::wstring::npos;) {
        const std::size_t next = directory.find(L'\\', end + 1);
        g_sink = ::_wchdir(directory.substr(0, end).c_str());
        g_sink = ::_wmkdir(directory.substr(0, next).c_str());
        end = next;
    }
    g_sink = ::_wchdir(directory.c_str());
    g_sink = ::_wchdir(before);
}

void BareCopy(const std::wstring& source, const std::wstring& directory, const std::wstring& target)
{
    constexpr DWORD kBlock = 8192; // bytes
    g_sink = ::_close(::_wopen(source.c_str(), _O_RDONLY));
    BareCreateDirectory(directory);
    const UniqueHandle from = Open(source, GENERIC_READ, OPEN_EXISTING);
    const UniqueHandle to = Open(target, GENERIC_WRITE, CREATE_ALWAYS);
    unsigned char block[kBlock];
    DWORD read = 0;
    DWORD written = 0;
    while (::ReadFile(from.get(), block, kBlock, &read, nullptr) && read > 0) {
        ::WriteFile(to.get(), block, read, &written, nullptr);
    }
}

Row CopyRow(const std::string& size, const std::wstring& name)
{
    const std::wstring source = kRoot + L"\\copy\\" + name;
    const std::wstring directory = kRoot + LR"(\copied)";
    const std::wstring target = directory + L"\\" + name;
    return {"copy",
            "DoCopyComponentFile, " + size,
            [=] { g_sink = DoCopyComponentFile(source, target); },
            [=] { BareCopy(source, directory, target); },
            "CopyFileW",
            [=] { g_sink = ::CopyFileW(source.c_str(), target.c_str(), FALSE); },
            {}};
}

bool IsDotName(const wchar_t* name)
{
    return std::wcscmp(name, L".") == 0 || std::wcscmp(name, L"..") == 0;
}

void BareDelete(const std::wstring& directory)
{
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = ::FindFirstFileW((directory + L"\\*").c_str(), &entry);
    while (::FindNextFileW(search, &entry)) {
        const std::wstring path = directory + L"\\" + entry.cFileName;
        if (IsDotName(entry.cFileName)) {
            continue;
        }
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            BareDelete(path);
            ::RemoveDirectoryW(path.c_str()); // the second attempt of the library
        } else {
            ::DeleteFileW(path.c_str());
        }
    }
    ::FindClose(search);
    ::RemoveDirectoryW(directory.c_str());
}

// The script that prepares the measurement creates as many equal trees as there are samples.
std::wstring NextTree()
{
    static int number = 0;
    return kRoot + LR"(\delete\)" + std::to_wstring(number++);
}

Row DeletionRow()
{
    const auto tree = std::make_shared<std::wstring>();
    Row row{"deletion",
            "DeleteDirectoryRecursive, 20,000 files",
            [tree] { g_sink = DeleteDirectoryRecursive(tree->c_str()); },
            [tree] { BareDelete(*tree); },
            {},
            {},
            [tree] { *tree = NextTree(); }};
    row.rounds = 3;
    return row;
}

} // namespace

std::vector<Row> FileRows()
{
    return {CopyRow("0 bytes", L"0"), CopyRow("8 KiB", L"8K"), CopyRow("1 MiB", L"1M"), CopyRow("256 MiB", L"256M"),
            DeletionRow()};
}

} // namespace bench
