// Validation and normalisation of paths, in place.

#include "frame/FileManager.h"

#include "tests/support/FileTools.h"
#include "tests/support/SilentHost.h"
#include "tests/support/TestDirectory.h"
#include "tests/support/WorkingDirectory.h"

#include <gtest/gtest.h>

namespace {

struct Case {
    std::wstring path;
    bool valid;
    std::wstring after;
    const char* why;
};

class PathValidation : public ::testing::Test {
protected:
    TestDirectory tree;
    std::wstring here = tree.Directory(L"here");
    WorkingDirectory in{here};
    quorvantavss::CVssFileManager manager;
};

} // namespace

TEST_F(PathValidation, ValidatePathChangesThePathInPlace)
{
    const Case cases[] = {
        {LR"(C:\dir\f.txt)", true, LR"(C:\dir\f.txt)", "absolute: stays"},
        {L"C:/dir/f.txt", true, LR"(C:\dir\f.txt)", "separators are converted"},
        {LR"(C:\dir)", true, LR"(C:\dir)", "no backslash is added"},
        {L"C:f", true, L"C:f", "drive-relative: stays"},
        {L"f.txt", true, here + LR"(\f.txt)", "relative"},
        {L"", true, here + LR"(\)", "empty"},
        {LR"(..\f.txt)", true, tree.Path(L"f.txt"), "climbing"},
        {LR"(\f.txt)", true, LR"(C:\f.txt)", "rooted"},
        {LR"(\\srv\a*)", true, LR"(\\srv\a*)", "a share"},
        {LR"(\\?\C:\a*)", true, LR"(\\?\C:\a*)", "the long form"},
        {L"//srv/a*", true, LR"(\\srv\a*)", "a share with slashes"},
        {LR"(\\)", true, LR"(C:\\)", "two backslashes are a rooted path"},
        {LR"(C:\a*)", false, LR"(C:\a*)", "rejected"},
        {L"a*", false, here + LR"(\a*)", "rejected after it was made absolute"},
        {LR"(..\a?)", false, tree.Path(L"a?"), "rejected after it has climbed"},
    };
    for (const auto& [path, valid, after, why] : cases) {
        std::wstring given = path;
        EXPECT_EQ(valid, manager.ValidatePath(given)) << why;
        EXPECT_EQ(after, given) << why;
    }
}

TEST_F(PathValidation, NormalizeDirectoryPathAddsTheBackslashFirst)
{
    const Case cases[] = {
        {L"C:/x", true, LR"(C:\x\)", "the plain case"},
        {LR"(C:\x\)", true, LR"(C:\x\)", "it has its backslash"},
        {L"C:/x/", true, LR"(C:\x\)", "it has its slash"},
        {L"C:", true, LR"(C:\)", "a drive becomes its root"},
        {LR"(\\srv\share)", true, LR"(\\srv\share\)", "a share, without validation"},
        {LR"(\\srv\a*)", true, LR"(\\srv\a*\)", "a share, without validation"},
        {LR"(\\?\C:\a*)", true, LR"(\\?\C:\a*\)", "the long form, without validation"},
        {LR"(\\)", true, LR"(\\)", "two backslashes pass as a share here"},
        {L"//", true, LR"(\\)", "so do two slashes"},
        {L"x", true, here + LR"(\x\)", "relative"},
        {L"", true, here + LR"(\)", "empty: no backslash of its own"},
        {L"..", true, tree.Root() + LR"(\)", "climbs, because it has a backslash now"},
        {LR"(\)", true, LR"(C:\)", "rooted"},
        {L"/", true, LR"(C:\)", "rooted"},
        {std::wstring(L"C:\\x\0\\y", 7), true, std::wstring(L"C:\\x\0\\y\\", 8), "not cut at a NUL"},
        {std::wstring(L"C:\\x\0*", 6), true, std::wstring(L"C:\\x\0*\\", 7), "validated up to the NUL"},
        {std::wstring(L"\0x", 2), true, here + L"\\" + std::wstring(L"\0x\\", 3), "nothing before the NUL: relative"},
        {LR"(C:\a*)", false, LR"(C:\a*\)", "rejected"},
        {LR"(C:\a:b)", false, LR"(C:\a:b\)", "rejected"},
    };
    for (const auto& [path, valid, after, why] : cases) {
        std::wstring given = path;
        EXPECT_EQ(valid, manager.NormalizeDirectoryPath(given)) << why;
        EXPECT_EQ(after, given) << why;
    }
}

TEST_F(PathValidation, ARejectedPathReportsTheLastErrorAndAnAcceptedPathNothing)
{
    std::wstring rejected = LR"(C:\a*)";
    std::wstring accepted = LR"(C:\a)";
    manager.SetHostFunctions(&SilentLog, nullptr, nullptr);
    ::SetLastError(ERROR_INVALID_NAME);
    EXPECT_TRUE(manager.ValidatePath(accepted));
    EXPECT_EQ(L"", manager.GetErrorText());
    EXPECT_FALSE(manager.ValidatePath(rejected));
    EXPECT_EQ(L"CVssFileManager call failed", manager.GetErrorText());
}
