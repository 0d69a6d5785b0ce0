// The owner change when Windows fails. Simulations: single imports of the library are replaced.

#include "tests/security/ObjectOwnerFixture.h"

#include "tests/support/SilentHost.h"

#include <cstdarg>
#include <optional>

namespace {

// The arguments of the line about a list that could not be made, as they are passed.
struct ListFailure {
    std::wstring path;
    unsigned error;
};
std::optional<ListFailure> g_listFailure;

int __cdecl TakeListFailure(int /*level*/, const char* format, ...)
{
    if (std::string(format).starts_with("Error creating new DACL")) {
        va_list arguments;
        va_start(arguments, format);
        const wchar_t* const path = va_arg(arguments, const wchar_t*);
        g_listFailure = ListFailure{path, va_arg(arguments, unsigned)};
        va_end(arguments);
    }
    return 0;
}

} // namespace

TEST_F(ChangeObjectOwnerSimulation, NormalisesTheAccountOnceMoreAtEveryLevel)
{
    // No account of this machine has such a name, so another one is looked up instead.
    calls.LookUpInstead(kAccount);
    tree.File(LR"(dir\f)");
    EXPECT_TRUE(ChangeObjectOwner(tree.Path(L"dir"), LR"(.\LocalSystem)"));
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), LR"(.\.\.\x)"));
    StringList lookUps;
    for (const std::wstring& line : host.LinesAt(2)) {
        if (line.starts_with(L"Getting SID")) {
            lookUps.push_back(line);
        }
    }
    EXPECT_EQ(
        (StringList{L"Getting SID for user LocalSystem.\n", L"Getting SID for user NT AUTHORITY\\SYSTEM.\n",
                    L"Getting SID for user .\\.\\x.\n", L"Getting SID for user .\\x.\n", L"Getting SID for user x.\n"}),
        lookUps);
}

TEST_F(ChangeObjectOwnerSimulation, TellsAFailedLookUpOfTheSidAndFreesBothBuffers)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"LookupAccountNameW", 2, ERROR_NONE_MAPPED);
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ((Events{ClockLine(0), SidLine(kAccount), Call(L"LookupAccountNameW(SYSTEM, sizes)"),
                      Call(L"LookupAccountNameW(SYSTEM, SID)"),
                      Detail("Error calling LookupAccountName( ) to get SId for account %S - error %u.\n",
                             L"Error calling LookupAccountName( ) to get SId for account SYSTEM - error 1332.\n"),
                      Call(L"free(domain)"), Call(L"free(SID)")}),
              host.Events());
}

TEST_F(ChangeObjectOwnerSimulation, TakesEveryErrorButTheSmallBufferForAFailedLookUpOfTheSizes)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"LookupAccountNameW", 1, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ((StringList{L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"Error calling LookupAccountName( ) to get size of SID for account SYSTEM - error 5.\n"}),
              host.LinesAt(0));
    EXPECT_TRUE(calls.Writes().empty());
}

TEST_F(ChangeObjectOwnerSimulation, GoesOnWhenTheLookUpOfTheSizesSucceeds)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"LookupAccountNameW", 1, ERROR_ACCESS_DENIED, ERROR_SUCCESS);
    EXPECT_TRUE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ(ChangedObject(file), host.Events());
}

TEST_F(ChangeObjectOwnerSimulation, TellsAFailedFirstReadWithTheLastErrorAndNotTheResult)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"GetNamedSecurityInfoW", 1, ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ((UpToList(file, kAccount) + Events{Detail("Error getting DACL for %S - error %u.\n",
                                                        L"Error getting DACL for " + file + L" - error 6.\n"),
                                                 Call(L"free(SID)")}),
              host.Events());
}

TEST_F(ChangeObjectOwnerSimulation, TellsAListThatCouldNotBeMadeWithPartOfAnAddress)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"SetEntriesInAclW", 1, ERROR_INVALID_HANDLE, ERROR_INVALID_ACL);
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    const auto address = static_cast<unsigned>(reinterpret_cast<ULONG_PTR>(calls.PathPointer()));
    EXPECT_EQ((UpToNewList(file, kAccount) +
               Events{Detail("Error creating new DACL for file/folder to include new owner - error %u.\n",
                             L"Error creating new DACL for file/folder to include new owner - error " +
                                 std::to_wstring(address) + L".\n"),
                      Call(L"free(SID)")}),
              host.Events())
        << "and the host is not told to wait";
}

