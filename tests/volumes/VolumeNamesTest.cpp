// Unique names of volumes, on the volumes of this machine and on simulated ones.

#include "tests/volumes/VolumeNamesFixture.h"

namespace {

constexpr std::size_t kUntouchedLength = 260; // characters

class GetUniqueVolumeNameForPathTest : public VolumeTest {};
class GetUniqueVolumeNameForPathNoThrowTest : public VolumeTest {};
class GetNQUniqueVolumeNameForPathTest : public VolumeTest {};
class GetUniqueVolumeNameForPathSimulation : public SimulatedMachine {};
class GetUniqueVolumeNameForPathNoThrowSimulation : public SimulatedMachine {};
class GetNQUniqueVolumeNameForPathSimulation : public SimulatedMachine {};

} // namespace

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

TEST_F(GetUniqueVolumeNameForPathSimulation, ChainsThreeLookUpsWithACapacityOf260Characters)
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

TEST_F(GetUniqueVolumeNameForPathSimulation, HasCapacityForVolumePathsOf259Characters)
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
