// Listings of directories in orders and states that the file system of a test machine does not have, and listings
// whose host throws. Where entries are simulated, the library's find functions are replaced.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedListing.h"
#include "tests/support/ThrowingHost.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

namespace {

std::wstring FileLine(const std::wstring& file)
{
    return L"file =  " + file + L"\n";
}

} // namespace

class ListFilesFilterFault : public ThrowingTest {};

TEST_F(ListFilesFilterFault, SearchesTheDirectoryJoinedWithTheFilter)
{
    SimulatedListing simulated;
    const std::wstring base = tree.Root() + L"\\";
    const struct {
        const wchar_t* filter;
        std::wstring pattern;
        const char* why;
    } cases[] = {
        {L"*", base + L"*.*", "a star alone means all files"}, {L"*.*", base + L"*.*", "as this does"},
        {L"**", base + L"**", "nothing else is replaced"},     {L"*.txt", base + L"*.txt", "joined as it is"},
        {LR"(sub\*)", base + LR"(sub\*)", "also a path"},      {L"", base, "also nothing"},
    };
    for (const auto& [filter, pattern, why] : cases) {
        ListFilesFilter(tree.Root(), filter, false);
        ListFilesFilterRecursive(tree.Root(), filter, false);
        const auto& patterns = simulated.Patterns();
        ASSERT_LE(3U, patterns.size());
        // One of the single directory, then the tree's: its own, and the walk, which finds nothing to enter.
        const StringList last(patterns.end() - 3, patterns.end());
        EXPECT_EQ((StringList{pattern, pattern, base + L"*.*"}), last) << why;
    }
}

TEST_F(ListFilesFilterFault, MergesEntriesOfAnyOrderAndLogsThoseAppended)
{
    SimulatedListing simulated;
    simulated.AnswerAll(SimulatedFiles({L"m", L"b", L"z", L"a", L"n", L"zz", L"z", L"zz"}));
    EXPECT_EQ((StringList{L"a", L"b", L"m", L"n", L"z", L"z", L"zz", L"zz"}),
              ListFilesFilter(tree.Root(), L"*", false));
    EXPECT_EQ((StringList{FileLine(L"m"), FileLine(L"z"), FileLine(L"zz"), FileLine(L"zz")}), host.Lines())
        << "an equal one goes after its like";
}

TEST_F(ListFilesFilterFault, LooksAtTheDirectoryAttributeAlone)
{
    SimulatedListing simulated;
    simulated.AnswerAll({
        {L"archive", _A_ARCH},
        {L"dir", _A_SUBDIR | _A_ARCH | _A_HIDDEN},
        {L"hidden", _A_HIDDEN | _A_SYSTEM | _A_RDONLY},
        {L"link", _A_SUBDIR | 0x400U},
        {L"other", 0xFFFFFFEFU},
    });
    EXPECT_EQ((StringList{L"archive", L"hidden", L"other"}), ListFilesFilter(tree.Root(), L"*", false));
}

TEST_F(ListFilesFilterFault, DirectoryEntriesAreDroppedWhereverTheyStand)
{
    SimulatedListing simulated;
    simulated.AnswerAll(
        {{L"b"}, SimulatedDirectory(L"d"), {L"a"}, SimulatedDirectory(L".."), SimulatedDirectory(L".")});
    EXPECT_EQ((StringList{L"a", L"b"}), ListFilesFilter(tree.Root(), L"*", false));
}

TEST_F(ListFilesFilterFault, ClosesTheSearchItOpened)
{
    SimulatedListing simulated;
    ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ(0U, simulated.OpenedSearches()) << "nothing matches";
    simulated.AnswerAll({{L"a"}, {L"b"}});
    ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ(1U, simulated.OpenedSearches());
    EXPECT_EQ(0U, simulated.OpenSearches());
}

TEST_F(ListFilesFilterFault, MissingDirectoryIsNotSearched)
{
    SimulatedListing simulated;
    ListFilesFilter(tree.Path(L"missing"), L"*", false);
    ListFilesFilterRecursive(tree.Path(L"missing"), L"*", false);
    EXPECT_EQ(StringList(), simulated.Patterns());
}

