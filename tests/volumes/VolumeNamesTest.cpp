// Names of volumes, on the volumes of this machine and on simulated ones.

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedVolumes.h"

namespace {

const std::wstring kSystemName = LR"(\\?\Volume{11111111-0000-0000-0000-000000000001}\)";
const std::wstring kDataName = LR"(\\?\Volume{22222222-0000-0000-0000-000000000002}\)";
const std::wstring kDataUniqueName = LR"(\\?\Volume{33333333-0000-0000-0000-000000000003}\)";
constexpr std::size_t kUntouchedLength = 260; // characters

// The volume name of a drive, asked without the library.
std::wstring NameOfDrive(const std::wstring& root)
{
    wchar_t name[MAX_PATH] = {};
    EXPECT_TRUE(::GetVolumeNameForVolumeMountPointW(root.c_str(), name, MAX_PATH)) << Utf8(root);
    return name;
}

int __cdecl FailToPrint(const char* /*format*/, ...)
{
    ::SetLastError(ERROR_INVALID_HANDLE);
    return -1;
}

class VolumeTest : public LibraryTest {
protected:
    // Nothing here goes to the host's log.
    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }
};

class IsVolumeTest : public VolumeTest {};
class GetUniqueVolumeNameForPathTest : public VolumeTest {};
class GetUniqueVolumeNameForPathNoThrowTest : public VolumeTest {};
class GetNQUniqueVolumeNameForPathTest : public VolumeTest {};
class GetDisplayNameForVolumeNoThrowTest : public VolumeTest {};

// A simulation: this machine cannot mount a volume in a folder. The data volume has a drive and a folder, and a name
// that is not its unique one.
class SimulatedMachine : public VolumeTest {
protected:
    SimulatedVolumes volumes{
        {{kSystemName, {LR"(C:\)"}, {}}, {kDataName, {LR"(E:\)", LR"(C:\mnt\data\)"}, kDataUniqueName}}};
};

class IsVolumeSimulation : public SimulatedMachine {};
class GetUniqueVolumeNameForPathSimulation : public SimulatedMachine {};
class GetUniqueVolumeNameForPathNoThrowSimulation : public SimulatedMachine {};
class GetNQUniqueVolumeNameForPathSimulation : public SimulatedMachine {};
class GetDisplayNameForVolumeNoThrowSimulation : public SimulatedMachine {};

} // namespace

TEST_F(IsVolumeTest, IsTrueOfDrivesWithAndWithoutTheirBackslash)
{
    CapturedOutput output;
    for (const wchar_t* root : {L"C:", LR"(C:\)", L"D:", LR"(D:\)", L"c:"}) {
        EXPECT_TRUE(IsVolume(root)) << Utf8(root);
    }
    EXPECT_EQ("", output.Text());
}

TEST_F(IsVolumeTest, IsFalseOfAnOrdinaryFolderAndPrintsOneLine)
{
    const std::wstring folder = tree.Directory(L"folder");
    CapturedOutput output;
    EXPECT_FALSE(IsVolume(folder));
    EXPECT_EQ("GetVolumeNameForVolumeMountPoint(" + Utf8(folder) + "\\) failed with 4390\n", output.Text());
}

TEST_F(IsVolumeTest, IsFalseOfAShareAndOfAnUnknownDriveAndPrintsEachPathAsItWasAsked)
{
    CapturedOutput output;
    EXPECT_FALSE(IsVolume(LR"(\\alpha\data\)"));
    EXPECT_FALSE(IsVolume(L"Q:"));
    EXPECT_EQ("GetVolumeNameForVolumeMountPoint(\\\\alpha\\data\\) failed with 4390\n"
              "GetVolumeNameForVolumeMountPoint(Q:\\) failed with 2\n",
              output.Text());
}

TEST_F(IsVolumeTest, IsFalseOfTheEmptyPathInSilence)
{
    CapturedOutput output;
    EXPECT_FALSE(IsVolume(L""));
    EXPECT_EQ("", output.Text());
}

TEST_F(IsVolumeTest, LeavesTheErrorOfTheLookUp)
{
    CapturedOutput output;
    IsVolume(L"Q:");
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
}

