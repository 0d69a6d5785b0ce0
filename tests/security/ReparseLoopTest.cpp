// Reparse points that lead back to a folder on the way down. Below C:\kestrovane-links, tools/wine.sh creates them for
// real.

#include "tests/security/ObjectOwnerFixture.h"

namespace {

const std::wstring kLoop = LR"(C:\kestrovane-links\loop)";
const std::wstring kLinked = LR"(C:\kestrovane-links\linked)";

} // namespace

class ReparseLoopTest : public ChangeObjectOwnerTest {
protected:
    void SetUp() override
    {
        ChangeObjectOwnerTest::SetUp();
        if (!PathExists(kLoop)) {
            GTEST_SKIP() << "this platform has no reparse points";
        }
    }
};

TEST_F(ReparseLoopTest, LinksToTheirOwnTopAreChangedButNotEntered)
{
    EXPECT_TRUE(ChangeObjectOwner(kLoop, kAccount));
    EXPECT_EQ((StringList{kLoop, kLoop + LR"(\file)", kLoop + LR"(\first)", kLoop + LR"(\second)", kLoop + LR"(\sub)",
                          kLoop + LR"(\sub\up)"}),
              WrittenPaths());
}

TEST_F(ReparseLoopTest, LinkToAnotherFolderIsEntered)
{
    EXPECT_TRUE(ChangeObjectOwner(kLinked, kAccount));
    EXPECT_EQ((StringList{kLinked, kLinked + LR"(\other)", kLinked + LR"(\other\file)"}), WrittenPaths());
}

TEST_F(ChangeObjectOwnerTest, PathEndsAtItsFirstNul)
{
    tree.File(LR"(top\sub\file)");
    const std::wstring top = tree.Path(L"top");
    const StringList expected = {top, top + LR"(\sub)", top + LR"(\sub\file)"};
    EXPECT_TRUE(ChangeObjectOwner(top + L'\0' + L"junk", kAccount));
    EXPECT_EQ(expected, WrittenPaths());
    EXPECT_TRUE(ChangeObjectOwner(top + L'\0', kAccount));
    EXPECT_EQ(expected.size() * 2, WrittenPaths().size());
}

namespace {

HANDLE WINAPI FailToOpen(const wchar_t* /*path*/, DWORD /*access*/, DWORD /*share*/, SECURITY_ATTRIBUTES* /*security*/,
                         DWORD /*disposition*/, DWORD /*flags*/, HANDLE /*model*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

} // namespace

// Simulation: the target of the links cannot be opened, so nothing is known of where they lead.
TEST_F(ReparseLoopTest, LinkThatCannotBeOpenedIsChangedButNotEntered)
{
    const ImportPatch open("CreateFileW", &FailToOpen);
    EXPECT_TRUE(ChangeObjectOwner(kLinked, kAccount));
    EXPECT_EQ((StringList{kLinked, kLinked + LR"(\other)"}), WrittenPaths());
}

TEST_F(ReparseLoopTest, FolderThatCannotBeOpenedIsEnteredIfItIsNoLink)
{
    tree.File(LR"(top\sub\file)");
    const std::wstring top = tree.Path(L"top");
    const ImportPatch open("CreateFileW", &FailToOpen);
    EXPECT_TRUE(ChangeObjectOwner(top, kAccount));
    EXPECT_EQ((StringList{top, top + LR"(\sub)", top + LR"(\sub\file)"}), WrittenPaths());
}

namespace {

int g_opensOfLoop = 0;
DWORD g_index = 0;

HANDLE WINAPI CountOpens(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                         DWORD disposition, DWORD flags, HANDLE model)
{
    EXPECT_EQ(0U, access) << "an identity needs no access";
    EXPECT_EQ(static_cast<DWORD>(FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE), share);
    g_opensOfLoop += path == kLoop ? 1 : 0;
    return ::CreateFileW(path, access, share, security, disposition, flags, model);
}

BOOL WINAPI DifferInTheUpperHalf(HANDLE /*file*/, BY_HANDLE_FILE_INFORMATION* information)
{
    *information = {};
    information->nFileIndexLow = 1;
    information->nFileIndexHigh = ++g_index;
    return TRUE;
}

} // namespace

TEST_F(ReparseLoopTest, IdentityOfAFolderIsReadOnce)
{
    g_opensOfLoop = 0;
    const ImportPatch open("CreateFileW", &CountOpens);
    EXPECT_TRUE(ChangeObjectOwner(kLoop, kAccount));
    EXPECT_EQ(1, g_opensOfLoop) << "for three links";
}

// Simulation: file indexes beyond 32 bits.
TEST_F(ReparseLoopTest, FoldersWhoseIndexesDifferInTheUpperHalfAreDifferent)
{
    const ImportPatch information("GetFileInformationByHandle", &DifferInTheUpperHalf);
    EXPECT_TRUE(ChangeObjectOwner(kLinked, kAccount));
    EXPECT_EQ((StringList{kLinked, kLinked + LR"(\other)", kLinked + LR"(\other\file)"}), WrittenPaths());
}
