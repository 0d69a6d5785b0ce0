// Whether a path is the root of a volume.

#include "tests/volumes/VolumeNamesFixture.h"

namespace {

int __cdecl FailToPrint(const char* /*format*/, ...)
{
    ::SetLastError(ERROR_INVALID_HANDLE);
    return -1;
}

class IsVolumeTest : public VolumeTest {};
class IsVolumeSimulation : public SimulatedMachine {};

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

TEST_F(IsVolumeTest, IsFalseForTheEmptyPathAndPrintsNothing)
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

TEST_F(IsVolumeTest, ErrorCodeIsPrintedWhateverThePathHolds)
{
    const std::pair<std::wstring, std::string> cases[] = {
        {L"Q:\\\u0436\u03B1", "Q:\\??\\"},
        {L"Q:\\\xD83D\xDE00", "Q:\\??\\"},
        {L"Q:\\\xD800x", "Q:\\?x\\"},
        {L"Q:\\\u00E9", "Q:\\\xE9\\"},
    };
    for (const auto& [path, shown] : cases) {
        CapturedOutput output;
        EXPECT_FALSE(IsVolume(path));
        EXPECT_EQ("GetVolumeNameForVolumeMountPoint(" + shown + ") failed with 4390\n", output.Text());
    }
}
