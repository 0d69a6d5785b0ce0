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

TEST_F(CommandLineTest, WrongUsageHelpAndVersionAreOneObjectWhereJsonIsAsked)
{
    EXPECT_EQ(1U, RunForJson({L"unknown"}, 2)["failures"].size());
    EXPECT_EQ(1U, RunForJson({}, 2)["failures"].size());
    EXPECT_NE(std::string::npos, RunForJson({L"--help"}, 0)["help"].get<std::string>().find("restore"));
    EXPECT_NE(std::string::npos, RunForJson({L"backup", L"--help"}, 0)["help"].get<std::string>().find("--exclude"));
    EXPECT_EQ("kestrovane-agent " KESTROVANE_VERSION, RunForJson({L"--version"}, 0)["version"]);
}

TEST_F(CommandLineTest, EmptyStringsAndPathsAsPatternsAreWrongUsage)
{
    const std::vector<std::vector<std::wstring>> wrong = {
        {L"list", L""},
        {L"list", L"C:\\", L"--filter", L""},
        {L"list", L"C:\\", L"--filter", L"sub\\*.txt"},
        {L"backup", L"", L"D:\\b"},
        {L"backup", L"C:\\a", L"D:\\b", L"--filter", L""},
        {L"backup", L"C:\\a", L"D:\\b", L"--exclude", L"a/b"},
        {L"backup", L"C:\\a", L"D:\\b", L"--keep", L"0"},
        {L"restore", L""},
        {L"restore", L"D:\\b", L"--owner", L""},
        {L"delete", L"", L"--yes"},
        {L"delete", L"C:\\a", L"--filter", L"", L"--yes"},
        {L"delete", L"C:\\a", L"--filter", L"..\\*", L"--yes"},
        {L"own", L"C:\\a", L""},
        {L"verify", L""},
        {L"show", L""},
        {L"versions", L""},
        {L"resolve", L""},
    };
    for (const auto& arguments : wrong) {
        EXPECT_EQ(2U, RunAgent(arguments).exitCode) << Utf8(arguments.front());
    }
}

TEST_F(CommandLineTest, AnEnumOptionShowsItsValuesAndItsDefault)
{
    const std::string help = RunAgent({L"restore", L"--help"}).output;
    EXPECT_NE(std::string::npos, help.find("always|if-newer|never")) << help;
    EXPECT_NE(std::string::npos, help.find("(default: always)")) << help;
}

TEST_F(CommandLineTest, AnUnknownCommandIsNamed)
{
    const auto reasonOf = [](const Json& report) { return report["failures"][0]["reason"].get<std::string>(); };
    EXPECT_EQ("restor is neither a command nor an option", reasonOf(RunForJson({L"restor"}, 2)));
    EXPECT_EQ("a command is missing", reasonOf(RunForJson({}, 2)));
    EXPECT_EQ("DIR is required", reasonOf(RunForJson({L"backup"}, 2)));
}

TEST_F(CommandLineTest, OneFileIsCountedInTheSingular)
{
    live.File(L"a.txt");
    EXPECT_NE(std::string::npos, RunAgent({L"backup", live.Root(), Backup()}).output.find(": 1 file,"));
    EXPECT_NE(std::string::npos, RunAgent({L"versions", Backup()}).output.find("  1 file, 1 byte, complete"));
}

TEST_F(CommandLineTest, MessagesAreAppendedToTheLogFile)
{
    const std::wstring log = store.File(L"agent.log", "before\r\n");
    RunAgent({L"list", live.Path(L"missing"), L"--log", log});
    const std::string content = ReadFileBytes(log);
    EXPECT_EQ(0U, content.find("before\r\n"));
    EXPECT_NE(std::string::npos, content.find(Utf8(live.Path(L"missing"))));
    RunForJson({L"platform", L"--log", store.Path(L"no\\such\\log")}, 2);
}

TEST_F(CommandLineTest, QuietWritesFailuresAndResultsAlone)
{
    live.File(L"a.txt");
    const AgentResult backup = RunAgent({L"--quiet", L"backup", live.Root(), Backup()});
    EXPECT_EQ(0U, backup.exitCode);
    EXPECT_EQ("", backup.output);
    EXPECT_EQ("", backup.messages);
    EXPECT_EQ("a.txt\n", RunAgent({L"--quiet", L"list", live.Root()}).output);
    EXPECT_NE("", RunAgent({L"--quiet", L"list", live.Path(L"missing")}).messages);
}

TEST_F(CommandLineTest, AClosedOrFullStandardOutputIsNothingDone)
{
    live.File(L"a.txt");
    EXPECT_EQ(1U, AgentProcess({L"list", live.Root()}, nullptr).Wait().exitCode);
    EXPECT_EQ(1U, AgentProcess({L"--json", L"platform"}, nullptr).Wait().exitCode);
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    const HANDLE full = ::CreateFileW(LR"(\\?\unix\dev\full)", GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                      &inheritable, OPEN_EXISTING, 0, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, full) << "error " << ::GetLastError();
    EXPECT_EQ(1U, AgentProcess({L"list", live.Root()}, full).Wait().exitCode);
    EXPECT_EQ(1U, AgentProcess({L"--json", L"list", live.Root()}, full).Wait().exitCode);
    ::CloseHandle(full);
}

TEST_F(CommandLineTest, TheProgramCarriesItsVersionAndItsManifest)
{
    const HMODULE program = ::LoadLibraryExW(AgentProgram().c_str(), nullptr, LOAD_LIBRARY_AS_DATAFILE);
    ASSERT_NE(nullptr, program);
    const auto resource = [program](const wchar_t* type) {
        const HRSRC found = ::FindResourceW(program, MAKEINTRESOURCEW(1), type);
        const auto* const bytes = static_cast<const char*>(::LockResource(::LoadResource(program, found)));
        return bytes == nullptr ? std::string() : std::string(bytes, ::SizeofResource(program, found));
    };
    const std::string manifest = resource(RT_MANIFEST);
    for (const char* expected : {"asInvoker", "longPathAware", "{8e0f7a12-bfb3-4fe8-b9a5-48fd50a15a9a}"}) {
        EXPECT_NE(std::string::npos, manifest.find(expected)) << expected;
    }
    const std::string version = resource(RT_VERSION);
    const std::wstring wide(reinterpret_cast<const wchar_t*>(version.data()), version.size() / sizeof(wchar_t));
    EXPECT_NE(std::wstring::npos, wide.find(L"Kestrovane console agent"));
    ::FreeLibrary(program);
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
