// Copies to a relative target when the current directory cannot be read. A simulation: one import is replaced.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

namespace {

int g_readings;

wchar_t* __cdecl FailToReadCurrentDirectoryOnce(wchar_t* buffer, int capacity)
{
    if (++g_readings == 1) {
        errno = ERANGE;
        return nullptr;
    }
    return ::_wgetcwd(buffer, capacity);
}

} // namespace

class FileCopyTargetFault : public LibraryTest {};

TEST_F(FileCopyTargetFault, RelativeTargetIsNotCopiedIfItsDirectoryCannotBeRead)
{
    const std::wstring source = tree.File(L"a.txt");
    const std::wstring empty = tree.Directory(L"empty");
    const WorkingDirectory in(empty);
    g_readings = 0;
    const ImportPatch reading("_wgetcwd", &FailToReadCurrentDirectoryOnce);
    EXPECT_EQ(0, DoCopyComponentFile(source, L"b.txt"));
    EXPECT_TRUE(EntriesOf(empty).empty());
}
