// The scan of one directory into a caller's list, and the walk over all directories below one.

#include "frame/FileManager.h"

#include "tests/support/FileTools.h"
#include "tests/support/SilentHost.h"
#include "tests/support/SimulatedListing.h"
#include "tests/support/TestDirectory.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstring>

namespace {

StringList g_logged;

// Keeps the files that are logged, and leaves out reports of failures.
int __cdecl RecordFile(int level, const char* format, ...)
{
    if (level == 0) {
        return 0;
    }
    EXPECT_EQ(2, level);
    if (std::strcmp(format, "file =  %S\n") != 0) {
        ADD_FAILURE() << format;
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    g_logged.emplace_back(va_arg(arguments, const wchar_t*));
    va_end(arguments);
    return 0;
}

constexpr const char* kThisProgram = "kestrovane-unit-tests.exe";

} // namespace

class DirectoryScanTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        g_logged.clear();
        manager.SetHostFunctions(&RecordFile, &SilentKeepAlive, &RecordFile);
    }

    TestDirectory tree;
    quorvantavss::CVssFileManager manager;
};

TEST_F(DirectoryScanTest, MergesIntoTheCallersList)
{
    tree.Files({L"b", L"f", L"h"});
    StringList files = {L"a", L"c", L"g"};
    EXPECT_TRUE(manager.ScanDirectory(L"*.*", tree.Root(), files, false));
    EXPECT_EQ((StringList{L"a", L"b", L"c", L"f", L"g", L"h"}), files);
    EXPECT_EQ((StringList{L"h"}), g_logged) << "the others went before an element that was there";
}

TEST_F(DirectoryScanTest, LogsAFileThatEqualsTheLastElement)
{
    tree.Files({L"a", L"b"});
    StringList files = {L"b"};
    EXPECT_TRUE(manager.ScanDirectory(L"*.*", tree.Root(), files, false));
    EXPECT_EQ((StringList{L"a", L"b", L"b"}), files);
    EXPECT_EQ((StringList{L"b"}), g_logged);
}

// A simulation: entries come in an order of their own.
TEST_F(DirectoryScanTest, MergesEntriesOfAnyOrder)
{
    SimulatedListing simulated(kThisProgram);
    simulated.AnswerAll(SimulatedFiles({L"z", L"e", L"zz", L"b", L"m", L"zz"}));
    StringList files = {L"c", L"m"};
    EXPECT_TRUE(manager.ScanDirectory(L"*.*", tree.Root(), files, false));
    EXPECT_EQ((StringList{L"b", L"c", L"e", L"m", L"m", L"z", L"zz", L"zz"}), files);
    EXPECT_EQ((StringList{L"z", L"zz", L"zz"}), g_logged);
}

TEST_F(DirectoryScanTest, TakesItsFilterAsItIs)
{
    SimulatedListing simulated(kThisProgram);
    StringList files;
    EXPECT_TRUE(manager.ScanDirectory(L"*", tree.Root(), files, false));
    EXPECT_EQ((StringList{tree.Path(L"*")}), simulated.Patterns());
}

TEST_F(DirectoryScanTest, WithoutAMatchIsASuccess)
{
    StringList files = {L"kept"};
    EXPECT_TRUE(manager.ScanDirectory(L"*.none", tree.Root(), files, false));
    EXPECT_EQ((StringList{L"kept"}), files);
}

TEST_F(DirectoryScanTest, OfAMissingOrRejectedDirectoryFails)
{
    StringList files = {L"kept"};
    EXPECT_FALSE(manager.ScanDirectory(L"*.*", tree.Path(L"missing"), files, false));
    EXPECT_FALSE(manager.ScanDirectory(L"*.*", tree.Path(L"a*b"), files, false));
    EXPECT_EQ((StringList{L"kept"}), files);
}

using DirectoryWalkTest = DirectoryScanTest;