// Real files and searches: only the count of closed searches is recorded.
TEST_F(ListFilesFilterFault, ExceptionOfTheHostsLoggerArrivesAndClosesTheSearch)
{
    static int closed;
    closed = 0;
    tree.Files({L"a", L"b", L"c"});
    const std::wstring directory = tree.Root();
    const ImportPatch counted(
        "_findclose", +[](std::intptr_t search) {
            ++closed;
            return ::_findclose(search);
        });
    const ThrowingHost throwing;
    for (const int line : {1, 2, 3}) {
        ThrowingHost::Throw(line, 0);
        try {
            ListFilesFilter(directory, L"*", true);
            ADD_FAILURE() << "nothing was thrown at line " << line;
        } catch (const HostFailure& failure) {
            EXPECT_EQ(line, failure.call);
        }
        EXPECT_EQ(line, closed);
    }
    ThrowingHost::Throw(0, 0);
    EXPECT_EQ(3U, ListFilesFilter(directory, L"*", true).size()) << "the next listing is whole";
}

class ListDirecoriesRecursiveFault : public LibraryTest {};

TEST_F(ListDirecoriesRecursiveFault, KeepsTheOrderInWhichTheyAreFound)
{
    SimulatedListing simulated;
    simulated.Answer(tree.Root() + LR"(\*.*)", {SimulatedDirectory(L"."),
                                                SimulatedDirectory(L"z"),
                                                {L"file"},
                                                SimulatedDirectory(L".."),
                                                SimulatedDirectory(L"B"),
                                                SimulatedDirectory(L"a"),
                                                SimulatedDirectory(L"...")});
    EXPECT_EQ((StringList{tree.Path(L"z"), tree.Path(L"B"), tree.Path(L"a"), tree.Path(L"...")}),
              ListDirecoriesRecursive(tree.Root()));
    EXPECT_EQ(1U, simulated.OpenedSearches());
    EXPECT_EQ(0U, simulated.OpenSearches());
    EXPECT_TRUE(host.Events().empty());
}

TEST_F(ListDirecoriesRecursiveFault, FileNamedLikeTheParentIsNoDirectory)
{
    SimulatedListing simulated;
    simulated.AnswerAll({{L".."}, {L"file"}, {L"dir", _A_SUBDIR | _A_HIDDEN}});
    EXPECT_EQ((StringList{tree.Path(L"dir")}), ListDirecoriesRecursive(tree.Root()));
}

TEST_F(ListDirecoriesRecursiveFault, DoesNotEnterTheDirectory)
{
    CallLog::Take();
    const ImportPatch recorded(
        "_wchdir", +[](const wchar_t* directory) {
            CallLog::Add(directory);
            return ::_wchdir(directory);
        });
    tree.Directory(L"dir");
    EXPECT_EQ((StringList{tree.Path(L"dir")}), ListDirecoriesRecursive(tree.Root()));
    EXPECT_EQ(StringList(), CallLog::Take());
}

// A tree of simulated entries above real directories:
//   top: 1 file, dirs a and b; a: 1 file, dir x; a\x: 1 file; b: 1 file
class ListFilesFilterRecursiveFault : public ThrowingTest {
protected:
    void SetUp() override
    {
        ThrowingTest::SetUp();
        tree.Directory(LR"(a\x)");
        tree.Directory(L"b");
        Answer(L"", {SimulatedDirectory(L"."),
                     SimulatedDirectory(L".."),
                     {L"top"},
                     SimulatedDirectory(L"b"),
                     SimulatedDirectory(L"a")});
        Answer(LR"(a\)", {SimulatedDirectory(L"."), {L"in-a"}, SimulatedDirectory(L"x")});
        Answer(LR"(a\x\)", {SimulatedDirectory(L"."), {L"in-x"}});
        Answer(LR"(b\)", {SimulatedDirectory(L"."), {L"in-b"}});
    }

    void Answer(const std::wstring& directory, std::vector<SimulatedEntry> entries)
    {
        simulated.Answer(tree.Path(directory) + L"*.*", std::move(entries));
    }

