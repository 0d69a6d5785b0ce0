// Checks of directories when the current directory cannot be read: the attributes decide. Simulations: one import of the
// library is replaced.

#include "tests/support/LibraryTest.h"

#include <cerrno>

namespace {

wchar_t* __cdecl FailToRead(wchar_t* /*buffer*/, int /*capacity*/)
{
    errno = ERANGE;
    return nullptr;
}

// With its trailing backslash, Windows finds no file.
DWORD WINAPI AttributesOfAFile(const wchar_t* /*path*/)
{
    return FILE_ATTRIBUTE_ARCHIVE;
}

} // namespace

class CurrentDirectoryFault : public LibraryTest {
protected:
    // The result of the check, and errno after it.
    static std::pair<bool, int> Check(const std::wstring& path)
    {
        const ImportPatch reading("_wgetcwd", &FailToRead);
        const bool exists = isDirectoryExists(path);
        const int code = errno;
        return {exists, code};
    }
};

TEST_F(CurrentDirectoryFault, DirectoryIsFoundByItsAttributes)
{
    EXPECT_EQ(std::pair(true, ERANGE), Check(tree.Root()));
}

TEST_F(CurrentDirectoryFault, MissingDirectoryIsNotFound)
{
    EXPECT_EQ(std::pair(false, ENOENT), Check(tree.Path(L"missing")));
}

TEST_F(CurrentDirectoryFault, FileIsNoDirectory)
{
    const std::wstring file = tree.File(L"file");
    const ImportPatch attributes("GetFileAttributesW", &AttributesOfAFile);
    EXPECT_EQ(std::pair(false, ENOENT), Check(file));
}