TEST_F(ChangeObjectOwnerSimulation, PassesThePathBeforeTheErrorWhenAListCouldNotBeMade)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"SetEntriesInAclW", 1, ERROR_INVALID_HANDLE, ERROR_INVALID_ACL);
    SetVssFileManagerLogger(&TakeListFailure, &SilentKeepAlive, &SilentLog);
    g_listFailure.reset();
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    ASSERT_TRUE(g_listFailure.has_value());
    EXPECT_EQ(file, g_listFailure->path);
    EXPECT_EQ(unsigned{ERROR_INVALID_ACL}, g_listFailure->error);
}

TEST_F(ChangeObjectOwnerSimulation, TellsAFailedWriteWithItsResultAndLeavesTheHostAtTheLongWait)
{
    const std::wstring file = tree.File(L"f.txt");
    calls.Fail(L"SetNamedSecurityInfoW", 1, ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ((UpToWrite(file, kAccount) +
               Events{Detail("Error setting owner for account %S to user %S - error %u.\n",
                             L"Error setting owner for account " + file + L" to user SYSTEM - error 5.\n"),
                      Call(L"LocalFree(new list)"), Call(L"free(SID)")}),
              host.Events());
    EXPECT_EQ((std::vector<int>{10800}), host.KeepAlives());
}

TEST_F(ChangeObjectOwnerSimulation, TellsAFailedSecondReadWithTheLastErrorAndLeavesAFoldersContentsAlone)
{
    tree.File(LR"(dir\f)");
    const std::wstring dir = tree.Path(L"dir");
    calls.Fail(L"GetNamedSecurityInfoW", 2, ERROR_INVALID_HANDLE, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(ChangeObjectOwner(dir, kAccount));
    EXPECT_EQ((UpToSecondList(dir, kAccount) +
               Events{Detail("Error getting DACL %S - error %u.\n", L"Error getting DACL " + dir + L" - error 6.\n")}),
              host.Events());
}

TEST_F(ChangeObjectOwnerSimulation, PassesOverASubfolderThatCannotBeChangedWithAllThatIsBelowIt)
{
    tree.Files({LR"(dir\a\x)", LR"(dir\b\y)", LR"(dir\c\z)"});
    const std::wstring dir = tree.Path(L"dir");
    const std::wstring b = dir + L"\\b";
    calls.FailFor(L"SetNamedSecurityInfoW", b, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(ChangeObjectOwner(dir, kAccount));
    EXPECT_EQ((StringList{dir, dir + L"\\a", dir + L"\\a\\x", b, dir + L"\\c", dir + L"\\c\\z"}), WrittenPaths());
    EXPECT_EQ((std::vector<int>{10800, 600, 10800, 600, 10800, 600, 10800, 10800, 600, 10800, 600}), host.KeepAlives())
        << "the failed write in the middle leaves the long wait to the next object";
    EXPECT_EQ(1, std::count(host.Events().begin(), host.Events().end(),
                            Detail("Error setting owner for account %S to user %S - error %u.\n",
                                   L"Error setting owner for account " + b + L" to user SYSTEM - error 5.\n")));
}

TEST_F(ChangeObjectOwnerSimulation, PassesOverAFileThatCannotBeRead)
{
    tree.Files({L"a", L"b", L"c"});
    calls.FailFor(L"GetNamedSecurityInfoW", tree.Path(L"b"), ERROR_ACCESS_DENIED);
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    EXPECT_EQ((StringList{tree.Root(), tree.Path(L"a"), tree.Path(L"c")}), WrittenPaths());
}

TEST_F(ChangeObjectOwnerSimulation, IsTrueForAFolderThatCannotBeSearched)
{
    const std::wstring dir = tree.Directory(L"dir");
    calls.Fail(L"FindFirstFileW", 1, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(ChangeObjectOwner(dir, kAccount));
    EXPECT_EQ((ChangedObject(dir) + Events{Call(L"FindFirstFileW(" + dir + L"\\*.*)")}), host.Events())
        << "nothing is logged and nothing closed";
}

TEST_F(ChangeObjectOwnerSimulation, IsTrueAndClosesASearchThatBreaks)
{
    tree.Files({L"a", L"b"});
    calls.Fail(L"FindNextFileW", 3, ERROR_ACCESS_DENIED);
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    EXPECT_EQ(ChangedObject(tree.Root()) + OpenedFolder(tree.Root()) + ChangedObject(tree.Path(L"a")) + NextEntry() +
                  ClosedFolder(),
              host.Events());
}

TEST_F(ChangeObjectOwnerSimulation, SearchesNothingThatIsNoFolder)
{
    tree.File(LR"(dir\f)");
    const std::wstring dir = tree.Path(L"dir");
    calls.FailFor(L"PathIsDirectoryW", dir, 0);
    EXPECT_TRUE(ChangeObjectOwner(dir, kAccount));
    EXPECT_EQ(ChangedObject(dir), host.Events());
}