TEST_F(DirectoryWalkTest, NamesParentsBeforeTheirChildrenWithTrailingBackslashes)
{
    tree.Directory(LR"(a\b\c)");
    tree.File(LR"(a\file)");
    StringList directories;
    EXPECT_TRUE(manager.WalkDirectories(tree.Root(), directories));
    EXPECT_EQ((StringList{tree.Path(LR"(a\)"), tree.Path(LR"(a\b\)"), tree.Path(LR"(a\b\c\)")}), directories);
    EXPECT_EQ(StringList(), g_logged);
}

TEST_F(DirectoryWalkTest, FinishesOneDirectoryBeforeTheNext)
{
    tree.Directory(LR"(a\1\x)");
    tree.Directory(LR"(a\2)");
    tree.Directory(LR"(b\3)");
    StringList directories = {L"kept"};
    EXPECT_TRUE(manager.WalkDirectories(tree.Root() + L"\\", directories));
    EXPECT_EQ((StringList{L"kept", tree.Path(LR"(a\)"), tree.Path(LR"(a\1\)"), tree.Path(LR"(a\1\x\)"),
                          tree.Path(LR"(a\2\)"), tree.Path(LR"(b\)"), tree.Path(LR"(b\3\)")}),
              directories);
}

TEST_F(DirectoryWalkTest, OfATreeWithoutDirectoriesFindsNone)
{
    tree.File(L"file");
    StringList directories;
    EXPECT_TRUE(manager.WalkDirectories(tree.Root(), directories));
    EXPECT_EQ(StringList(), directories);
}

TEST_F(DirectoryWalkTest, OfAMissingOrRejectedDirectoryFails)
{
    StringList directories;
    EXPECT_FALSE(manager.WalkDirectories(tree.Path(L"missing"), directories));
    EXPECT_FALSE(manager.WalkDirectories(tree.Path(L"a*b"), directories));
    EXPECT_EQ(StringList(), directories);
}

// A simulation: access is denied two levels down.
TEST_F(DirectoryWalkTest, EndsAtTheFirstDirectoryThatCannotBeSearched)
{
    SimulatedListing simulated(kThisProgram);
    simulated.Answer(tree.Path(L"*.*"), {SimulatedDirectory(L"a"), SimulatedDirectory(L"d")});
    simulated.Answer(tree.Path(LR"(a\*.*)"), {SimulatedDirectory(L"b"), SimulatedDirectory(L"c")});
    StringList directories;
    EXPECT_FALSE(manager.WalkDirectories(tree.Root(), directories));
    EXPECT_EQ((StringList{tree.Path(LR"(a\)"), tree.Path(LR"(a\b\)")}), directories) << "what was found stays";
    EXPECT_EQ(L"errno: 2 " + tree.Path(LR"(a\b\*.*)"), manager.GetErrorText());
    EXPECT_EQ(0U, simulated.OpenSearches());
}

TEST_F(DirectoryWalkTest, HoldsOneSearchForEachLevel)
{
    SimulatedListing simulated(kThisProgram);
    simulated.Answer(tree.Path(L"*.*"), {SimulatedDirectory(L"a"), SimulatedDirectory(L"d")});
    simulated.Answer(tree.Path(LR"(a\*.*)"), {SimulatedDirectory(L"b")});
    simulated.Answer(tree.Path(LR"(a\b\*.*)"), {SimulatedDirectory(L".")});
    simulated.Answer(tree.Path(LR"(d\*.*)"), {SimulatedDirectory(L".")});
    std::vector<std::size_t> open;
    simulated.OnOpen([&](const std::wstring&) { open.push_back(simulated.OpenSearches()); });
    StringList directories;
    EXPECT_TRUE(manager.WalkDirectories(tree.Root(), directories));
    EXPECT_EQ((std::vector<std::size_t>{0, 1, 2, 1}), open);
    EXPECT_EQ(0U, simulated.OpenSearches());
}
