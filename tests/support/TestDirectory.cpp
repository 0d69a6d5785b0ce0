// A fresh directory for one test.

#include "tests/support/TestDirectory.h"

#include <gtest/gtest.h>

namespace {

constexpr const wchar_t* kMark = L"\\made-by-a-kestrovane-test";

std::wstring UniqueName()
{
    static int count = 0;
    return L"kv" + std::to_wstring(::GetCurrentProcessId()) + L"-" + std::to_wstring(::GetTickCount64() % 1000000) +
           L"-" + std::to_wstring(++count);
}

// Through the long form of paths: trees under test may be deeper than plain paths reach.
std::wstring LongForm(const std::wstring& path)
{
    if (path.starts_with(LR"(\\?\)")) {
        return path;
    }
    return path.starts_with(LR"(\\)") ? LR"(\\?\UNC)" + path.substr(1) : LR"(\\?\)" + path;
}

void RemoveTree(const std::wstring& directory)
{
    for (const WIN32_FIND_DATAW& entry : EntriesOf(directory)) {
        const std::wstring path = directory + L"\\" + entry.cFileName;
        ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) == 0) {
            ::DeleteFileW(path.c_str());
        } else if ((entry.dwFileAttributes & FILE_ATTRIBUTE_REPARSE_POINT) != 0) {
            ::RemoveDirectoryW(path.c_str());
        } else {
            RemoveTree(path);
        }
    }
    ::RemoveDirectoryW(directory.c_str());
}

void MakeWithParents(const std::wstring& directory)
{
    if (IsDirectory(directory) || directory.find(L'\\') == std::wstring::npos) {
        return;
    }
    MakeWithParents(directory.substr(0, directory.rfind(L'\\')));
    ::CreateDirectoryW(directory.c_str(), nullptr);
}

} // namespace

TestDirectory::TestDirectory() : TestDirectory(L"C:\\") {}

TestDirectory::TestDirectory(const std::wstring& place) : m_top(place + UniqueName()), m_root(m_top + L"\\t")
{
    EXPECT_TRUE(::CreateDirectoryW(m_top.c_str(), nullptr)) << Utf8(m_top) << " error " << ::GetLastError();
    WriteFileBytes(m_top + kMark, "");
    EXPECT_TRUE(::CreateDirectoryW(m_root.c_str(), nullptr)) << Utf8(m_root);
}

TestDirectory::~TestDirectory()
{
    if (PathExists(m_top + kMark)) {
        RemoveTree(LongForm(m_root));
        ::DeleteFileW((m_top + kMark).c_str());
        ::RemoveDirectoryW(m_top.c_str());
    }
}

std::wstring TestDirectory::Path(const std::wstring& relative) const
{
    return m_root + L"\\" + relative;
}

std::wstring TestDirectory::File(const std::wstring& relative, const std::string& bytes) const
{
    const std::wstring path = Path(relative);
    MakeWithParents(path.substr(0, path.rfind(L'\\')));
    WriteFileBytes(path, bytes);
    return path;
}

std::wstring TestDirectory::Directory(const std::wstring& relative) const
{
    const std::wstring path = Path(relative);
    MakeWithParents(path);
    EXPECT_TRUE(IsDirectory(path)) << Utf8(path);
    return path;
}

void TestDirectory::Files(const StringList& relatives) const
{
    for (const std::wstring& relative : relatives) {
        File(relative);
    }
}
