// The agent's command line, its outputs and its small commands.

#include "tests/support/AgentTest.h"

using CommandLineTest = AgentTest;
using ListCommandTest = AgentTest;
using MapCommandTest = AgentTest;

TEST_F(CommandLineTest, WrongUsageEndsWithTwoAndSaysSoOnStandardError)
{
    const std::vector<std::vector<std::wstring>> wrong = {
        {},
        {L"unknown"},
        {L"list"},
        {L"backup", L"C:\\a"},
        {L"restore", L"C:\\a", L"--map", L"no equals sign"},
        {L"restore", L"C:\\a", L"--map", L"a=b;*;recursively"},
        {L"restore", L"C:\\a", L"--overwrite", L"sometimes"},
        {L"list", L"C:\\", L"--unknown"},
    };
    for (const auto& arguments : wrong) {
        const AgentResult result = RunAgent(arguments);
        EXPECT_EQ(2U, result.exitCode) << (arguments.empty() ? "no arguments" : Utf8(arguments.front()));
        EXPECT_EQ("", result.output);
        EXPECT_NE("", result.messages);
    }
}

TEST_F(CommandLineTest, HelpGoesToStandardOutput)
{
    const AgentResult result = RunAgent({L"--help"});
    EXPECT_EQ(0U, result.exitCode);
    EXPECT_NE(std::string::npos, result.output.find("restore"));
}

TEST_F(CommandLineTest, TheLibrarysLogGoesToStandardErrorWithVerbose)
{
    live.File(L"\u0436.txt");
    const AgentResult quiet = RunAgent({L"list", live.Root()});
    EXPECT_EQ("", quiet.messages);
    const AgentResult verbose = RunAgent({L"--verbose", L"list", live.Root()});
    EXPECT_EQ(quiet.output, verbose.output);
    EXPECT_NE(std::string::npos, verbose.messages.find(Utf8(L"file =  \u0436.txt")));
}

TEST_F(CommandLineTest, WhatTheLibraryPrintsStaysOutOfTheResults)
{
    // A file in the place of a directory makes the library print to standard output.
    MakeLiveTree();
    MakeBackup();
    const auto report = RunForJson({L"restore", Backup(), L"--map", live.Root() + L"=" + live.Path(L"a.txt")}, 1);
    EXPECT_EQ(4, report["failed"]);
}

TEST_F(ListCommandTest, PrintsNamesInUtf8)
{
    live.Files({L"b", L"a", L"\u00e9\u4e2d"});
    const AgentResult result = RunAgent({L"list", live.Root()});
    EXPECT_EQ(0U, result.exitCode);
    EXPECT_EQ(Utf8(L"a\nb\n\u00e9\u4e2d\n"), result.output);
}

TEST_F(ListCommandTest, FiltersAndListsTrees)
{
    live.Files({L"a.txt", L"a.log", LR"(sub\b.txt)"});
    EXPECT_EQ("a.txt\n", RunAgent({L"list", live.Root(), L"--filter", L"*.txt"}).output);
    EXPECT_EQ("a.txt\nsub\\b.txt\n", RunAgent({L"list", live.Root(), L"--filter", L"*.txt", L"--recursive"}).output);
    EXPECT_EQ(Utf8(live.Path(L"a.log")) + "\n",
              RunAgent({L"list", live.Root(), L"--filter", L"*.log", L"--full-paths"}).output);
}

TEST_F(ListCommandTest, AMissingDirectoryIsNotAnEmptyOne)
{
    EXPECT_EQ(0U, RunAgent({L"list", live.Root()}).exitCode);
    const auto report = RunForJson({L"list", live.Path(L"missing")}, 1);
    EXPECT_EQ(Utf8(live.Path(L"missing")), report["failures"][0]["file"]);
}

TEST_F(MapCommandTest, ShowsWhereAFileGoes)
{
    const std::vector<std::wstring> map = {L"--map", L"C:\\Data=D:\\Restore;*;recursive"};
    const auto run = [&](std::vector<std::wstring> arguments) {
        arguments.insert(arguments.begin(), L"map");
        arguments.insert(arguments.end(), map.begin(), map.end());
        return RunAgent(arguments).output;
    };
    EXPECT_EQ("D:\\Restore\\Sub\\a.txt\n", run({L"C:\\Data\\Sub\\a.txt"}));
    EXPECT_EQ("D:\\Restore\\Sub\\a.txt\n", run({L"C:\\Data\\Sub", L"a.txt"}));
    EXPECT_EQ("D:\\Restore\n", run({L"C:\\Data"}));
    EXPECT_EQ("C:\\Database\\a.txt\n", run({L"C:\\Database\\a.txt"}));
}

TEST_F(MapCommandTest, ExplainsEachMappingAndWhereTheTwoFunctionsDiffer)
{
    const auto report =
        RunForJson({L"map", L"C:\\Data\\Sub", L"a.txt", L"--explain", L"--map", L"C:\\Data=E:\\X", L"--map",
                    L"C:\\Data\\=D:\\Restore;*;recursive", L"--map", L"C:\\Data=C:\\Data\\Old;*.log"},
                   0);
    std::string text;
    for (const auto& line : report["explanation"]) {
        text += line.get<std::string>() + "\n";
    }
    for (const char* expected :
         {"the mapping is not recursive", "lies below it", "does not fit", "MapRestorePath: D:\\RestoreSub\n",
          "MapRestorePath1: D:\\Restore\\Sub\n", "makes the two functions differ", "stays inside its own source"}) {
        EXPECT_NE(std::string::npos, text.find(expected)) << expected << " in " << text;
    }
}
