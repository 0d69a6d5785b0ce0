// The owner change, with all that the host is told and the system is asked.

#include "tests/support/AllocationFault.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/SecurityCalls.h"

#include <algorithm>
#include <cstdarg>
#include <optional>

namespace {

using Events = std::vector<HostEvent>;

const std::wstring kAccount = L"SYSTEM";
const std::wstring kAccountSid = L"S-1-5-18";
const std::wstring kUnknownAccount = L"no-account-of-this-machine";
constexpr int kOwnerAndAccessList = 5;

HostEvent Progress(const char* format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 2, format, text};
}

HostEvent Detail(const char* format, const std::wstring& text)
{
    return {HostEvent::Kind::kLog, 0, format, text};
}

HostEvent KeepAlive(int seconds)
{
    return {HostEvent::Kind::kKeepAlive, seconds, {}, {}};
}

HostEvent Call(const std::wstring& text)
{
    return SecurityCalls::Call(text);
}

HostEvent ClockLine(int ticks)
{
    return Detail("clock ticks = %d, CLOCKS_PER_SEC = %d, timeout = %d",
                  L"clock ticks = " + std::to_wstring(ticks) + L", CLOCKS_PER_SEC = 1000, timeout = 570");
}

HostEvent SendKaLine()
{
    return Progress("%s::%d::%s\n", L"frame/FileManager.cpp::154::SendKA\n");
}

HostEvent SidLine(const std::wstring& account)
{
    return Progress("Getting SID for user %S.\n", L"Getting SID for user " + account + L".\n");
}

HostEvent ReadLine(const std::wstring& path)
{
    return Progress("Getting DACL for file/folder %S.\n", L"Getting DACL for file/folder " + path + L".\n");
}

HostEvent ModifyLine(const std::wstring& account)
{
    return Progress("Modifying DACL to include new ACE for user %S.\n",
                    L"Modifying DACL to include new ACE for user " + account + L".\n");
}

HostEvent SuccessLine()
{
    return Progress("Successfully modified DACL.\n", L"Successfully modified DACL.\n");
}

Events operator+(Events first, const Events& second)
{
    first.insert(first.end(), second.begin(), second.end());
    return first;
}

// The steps of one object, each with its calls and its clean-up.
Events UpToSid(const std::wstring& account)
{
    return {ClockLine(0), SidLine(account), Call(L"LookupAccountNameW(" + account + L", sizes)"),
            Call(L"LookupAccountNameW(" + account + L", SID)"), Call(L"free(domain)")};
}

Events UpToList(const std::wstring& path, const std::wstring& account)
{
    return UpToSid(account) + Events{ReadLine(path), Call(L"GetNamedSecurityInfoW(" + path + L")")};
}

Events UpToNewList(const std::wstring& path, const std::wstring& account)
{
    return UpToList(path, account) + Events{ModifyLine(account), Call(L"SetEntriesInAclW()")};
}

Events UpToWrite(const std::wstring& path, const std::wstring& account)
{
    return UpToNewList(path, account) + Events{KeepAlive(10800), Call(L"SetNamedSecurityInfoW(" + path + L")")};
}

Events UpToSecondList(const std::wstring& path, const std::wstring& account)
{
    return UpToWrite(path, account) +
           Events{SuccessLine(),      KeepAlive(600), Call(L"LocalFree(new list)"),
                  Call(L"free(SID)"), ReadLine(path), Call(L"GetNamedSecurityInfoW(" + path + L")")};
}

Events ChangedObject(const std::wstring& path, const std::wstring& account = kAccount)
{
    return UpToSecondList(path, account) + Events{Call(L"PathIsDirectoryW(" + path + L")")};
}

Events OpenedFolder(const std::wstring& path)
{
    // The first two entries are the folder itself and its parent.
    return {Call(L"FindFirstFileW(" + path + L"\\*.*)"), Call(L"FindNextFileW()"), Call(L"FindNextFileW()")};
}

Events ClosedFolder()
{
    return {Call(L"FindClose()")};
}

Events NextEntry()
{
    return {Call(L"FindNextFileW()")};
}

class ChangeObjectOwnerTest : public LibraryTest {
protected:
    void TearDown() override
    {
        EXPECT_TRUE(calls.HoldsNothing()) << "something was not freed";
        EXPECT_EQ(0, host.AuxCalls());
        LibraryTest::TearDown();
    }

