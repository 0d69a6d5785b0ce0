// Entries whose names hold a separator, as a damaged volume or a hostile server returns them: they lead out of their
// directory. Below C:\kestrovane-names, tools/wine.sh creates such names for real.

#include "tests/support/LibraryTest.h"
#include "tests/support/SecurityCalls.h"
#include "tests/support/SimulatedListing.h"

#include <algorithm>

namespace {

const std::wstring kTop = LR"(C:\kestrovane-names\top)";
const std::wstring kVictim = LR"(C:\kestrovane-names\victim.txt)";

// The search of a directory that returns the given entries after ".".
std::vector<SimulatedEntry> g_entries;
std::size_t g_next = 0;

BOOL WINAPI ReturnNextEntry(HANDLE /*search*/, WIN32_FIND_DATAW* entry)
{
    if (g_next == g_entries.size()) {
        ::SetLastError(ERROR_NO_MORE_FILES);
        return FALSE;
    }
    const SimulatedEntry& simulated = g_entries[g_next++];
    *entry = {};
    entry->dwFileAttributes =
        (simulated.attributes & _A_SUBDIR) != 0 ? FILE_ATTRIBUTE_DIRECTORY : FILE_ATTRIBUTE_NORMAL;
    std::wcsncpy(entry->cFileName, simulated.name.c_str(), MAX_PATH - 1);
    return TRUE;
}

} // namespace

class InvalidNamesTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        if (!PathExists(kVictim)) {
            GTEST_SKIP() << "this platform cannot hold names with separators";
        }
    }

    void TearDown() override
    {
        if (!IsSkipped()) {
            EXPECT_TRUE(PathExists(kVictim)) << "a file outside the directory was deleted";
        }
        LibraryTest::TearDown();
    }
};

TEST_F(InvalidNamesTest, ListingsSkipThem)
{
    EXPECT_EQ((StringList{L"plain.txt"}), ListFilesFilter(kTop, L"*", false));
    EXPECT_EQ((StringList{L"plain.txt", LR"(sub\inner.txt)"}), ListFilesFilterRecursive(kTop, L"*", false));
    EXPECT_EQ((StringList{kTop + LR"(\sub)"}), ListDirecoriesRecursive(kTop));
    for (const std::wstring& line : host.Lines()) {
        EXPECT_EQ(std::wstring::npos, line.find(L"victim")) << Utf8(line);
    }
}

TEST_F(InvalidNamesTest, FilteredDeletionFailsAtThemAndStops)
{
    ::SetLastError(0);
    EXPECT_FALSE(DeleteFilesFilter(kTop, L"*.txt"));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_NAME), ::GetLastError());
    EXPECT_TRUE(PathExists(kTop + LR"(\plain.txt)")) << "it comes later in the order";
    EXPECT_TRUE(DeleteFilesFilter(kTop, L"*.none"));
}

TEST_F(InvalidNamesTest, TreeDeletionFailsAtThemAndReports)
{
    EXPECT_EQ(0, DeleteDirectoryRecursive(kTop.c_str()));
    EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_NAME), ::GetLastError());
    const StringList lines = host.LinesAt(0);
    ASSERT_LE(2U, lines.size());
    EXPECT_EQ(L"Directory couldn't be deleted: C \n", lines.front());
    EXPECT_EQ(L"RecursivelyDeleteVirtualDir call failed: 123\n", lines[1]);
}

TEST_F(InvalidNamesTest, OwnerChangeSkipsThem)
{
    const SecurityCalls calls(host);
    EXPECT_TRUE(ChangeObjectOwner(kTop, L"SYSTEM"));
    for (const SecurityWrite& write : calls.Writes()) {
        EXPECT_EQ(std::wstring::npos, write.path.find(L"victim")) << Utf8(write.path);
    }
    EXPECT_EQ(4U, calls.Writes().size()) << "the directory, its plain file, its subdirectory and the file in that";
}

// Simulations: names that this machine's volumes cannot hold.
class InvalidNamesSimulation : public LibraryTest {};

TEST_F(InvalidNamesSimulation, WalkAndScanSkipSlashesToo)
{
    SimulatedListing listing;
    const std::wstring top = tree.Root() + L"\\";
    listing.Answer(top + L"*.*", {{L"b"}, {L"../out.txt"}, {LR"(..\out.txt)"}, {L"a"}, SimulatedDirectory(L"../out")});
    EXPECT_EQ((StringList{L"a", L"b"}), ListFilesFilter(tree.Root(), L"*", false));
    EXPECT_EQ(StringList{}, ListDirecoriesRecursive(tree.Root()));
    EXPECT_EQ((StringList{L"a", L"b"}), ListFilesFilterRecursive(tree.Root(), L"*", false));
    EXPECT_EQ((StringList{top + L"*.*", top + L"*.*", top + L"*.*", top + L"*.*"}), listing.Patterns());
}

TEST_F(InvalidNamesSimulation, FilteredDeletionDeletesTheFilesBeforeThem)
{
    tree.Files({L"a", L"z"});
    SimulatedListing listing;
    listing.Answer(tree.Root() + LR"(\*)", {{L"z"}, {LR"(m\..\z)"}, {L"a"}, {LR"(n\..\z)"}});
    EXPECT_FALSE(DeleteFilesFilter(tree.Root(), L"*"));
    EXPECT_FALSE(PathExists(tree.Path(L"a")));
    EXPECT_TRUE(PathExists(tree.Path(L"z")));
}

TEST_F(InvalidNamesSimulation, TreeDeletionRejectsDirectoriesAndFiles)
{
    tree.File(L"victim");
    tree.File(LR"(out\victim)");
    tree.File(LR"(top\file)");
    for (const SimulatedEntry& entry : {SimulatedEntry{LR"(..\victim)"}, SimulatedDirectory(L"../out")}) {
        host.Clear();
        g_entries = {entry};
        g_next = 0;
        const ImportPatch next("FindNextFileW", &ReturnNextEntry);
        EXPECT_EQ(0, DeleteDirectoryRecursive(tree.Path(L"top").c_str()));
        EXPECT_EQ(static_cast<DWORD>(ERROR_INVALID_NAME), ::GetLastError());
        EXPECT_EQ(L"RecursivelyDeleteVirtualDir call failed: 123\n", host.LinesAt(0).at(1));
    }
    EXPECT_TRUE(PathExists(tree.Path(L"victim")));
    EXPECT_TRUE(PathExists(tree.Path(LR"(out\victim)")));
}

TEST_F(InvalidNamesSimulation, FileWithAnInvalidCharacterIsNotDeleted)
{
    tree.File(L"b");
    SimulatedListing listing;
    listing.AnswerAll({{L"a?"}, {L"b"}});
    EXPECT_FALSE(DeleteFilesFilter(tree.Root(), L"*"));
    EXPECT_TRUE(PathExists(tree.Path(L"b"))) << "later files are not tried";
}