TEST_F(IsVolumeSimulation, IsTrueOfAFolderThatAVolumeIsMountedIn)
{
    EXPECT_TRUE(IsVolume(LR"(C:\mnt\data)"));
    EXPECT_EQ((StringList{LR"(GetVolumeNameForVolumeMountPointW(C:\mnt\data\, 260))"}), volumes.Calls());
}

TEST_F(IsVolumeSimulation, PrintsWhateverErrorTheLookUpGives)
{
    volumes.Fail(L"GetVolumeNameForVolumeMountPointW", 1, ERROR_ACCESS_DENIED);
    CapturedOutput output;
    EXPECT_FALSE(IsVolume(L"C:"));
    EXPECT_EQ("GetVolumeNameForVolumeMountPoint(C:\\) failed with 5\n", output.Text());
}

TEST_F(IsVolumeSimulation, LeavesTheErrorOfTheLookUpWhateverPrintingDoesToIt)
{
    const ImportPatch closedOutput("printf", &FailToPrint);
    volumes.Fail(L"GetVolumeNameForVolumeMountPointW", 1, ERROR_ACCESS_DENIED);
    EXPECT_FALSE(IsVolume(L"C:"));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathTest, IsTheVolumeNameForEveryPathOnADrive)
{
    // The look-up of a name through a name fails on this machine, so the first name is the answer.
    const std::wstring c = NameOfDrive(LR"(C:\)");
    const std::wstring d = NameOfDrive(LR"(D:\)");
    ASSERT_NE(c, d);
    const std::wstring file = tree.File(LR"(a\b\c.txt)");
    EXPECT_EQ(c, GetUniqueVolumeNameForPath(L"C:"));
    EXPECT_EQ(c, GetUniqueVolumeNameForPath(LR"(C:\)"));
    EXPECT_EQ(c, GetUniqueVolumeNameForPath(file));
    EXPECT_EQ(c, GetUniqueVolumeNameForPath(tree.Path(L"missing")));
    EXPECT_EQ(d, GetUniqueVolumeNameForPath(L"d:"));
}

TEST_F(GetUniqueVolumeNameForPathTest, Is260NulCharactersForTheEmptyPath)
{
    EXPECT_EQ(std::wstring(kUntouchedLength, L'\0'), GetUniqueVolumeNameForPath(L""));
}

TEST_F(GetUniqueVolumeNameForPathTest, IsEmptyForAPathWithoutAVolume)
{
    EXPECT_EQ(L"", GetUniqueVolumeNameForPath(LR"(Q:\dir)"));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, ChainsThreeLookUpsWithRoomFor260Characters)
{
    EXPECT_EQ(kDataUniqueName, GetUniqueVolumeNameForPath(LR"(E:\dir)"));
    EXPECT_EQ((StringList{LR"(GetVolumePathNameW(E:\dir\, 260))", LR"(GetVolumeNameForVolumeMountPointW(E:\, 260))",
                          L"GetVolumeNameForVolumeMountPointW(" + kDataName + L", 260)"}),
              volumes.Calls());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, IsThatOfTheMountedVolumeForAFileBelowAMountFolder)
{
    EXPECT_EQ(kDataUniqueName, GetUniqueVolumeNameForPath(LR"(C:\mnt\data\deep\inside\f.txt)"));
    EXPECT_EQ(kDataUniqueName, GetUniqueVolumeNameForPath(LR"(C:\mnt\data)"));
    EXPECT_EQ(kSystemName, GetUniqueVolumeNameForPath(LR"(C:\mnt\other\f.txt)"));
}