    StringList List() { return ListFilesFilterRecursive(tree.Root(), L"*", false); }

    SimulatedListing simulated;
};

TEST_F(ListFilesFilterRecursiveFault, FollowsTheOrderInWhichDirectoriesAreFound)
{
    EXPECT_EQ((StringList{L"top", LR"(b\in-b)", LR"(a\in-a)", LR"(a\x\in-x)"}), List());
    EXPECT_EQ(0U, simulated.OpenSearches());
}

TEST_F(ListFilesFilterRecursiveFault, WalksTheWholeTreeBeforeItScansTheRest)
{
    List();
    const StringList expected = {
        tree.Path(L"*.*"),        tree.Path(L"*.*"),      tree.Path(LR"(b\*.*)"), tree.Path(LR"(a\*.*)"),
        tree.Path(LR"(a\x\*.*)"), tree.Path(LR"(b\*.*)"), tree.Path(LR"(a\*.*)"), tree.Path(LR"(a\x\*.*)"),
    };
    EXPECT_EQ(expected, simulated.Patterns());
}

// One directory that cannot be searched costs the files of all: only the top's were collected by then.
TEST_F(ListFilesFilterRecursiveFault, DirectoryThatCannotBeWalkedLeavesTheTopsFiles)
{
    Answer(LR"(a\x\)", {});
    EXPECT_EQ((StringList{L"top"}), List());
    EXPECT_EQ(0U, simulated.OpenSearches()) << "closed at every level";
    EXPECT_EQ(StringList(), host.LinesAt(0));
    EXPECT_EQ((StringList{FileLine(tree.Path(L"top")), FileLine(tree.Path(L"top")), L"temp[ 0 ] =  top\n"}),
              host.Lines());
}

// It was there during the walk, and is gone when its files are asked for.
TEST_F(ListFilesFilterRecursiveFault, DirectoryThatCannotBeScannedEndsTheList)
{
    ASSERT_TRUE(::RemoveDirectoryW(tree.Path(LR"(a\x)").c_str()));
    EXPECT_EQ((StringList{L"top", LR"(b\in-b)", LR"(a\in-a)"}), List());
    ASSERT_TRUE(::RemoveDirectoryW(tree.Path(L"b").c_str()));
    EXPECT_EQ((StringList{L"top"}), List()) << "nor are the files of later directories collected";
    EXPECT_EQ((StringList{tree.Path(L"top")}), ListFilesFilterRecursive(tree.Root(), L"*", true));
    EXPECT_EQ(StringList(), host.LinesAt(0));
}

TEST_F(ListFilesFilterRecursiveFault, DirectoryWithoutMatchesDoesNotEndTheList)
{
    simulated.Answer(tree.Path(LR"(b\*.txt)"), {});
    simulated.Answer(tree.Path(LR"(a\*.txt)"), {{L"a.txt"}});
    EXPECT_EQ((StringList{LR"(a\a.txt)"}), ListFilesFilterRecursive(tree.Root(), L"*.txt", false));
}

// No real file system has such a name, but a walk that met one would have to end like any other that fails.
TEST_F(ListFilesFilterRecursiveFault, DirectoryOfARejectedNameEndsTheWalk)
{
    Answer(LR"(a\)", {{L"in-a"}, SimulatedDirectory(L"y?"), SimulatedDirectory(L"x")});
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_EQ((StringList{L"top"}), List());
    EXPECT_EQ(ReportLines(ERROR_ACCESS_DENIED), host.LinesAt(0)) << "by the validation";
    EXPECT_EQ(0U, simulated.OpenSearches());
}

TEST_F(ListFilesFilterRecursiveFault, ExceptionOfTheHostArrivesFromEveryLine)
{
    const ThrowingHost throwing;
    List();
    const int lines = ThrowingHost::Lines();
    ASSERT_EQ(12, lines) << "each file three times";
    for (int line = 1; line <= lines; ++line) {
        ThrowingHost::Throw(line, 0);
        EXPECT_THROW(List(), HostFailure) << line;
        EXPECT_EQ(0U, simulated.OpenSearches()) << line;
    }
}
