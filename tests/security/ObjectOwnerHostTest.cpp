// Whose functions the owner change calls, and an object without a DACL.

#include "tests/support/LibraryTest.h"
#include "tests/support/SilentHost.h"

#include <aclapi.h>

#include <stdexcept>

namespace {

int g_lines = 0;
int g_keepAlives = 0;

// Counts, but throws from its first line, that of its registration.
int __cdecl ThrowAtRegistration(int /*level*/, const char* /*format*/, ...)
{
    if (++g_lines == 1) {
        throw std::runtime_error("the registration fails");
    }
    return 0;
}

int __cdecl CountKeepAlive(int /*seconds*/, ...)
{
    ++g_keepAlives;
    return 0;
}

bool g_listWasNull = false;
bool g_newListWasNull = true;

DWORD WINAPI ReturnNoList(LPCWSTR /*path*/, SE_OBJECT_TYPE /*type*/, SECURITY_INFORMATION /*information*/,
                          PSID* /*owner*/, PSID* /*group*/, PACL* list, PACL* /*systemList*/,
                          PSECURITY_DESCRIPTOR* /*descriptor*/)
{
    *list = nullptr;
    return ERROR_SUCCESS;
}

DWORD WINAPI RecordAddedEntry(ULONG count, PEXPLICIT_ACCESSW entry, PACL list, PACL* extended)
{
    g_listWasNull = list == nullptr;
    return ::SetEntriesInAclW(count, entry, list, extended);
}

DWORD WINAPI RecordWrite(LPWSTR /*path*/, SE_OBJECT_TYPE /*type*/, SECURITY_INFORMATION /*information*/, PSID /*owner*/,
                         PSID /*group*/, PACL list, PACL /*systemList*/)
{
    g_newListWasNull = list == nullptr;
    return ERROR_SUCCESS;
}

class ChangeObjectOwnerHostTest : public LibraryTest {
protected:
    static void SetUpTestSuite() { EXPECT_THROW(throw std::runtime_error("the first exception"), std::runtime_error); }
};

} // namespace

// A registration that a throwing logger ends reaches the module, but not the file manager: that tells whose functions a
// call uses.
TEST_F(ChangeObjectOwnerHostTest, CallsTheFunctionsOfTheModuleAndNotThoseOfTheFileManager)
{
    g_lines = 0;
    g_keepAlives = 0;
    EXPECT_THROW(SetVssFileManagerLogger(&ThrowAtRegistration, &CountKeepAlive, &ThrowAtRegistration),
                 std::runtime_error);
    host.Clear();
    EXPECT_TRUE(ChangeObjectOwner(tree.File(L"f.txt"), L"SYSTEM"));
    EXPECT_TRUE(host.Events().empty());
    EXPECT_LT(4, g_lines);
    EXPECT_LE(2, g_keepAlives) << "one more if the last keep-alive of the process was long ago";
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(isDirectoryExists(L""));
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.Lines()) << "the file manager has the earlier host";
}

TEST_F(ChangeObjectOwnerHostTest, AnObjectWithoutADaclGetsOneOfTheNewEntryAlone)
{
    const std::wstring file = tree.File(L"f.txt");
    const ImportPatch get("GetNamedSecurityInfoW", &ReturnNoList);
    const ImportPatch add("SetEntriesInAclW", &RecordAddedEntry);
    const ImportPatch set("SetNamedSecurityInfoW", &RecordWrite);
    EXPECT_TRUE(ChangeObjectOwner(file, L"SYSTEM"));
    EXPECT_TRUE(g_listWasNull);
    EXPECT_FALSE(g_newListWasNull);
}