TEST_F(GetUniqueVolumeNameForPathSimulation, IsTheVolumePathForAShare)
{
    EXPECT_EQ(LR"(\\server\share\)", GetUniqueVolumeNameForPath(LR"(\\server\share\dir\f.txt)"));
    EXPECT_EQ(LR"(\\server\share\)", GetUniqueVolumeNameForPath(LR"(\\server\share)"));
    EXPECT_EQ(DWORD{ERROR_NOT_A_REPARSE_POINT}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, IsTheFirstNameWhenTheLookUpOfTheNameFails)
{
    volumes.Fail(L"GetVolumeNameForVolumeMountPointW", 2, ERROR_FILE_NOT_FOUND);
    EXPECT_EQ(kDataName, GetUniqueVolumeNameForPath(LR"(E:\dir)"));
    EXPECT_EQ(DWORD{ERROR_FILE_NOT_FOUND}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, IsTheVolumePathWhenTheVolumeHasNoName)
{
    volumes.Fail(L"GetVolumeNameForVolumeMountPointW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(LR"(C:\mnt\data\)", GetUniqueVolumeNameForPath(LR"(C:\mnt\data\dir)"));
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, IsEmptyAndAsksNoFurtherWhenThereIsNoVolumePath)
{
    volumes.Fail(L"GetVolumePathNameW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(L"", GetUniqueVolumeNameForPath(LR"(E:\dir)"));
    EXPECT_EQ((StringList{LR"(GetVolumePathNameW(E:\dir\, 260))"}), volumes.Calls());
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(GetUniqueVolumeNameForPathSimulation, HasRoomForVolumePathsOf259Characters)
{
    const std::wstring longest = LR"(\\s\)" + std::wstring(254, L'x') + LR"(\)";
    ASSERT_EQ(259U, longest.size());
    EXPECT_EQ(longest, GetUniqueVolumeNameForPath(longest + L"f"));
    const std::wstring tooLong = LR"(\\s\)" + std::wstring(255, L'x') + LR"(\)";
    EXPECT_EQ(L"", GetUniqueVolumeNameForPath(tooLong + L"f"));
}

TEST_F(GetUniqueVolumeNameForPathNoThrowTest, IsFalseWhereTheNameCannotBeLookedUpThroughItself)
{
    // This machine looks up drives but no volume names.
    std::wstring name = L"before";
    EXPECT_FALSE(GetUniqueVolumeNameForPathNoThrow(LR"(C:\)", name));
    EXPECT_EQ(L"before", name);
}

TEST_F(GetUniqueVolumeNameForPathNoThrowTest, IsFalseForAShareAndLeavesTheNameAsItWas)
{
    std::wstring name = L"before";
    EXPECT_FALSE(GetUniqueVolumeNameForPathNoThrow(LR"(\\alpha\data\f.txt)", name));
    EXPECT_EQ(L"before", name);
}

TEST_F(GetUniqueVolumeNameForPathNoThrowSimulation, IsFalseForTheEmptyPathWithoutAsking)
{
    std::wstring name = L"before";
    EXPECT_FALSE(GetUniqueVolumeNameForPathNoThrow(L"", name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(StringList{}, volumes.Calls());
}

TEST_F(GetUniqueVolumeNameForPathNoThrowSimulation, GivesTheUniqueNameAfterThreeLookUps)
{
    std::wstring name = L"before";
    EXPECT_TRUE(GetUniqueVolumeNameForPathNoThrow(LR"(C:\mnt\data\f.txt)", name));
    EXPECT_EQ(kDataUniqueName, name);
    EXPECT_EQ((StringList{LR"(GetVolumePathNameW(C:\mnt\data\f.txt\, 260))",
                          LR"(GetVolumeNameForVolumeMountPointW(C:\mnt\data\, 260))",
                          L"GetVolumeNameForVolumeMountPointW(" + kDataName + L", 260)"}),
              volumes.Calls());
}

TEST_F(GetUniqueVolumeNameForPathNoThrowSimulation, IsFalseForAShareAndLeavesTheNameAsItWas)
{
    std::wstring name = L"before";
    EXPECT_FALSE(GetUniqueVolumeNameForPathNoThrow(LR"(\\server\share\f.txt)", name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(2U, volumes.Calls().size()) << "the share has a volume path and no name";
}

TEST_F(GetUniqueVolumeNameForPathNoThrowSimulation, IsAllOrNothing)
{
    struct Row {
        const wchar_t* function;
        int call;
        std::size_t calls;
        const char* why;
    };
    constexpr Row kRows[] = {
        {L"GetVolumePathNameW", 1, 1, "no volume path"},
        {L"GetVolumeNameForVolumeMountPointW", 1, 2, "no name"},
        {L"GetVolumeNameForVolumeMountPointW", 2, 3, "no unique name"},
    };
    for (const auto& [function, call, calls, why] : kRows) {
        std::wstring name = L"before";
        // The simulation counts calls from the start, so each row has a machine of its own.
        SimulatedVolumes machine({{kDataName, {LR"(E:\)"}, kDataUniqueName}});
        machine.Fail(function, call, ERROR_ACCESS_DENIED);
        EXPECT_FALSE(GetUniqueVolumeNameForPathNoThrow(L"E:", name)) << why;
        EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError()) << why;
        EXPECT_EQ(L"before", name) << why;
        EXPECT_EQ(calls, machine.Calls().size()) << why;
    }
}

TEST_F(GetNQUniqueVolumeNameForPathTest, IsTheUniqueNameForALocalPath)
{
    EXPECT_EQ(NameOfDrive(LR"(D:\)"), GetNQUniqueVolumeNameForPath(LR"(D:\dir\f.txt)"));
}

TEST_F(GetNQUniqueVolumeNameForPathTest, Is260NulCharactersForTheEmptyPath)
{
    EXPECT_EQ(std::wstring(kUntouchedLength, L'\0'), GetNQUniqueVolumeNameForPath(L""));
}

TEST_F(GetNQUniqueVolumeNameForPathSimulation, CutsTheFirstDotOnwardsFromAServersName)
{
    struct Row {
        std::wstring path;
        std::wstring name;
        const char* why;
    };
    const Row kRows[] = {
        {LR"(\\host.domain\share\f.txt)", LR"(\\host\share\)", "a qualified server"},
        {LR"(\\server.corp.example\share)", LR"(\\server\share\)", "everything from the first dot on"},
        {LR"(\\host\share)", LR"(\\host\share\)", "no dot"},
        {LR"(\\server\share.1\dir)", LR"(\\server\share\share.1\)", "a dot in the share alone repeats the share"},
        {LR"(\\a.b\share.1\)", LR"(\\a\share.1\)", "the server's dot comes first"},
        {LR"(\\.x\share\)", LR"(\\\share\)", "a name that begins with a dot"},
        {LR"(E:\dir.1\f.txt)", kDataUniqueName, "a volume name has no dot"},
        {LR"(C:\mnt\data\f.txt)", kDataUniqueName, "a mount folder"},
    };
    for (const auto& [path, name, why] : kRows) {
        EXPECT_EQ(name, GetNQUniqueVolumeNameForPath(path)) << why;
    }
}

TEST_F(GetNQUniqueVolumeNameForPathSimulation, LeavesAnAnswerThatIsNoShareAsItIs)
{
    volumes.Fail(L"GetVolumePathNameW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(L"", GetNQUniqueVolumeNameForPath(L"E:"));
    SimulatedVolumes dotted({{kDataName, {LR"(C:\mnt.1\data.2\)"}, {}}});
    dotted.Fail(L"GetVolumeNameForVolumeMountPointW", 1, ERROR_ACCESS_DENIED);
    EXPECT_EQ(LR"(C:\mnt.1\data.2\)", GetNQUniqueVolumeNameForPath(LR"(C:\mnt.1\data.2\f.txt)"));
}

TEST_F(GetNQUniqueVolumeNameForPathSimulation, LeavesAnAnswerWithoutABackslashAfterTheServerAsItIs)
{
    // Windows never answers so.
    const ImportPatch bare(
        "GetVolumePathNameW", +[](const wchar_t*, wchar_t* buffer, DWORD) -> BOOL {
            std::wcscpy(buffer, LR"(\\host.domain)");
            return TRUE;
        });
    EXPECT_EQ(LR"(\\host.domain)", GetNQUniqueVolumeNameForPath(LR"(\\host.domain\share)"));
}

TEST_F(GetDisplayNameForVolumeNoThrowTest, IsTheDriveOfAVolumeName)
{
    std::wstring name = L"before";
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(NameOfDrive(LR"(D:\)"), name));
    EXPECT_EQ(LR"(D:\)", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowTest, IsFalseForWhatIsNoVolumeNameAndLeavesTheTextAsItWas)
{
    struct Row {
        const wchar_t* volume;
        const char* why;
    };
    constexpr Row kRows[] = {
        {L"", "the empty text goes to Windows as it is"},
        {LR"(C:\)", "a mount path is no volume name"},
        {LR"(\\?\Volume{00000000-0000-0000-0000-000000000043})", "the trailing backslash is not added"},
        {LR"(\\?\Volume{12345678-0000-0000-0000-000000000000}\)", "an unknown volume"},
    };
    for (const auto& [volume, why] : kRows) {
        std::wstring name = L"before";
        EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(volume, name)) << why;
        EXPECT_EQ(L"before", name) << why;
    }
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsTheFirstPathListedWhetherOrNotItIsTheShorter)
{
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(E:\)", name);
    const SimulatedVolumes longFirst({{kDataName, {LR"(C:\mnt\data\)", LR"(E:\)"}, {}}});
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(C:\mnt\data\)", name);
    const SimulatedVolumes even({{kDataName, {LR"(F:\)", LR"(E:\)"}, {}}});
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(F:\)", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsEmptyAndTrueForAVolumeWithoutAMountPath)
{
    const SimulatedVolumes unmounted({{kDataName, {}, {}}});
    std::wstring name = L"before";
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"", name);
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, AsksAgainWithTheRoomThatALongListNeeds)
{
    const std::wstring first = LR"(C:\)" + std::wstring(200, L'a') + LR"(\)";
    const std::wstring second = LR"(C:\)" + std::wstring(200, L'b') + LR"(\)";
    const SimulatedVolumes machine({{kDataName, {first, second}, {}}});
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(first, name);
    EXPECT_EQ((StringList{L"GetVolumePathNamesForVolumeNameW(" + kDataName + L", 260)",
                          L"GetVolumePathNamesForVolumeNameW(" + kDataName + L", 411)"}),
              machine.Calls());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, NeedsOneQueryForAListOf260CharactersAndTwoFor261)
{
    struct Row {
        std::size_t characters;
        std::size_t queries;
    };
    constexpr Row kRows[] = {{260, 1}, {261, 2}};
    for (const auto& [characters, queries] : kRows) {
        const std::wstring path = LR"(C:\)" + std::wstring(characters - 6, L'a') + LR"(\)";
        const SimulatedVolumes machine({{kDataName, {path}, {}}});
        std::wstring name;
        EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name)) << characters;
        EXPECT_EQ(path, name);
        EXPECT_EQ(queries, machine.Calls().size()) << characters;
    }
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsFalseWhenTheSecondQueryFailsAndLeavesTheTextAsItWas)
{
    SimulatedVolumes machine({{kDataName, {LR"(C:\)" + std::wstring(300, L'a') + LR"(\)"}, {}}});
    machine.Fail(L"GetVolumePathNamesForVolumeNameW", 2, ERROR_ACCESS_DENIED);
    std::wstring name = L"before";
    EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(2U, machine.Calls().size());
    EXPECT_EQ(DWORD{ERROR_ACCESS_DENIED}, ::GetLastError());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, IsFalseAfterOneQueryWhenWindowsNamesNoLength)
{
    volumes.Fail(L"GetVolumePathNamesForVolumeNameW", 1, ERROR_MORE_DATA);
    std::wstring name = L"before";
    EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(L"before", name);
    EXPECT_EQ(1U, volumes.Calls().size());
}

TEST_F(GetDisplayNameForVolumeNoThrowSimulation, AsksAgainAfterAnyFailureThatNamesALength)
{
    static int calls = 0;
    calls = 0;
    const ImportPatch once(
        "GetVolumePathNamesForVolumeNameW",
        +[](const wchar_t*, wchar_t* buffer, DWORD capacity, DWORD* needed) -> BOOL {
            *needed = 5;
            if (++calls == 1) {
                ::SetLastError(ERROR_ACCESS_DENIED);
                return FALSE;
            }
            EXPECT_EQ(5U, capacity) << "as many characters as were named, though it is fewer";
            std::wcscpy(buffer, LR"(G:\)");
            return TRUE;
        });
    std::wstring name;
    EXPECT_TRUE(GetDisplayNameForVolumeNoThrow(kDataName, name));
    EXPECT_EQ(LR"(G:\)", name);
    EXPECT_EQ(2, calls);
}