    StringList WrittenPaths() const
    {
        StringList paths;
        for (const SecurityWrite& write : calls.Writes()) {
            paths.push_back(write.path);
        }
        return paths;
    }

    SecurityCalls calls{host};
};

// What only failures and a clock of the test's own show.
class ChangeObjectOwnerSimulation : public ChangeObjectOwnerTest {};

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

int __cdecl QuietLog(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

int __cdecl QuietKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

int __cdecl ThrowingKeepAlive(int seconds, ...)
{
    if (seconds == 10800) {
        throw std::runtime_error("the host gives up");
    }
    return 0;
}

} // namespace

TEST_F(ChangeObjectOwnerTest, ChangesAFileOnceAndSearchesNothing)
{
    const std::wstring file = tree.File(L"f.txt");
    EXPECT_TRUE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ(ChangedObject(file), host.Events());
}

TEST_F(ChangeObjectOwnerTest, WritesOwnerAndAccessListButNoGroupAndNoSystemList)
{
    const std::wstring file = tree.File(L"f.txt");
    EXPECT_TRUE(ChangeObjectOwner(file, kAccount));
    EXPECT_EQ((std::vector<SecurityWrite>{{file, 1, kOwnerAndAccessList, kAccountSid, false, true, false}}),
              calls.Writes());
}

TEST_F(ChangeObjectOwnerTest, AddsOneEntryOfFullAccessThatIsInherited)
{
    EXPECT_TRUE(ChangeObjectOwner(tree.File(L"f.txt"), kAccount));
    const AddedEntry expected = {.count = 1,
                                 .rights = 0x10000000, // generic all
                                 .mode = 2,            // takes the place of the account's other rights
                                 .inheritance = 3,     // by files and folders
                                 .hasMultipleTrustee = false,
                                 .multipleOperation = 0,
                                 .form = 0, // a SID
                                 .type = 1, // of a user
                                 .trustee = kAccountSid,
                                 .goesToTheListRead = true};
    EXPECT_EQ((std::vector<AddedEntry>{expected}), calls.Entries());
}

TEST_F(ChangeObjectOwnerTest, FindsOnlyTheTwoDotsInAnEmptyFolder)
{
    const std::wstring folder = tree.Directory(L"empty");
    EXPECT_TRUE(ChangeObjectOwner(folder, kAccount));
    EXPECT_EQ(ChangedObject(folder) + OpenedFolder(folder) + ClosedFolder(), host.Events());
}

TEST_F(ChangeObjectOwnerTest, ChangesAFolderBeforeItsContentsAndEachSubfolderBeforeTheNextEntry)
{
    tree.Files({LR"(dir\a\x.txt)", LR"(dir\b.txt)"});
    const std::wstring dir = tree.Path(L"dir");
    const std::wstring a = dir + L"\\a";
    EXPECT_TRUE(ChangeObjectOwner(dir, kAccount));
    EXPECT_EQ(ChangedObject(dir) + OpenedFolder(dir) + ChangedObject(a) + OpenedFolder(a) +
                  ChangedObject(a + L"\\x.txt") + NextEntry() + ClosedFolder() + NextEntry() +
                  ChangedObject(dir + L"\\b.txt") + NextEntry() + ClosedFolder(),
              host.Events());
}

TEST_F(ChangeObjectOwnerTest, SkipsOnlyTheEntriesThatAreExactlyOneOrTwoDots)
{
    tree.Files({L".hidden", L"..two", L"...three", L"x"});
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    StringList paths = WrittenPaths();
    std::sort(paths.begin(), paths.end());
    StringList expected = {tree.Root(), tree.Path(L".hidden"), tree.Path(L"..two"), tree.Path(L"...three"),
                           tree.Path(L"x")};
    std::sort(expected.begin(), expected.end());
    EXPECT_EQ(expected, paths);
}

TEST_F(ChangeObjectOwnerTest, TakesATrailingBackslashAsItIsInTheSearchAndOnceInThePathsBelow)
{
    tree.File(LR"(dir\f)");
    const std::wstring dir = tree.Path(L"dir");
    EXPECT_TRUE(ChangeObjectOwner(dir + L"\\", kAccount));
    EXPECT_EQ((StringList{dir + L"\\", dir + L"\\f"}), WrittenPaths());
    const Events search = {Call(L"FindFirstFileW(" + dir + L"\\\\*.*)")};
    EXPECT_NE(host.Events().end(),
              std::search(host.Events().begin(), host.Events().end(), search.begin(), search.end()));
}

