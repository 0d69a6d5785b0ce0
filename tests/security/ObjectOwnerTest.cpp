// The owner change, with every line of the host and every call of the system.

#include "tests/security/ObjectOwnerFixture.h"

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

TEST_F(ChangeObjectOwnerTest, GivesToTheAccountAfterTheMachinePrefix)
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
    // Reading an DACL need not set the last error, so an older one may be told: kept for compatibility.
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
    const UniqueHandle thread(
        ::CreateThread(nullptr, kStack, +change, nullptr, STACK_SIZE_PARAM_IS_A_RESERVATION, nullptr));
    ASSERT_NE(nullptr, thread);
    ::WaitForSingleObject(thread.get(), INFINITE);
    DWORD result = 0;
    ::GetExitCodeThread(thread.get(), &result);
    EXPECT_EQ(1U, result);
    EXPECT_EQ(folders, WrittenPaths());
}
