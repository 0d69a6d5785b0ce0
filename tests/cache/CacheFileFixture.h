// The fixture of the cache files' tests: a temporary directory of the test's own, and the registered moves.

#pragma once

#include "tests/support/LibraryTest.h"
#include "tests/support/PendingList.h"

inline bool EqualIgnoringCase(const std::wstring& first, const std::wstring& second)
{
    return ::_wcsicmp(first.c_str(), second.c_str()) == 0;
}

class CreateCacheFileTest : public LibraryTest {
protected:
    CreateCacheFileTest() { ::SetEnvironmentVariableW(L"TMP", temporary.Root().c_str()); }
    ~CreateCacheFileTest() override { ::SetEnvironmentVariableW(L"TMP", nullptr); }

    static std::wstring DirectoryOf(const std::wstring& path) { return path.substr(0, path.rfind(L'\\')); }
    static std::wstring NameOf(const std::wstring& path) { return path.substr(path.rfind(L'\\') + 1); }

    // A file in a directory of so many characters, made through the long form.
    [[nodiscard]] std::wstring FileInDirectoryOf(std::size_t length) const
    {
        std::wstring directory = tree.Directory(std::wstring(100, L'd'));
        directory += L"\\" + std::wstring(length - directory.size() - 1, L'e');
        EXPECT_TRUE(::CreateDirectoryW((LR"(\\?\)" + directory).c_str(), nullptr)) << ::GetLastError();
        WriteFileBytes(LR"(\\?\)" + directory + L"\\f", "live");
        return directory + L"\\f";
    }

    TestDirectory temporary;
    PendingList pending;
    std::wstring cacheFile;
};