TEST_F(ChangeObjectOwnerTest, GivesATreeOf1000ObjectsAndTheirFoldersToTheAccount)
{
    StringList expected = {tree.Root()};
    for (int outer = 0; outer < 10; ++outer) {
        const std::wstring folder = L"folder" + std::to_wstring(outer);
        expected.push_back(tree.Directory(folder));
        for (int inner = 0; inner < 9; ++inner) {
            const std::wstring subfolder = folder + L"\\sub" + std::to_wstring(inner);
            expected.push_back(tree.Directory(subfolder));
            for (int file = 0; file < 10; ++file) {
                expected.push_back(tree.File(subfolder + L"\\f" + std::to_wstring(file)));
            }
        }
    }
    ASSERT_EQ(1001U, expected.size());
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    EXPECT_EQ(expected, WrittenPaths()) << "in the order of the system's listings";
    for (const SecurityWrite& write : calls.Writes()) {
        ASSERT_EQ((SecurityWrite{write.path, 1, kOwnerAndAccessList, kAccountSid, false, true, false}), write)
            << Utf8(write.path);
    }
    std::vector<int> keepAlives;
    for (std::size_t i = 0; i < expected.size(); ++i) {
        keepAlives.insert(keepAlives.end(), {10800, 600});
    }
    EXPECT_EQ(keepAlives, host.KeepAlives());
    EXPECT_EQ(StringList(expected.size(), L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570"), host.LinesAt(0));
}

TEST_F(ChangeObjectOwnerTest, TakesTheServiceNameInItsExactSpellingForTheSystemAccount)
{
    const std::wstring file = tree.File(L"f.txt");
    EXPECT_TRUE(ChangeObjectOwner(file, L"LocalSystem"));
    EXPECT_EQ(ChangedObject(file, LR"(NT AUTHORITY\SYSTEM)"), host.Events());
    EXPECT_EQ(kAccountSid, calls.Writes().at(0).owner);
}

TEST_F(ChangeObjectOwnerTest, TakesOtherNamesAsTheyStandButForTheMachinePrefix)
{
    struct Row {
        const wchar_t* account;
        const wchar_t* lookedUp;
        const char* why;
    };
    constexpr Row kRows[] = {
        {L"localsystem", L"localsystem", "case counts"},
        {L" LocalSystem", L" LocalSystem", "a blank counts"},
        {LR"(.\backup)", L"backup", "the machine's own"},
        {LR"(.\LocalSystem)", L"LocalSystem", "the service name is looked for first"},
        {LR"(.\.\backup)", LR"(.\backup)", "one prefix is taken off"},
        {LR"(x.\y)", LR"(x.\y)", "the prefix does not begin the name"},
        {L"./backup", L"./backup", "another separator"},
    };
    const std::wstring file = tree.File(L"f.txt");
    for (const auto& [account, lookedUp, why] : kRows) {
        host.Clear();
        EXPECT_FALSE(ChangeObjectOwner(file, account)) << "no such account here";
        EXPECT_EQ((StringList{L"Getting SID for user " + std::wstring(lookedUp) + L".\n"}), host.LinesAt(2)) << why;
        EXPECT_EQ(Call(L"LookupAccountNameW(" + std::wstring(lookedUp) + L", sizes)"), host.Events().at(2)) << why;
    }
}

TEST_F(ChangeObjectOwnerTest, GivesToTheAccountBehindTheMachinePrefix)
{
    const std::wstring file = tree.File(L"f.txt");
    EXPECT_TRUE(ChangeObjectOwner(file, LR"(.\SYSTEM)"));
    EXPECT_EQ(ChangedObject(file, L"SYSTEM"), host.Events());
}

TEST_F(ChangeObjectOwnerTest, IsFalseForAnUnknownAccountAndLeavesTheObjectAlone)
{
    EXPECT_FALSE(ChangeObjectOwner(tree.Root(), kUnknownAccount));
    EXPECT_EQ(
        (Events{ClockLine(0), SidLine(kUnknownAccount), Call(L"LookupAccountNameW(" + kUnknownAccount + L", sizes)"),
                Detail("Error calling LookupAccountName( ) to get size of SID for account %S - error %u.\n",
                       L"Error calling LookupAccountName( ) to get size of SID for account " + kUnknownAccount +
                           L" - error 1332.\n")}),
        host.Events());
}

TEST_F(ChangeObjectOwnerTest, IsFalseForAMissingPathAtItsFirstRead)
{
    const std::wstring missing = tree.Path(L"missing");
    EXPECT_FALSE(ChangeObjectOwner(missing, kAccount));
    // Reading an access list need not set the last error, so an older one may be told: hosts know that.
    EXPECT_EQ((UpToList(missing, kAccount) + Events{Detail("Error getting DACL for %S - error %u.\n",
                                                           L"Error getting DACL for " + missing + L" - error " +
                                                               std::to_wstring(calls.ErrorAfterRead()) + L".\n"),
                                                    Call(L"free(SID)")}),
              host.Events());
}

TEST_F(ChangeObjectOwnerTest, NeedsLittleStackForATreeAsDeepAsPathsReach)
{
    constexpr std::size_t kLongestPath = MAX_PATH - 1; // characters
    constexpr SIZE_T kStack = 128 * 1024;              // bytes; a host's threads have eight times as much
    StringList folders = {tree.Root()};
    while (folders.back().size() + 2 <= kLongestPath) {
        folders.push_back(folders.back() + L"\\a");
        ASSERT_TRUE(::CreateDirectoryW((LR"(\\?\)" + folders.back()).c_str(), nullptr));
    }
    ASSERT_GT(folders.size(), 100U);
    static std::wstring top;
    top = tree.Root();
    const auto change = [](void*) -> DWORD { return ChangeObjectOwner(top, kAccount) ? 1 : 0; };
    const HANDLE thread = ::CreateThread(nullptr, kStack, +change, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr);
    ASSERT_NE(nullptr, thread);
    ::WaitForSingleObject(thread, INFINITE);
    DWORD result = 0;
    ::GetExitCodeThread(thread, &result);
    ::CloseHandle(thread);
    EXPECT_EQ(1U, result);
    EXPECT_EQ(folders, WrittenPaths());
}

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
    SetVssFileManagerLogger(&TakeListFailure, &QuietKeepAlive, &QuietLog);
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

TEST_F(ChangeObjectOwnerSimulation, KeepsTheHostAliveAfterMoreThan570WholeSeconds)
{
    struct Row {
        std::int32_t ticks;
        bool sends;
        const char* why;
    };
    constexpr Row kRows[] = {
        {570000, false, "570 seconds"}, {570999, false, "not yet 571 whole seconds"},   {571000, true, "571 seconds"},
        {2000000000, true, "long ago"}, {-571000, false, "a clock that has gone back"},
    };
    for (const auto& [ticks, sends, why] : kRows) {
        HostRecorder recorder;
        SecurityCalls clocked(recorder);
        clocked.SetClock({ticks});
        EXPECT_FALSE(ChangeObjectOwner(L"", kUnknownAccount));
        Events expected = {ClockLine(ticks)};
        if (sends) {
            expected = expected + Events{SendKaLine(), KeepAlive(600)};
        }
        expected.push_back(SidLine(kUnknownAccount));
        ASSERT_GE(recorder.Events().size(), expected.size()) << why;
        EXPECT_EQ(expected, Events(recorder.Events().begin(),
                                   recorder.Events().begin() + static_cast<std::ptrdiff_t>(expected.size())))
            << why;
    }
}

TEST_F(ChangeObjectOwnerSimulation, ReadsTheClockForTheLineForTheTestAndForTheStamp)
{
    // Three readings with a keep-alive, two without.
    calls.SetClock({1000, 571000, 572000, 573000, 574000});
    ChangeObjectOwner(L"", kUnknownAccount);
    ChangeObjectOwner(L"", kUnknownAccount);
    EXPECT_EQ((StringList{L"clock ticks = 1000, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 1000, CLOCKS_PER_SEC = 1000, timeout = 570"}),
              (StringList{host.LinesAt(0).at(0), host.LinesAt(0).at(2)}))
        << "the second line counts from the new stamp";
    EXPECT_EQ((std::vector<int>{600}), host.KeepAlives());
}

TEST_F(ChangeObjectOwnerSimulation, KeepsTheHostAliveInTheMiddleOfATree)
{
    tree.Files({L"a", L"b"});
    // Two readings for the root; the time is up at the first file.
    calls.SetClock({0, 0, 571000});
    EXPECT_TRUE(ChangeObjectOwner(tree.Root(), kAccount));
    EXPECT_EQ((std::vector<int>{10800, 600, 600, 10800, 600, 10800, 600}), host.KeepAlives());
    EXPECT_EQ((StringList{L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 571000, CLOCKS_PER_SEC = 1000, timeout = 570",
                          L"clock ticks = 0, CLOCKS_PER_SEC = 1000, timeout = 570"}),
              host.LinesAt(0));
    const Events kept = {ClockLine(571000), SendKaLine(), KeepAlive(600), SidLine(kAccount)};
    EXPECT_NE(host.Events().end(), std::search(host.Events().begin(), host.Events().end(), kept.begin(), kept.end()))
        << "before anything else of that object";
}

TEST_F(ChangeObjectOwnerSimulation, FreesEverythingWhenAnExceptionPasses)
{
    struct Row {
        const wchar_t* function;
        int call;
    };
    constexpr Row kRows[] = {
        {L"LookupAccountNameW", 1},    {L"LookupAccountNameW", 2},    {L"GetNamedSecurityInfoW", 1},
        {L"SetEntriesInAclW", 1},      {L"SetNamedSecurityInfoW", 1}, {L"GetNamedSecurityInfoW", 2},
        {L"PathIsDirectoryW", 1},      {L"FindFirstFileW", 1},        {L"FindNextFileW", 1},
        {L"SetNamedSecurityInfoW", 3}, {L"FindFirstFileW", 2},        {L"FindNextFileW", 3},
    };
    tree.File(LR"(dir\f)");
    for (const auto& [function, call] : kRows) {
        HostRecorder recorder;
        SecurityCalls throwing(recorder);
        throwing.Throw(function, call);
        const int handles = OpenHandleCount();
        EXPECT_THROW(ChangeObjectOwner(tree.Root(), kAccount), std::runtime_error) << Utf8(function) << ' ' << call;
        EXPECT_TRUE(throwing.HoldsNothing()) << Utf8(function) << ' ' << call;
        EXPECT_EQ(handles, OpenHandleCount()) << Utf8(function) << ' ' << call;
    }
}

TEST_F(ChangeObjectOwnerTest, FreesEverythingWhenTheHostThrows)
{
    SetVssFileManagerLogger(&QuietLog, &ThrowingKeepAlive, &QuietLog);
    EXPECT_THROW(ChangeObjectOwner(tree.File(L"f.txt"), kAccount), std::runtime_error);
}

// Without the recording, which needs memory itself. A simulation.
class ChangeObjectOwnerMemory : public LibraryTest {};

TEST_F(ChangeObjectOwnerMemory, FreesEverythingWhenMemoryRunsShort)
{
    static int lists = 0;
    lists = 0;
    const ImportPatch made(
        "SetEntriesInAclW", +[](ULONG count, PEXPLICIT_ACCESSW entries, PACL old, PACL* list) -> DWORD {
            ++lists;
            return ::SetEntriesInAclW(count, entries, old, list);
        });
    const ImportPatch freed(
        "LocalFree", +[](HLOCAL memory) -> HLOCAL {
            --lists;
            return ::LocalFree(memory);
        });
    SetVssFileManagerLogger(&QuietLog, &QuietKeepAlive, &QuietLog);
    tree.File(LR"(dir\f)");
    const std::wstring root = tree.Root();
    int failures = 0;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        const int handles = OpenHandleCount();
        bool threw = false;
        {
            const AllocationFault fault(allocation);
            try {
                ChangeObjectOwner(root, kAccount);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            happened = fault.Happened();
            EXPECT_EQ(0, fault.Live()) << allocation;
        }
        EXPECT_EQ(happened, threw) << allocation;
        EXPECT_EQ(handles, OpenHandleCount()) << allocation;
        EXPECT_EQ(0, lists) << allocation;
        failures += threw ? 1 : 0;
    }
    EXPECT_GT(failures, 10);
}
