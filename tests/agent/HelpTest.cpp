// The agent's help, its tables and its completion.

#include "tests/support/AgentTest.h"

#include <sstream>

class HelpTest : public AgentTest {
protected:
    static std::vector<std::string> Lines(const std::string& text)
    {
        std::vector<std::string> lines;
        std::istringstream stream(text);
        for (std::string line; std::getline(stream, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    static const std::vector<std::wstring>& Commands()
    {
        static const std::vector<std::wstring> commands = {
            L"backup", L"versions", L"show", L"verify",   L"restore", L"map",     L"list",
            L"delete", L"volumes",  L"own",  L"platform", L"pending", L"resolve", L"completion"};
        return commands;
    }

    static void ExpectToFit(const std::string& text)
    {
        constexpr std::size_t kColumns = 80;
        for (const std::string& line : Lines(text)) {
            EXPECT_GE(kColumns, line.size()) << line;
        }
    }
};

TEST_F(HelpTest, OfEachCommandHasAnExampleAndFitsATerminal)
{
    ExpectToFit(RunAgent({L"--help"}).output);
    for (const std::wstring& command : Commands()) {
        SCOPED_TRACE(Utf8(command));
        const std::string help = RunAgent({command, L"--help"}).output;
        EXPECT_NE(std::string::npos, help.find("Examples:\n  kestrovane-agent ")) << help;
        ExpectToFit(help);
    }
}

TEST_F(HelpTest, HasTheSameOptionsAsTheCompletion)
{
    const std::string script = RunAgent({L"completion", L"powershell"}).output;
    for (const std::wstring& command : Commands()) {
        const auto line = script.find("'" + Utf8(command) + "' = @('--help'");
        ASSERT_NE(std::string::npos, line) << Utf8(command);
        const std::string options = script.substr(line, script.find('\n', line) - line);
        for (const std::string& help : Lines(RunAgent({command, L"--help"}).output)) {
            if (help.starts_with("  --")) {
                const std::string name = help.substr(2, help.find_first_of(" ,", 2) - 2);
                EXPECT_NE(std::string::npos, options.find("'" + name + "'")) << Utf8(command) << " " << name;
            }
        }
    }
    EXPECT_NE(std::string::npos, script.find("'restore --overwrite' = @('always', 'if-newer', 'never')\n"));
    EXPECT_NE(std::string::npos, script.find("Register-ArgumentCompleter -Native -CommandName kestrovane-agent"));
    RunForJson({L"completion", L"another-shell"}, 2);
}

using TableTest = HelpTest;

TEST_F(TableTest, HasNamesLastSoThatWideOnesMoveNoColumn)
{
    ExpectToFit(RunAgent({L"volumes"}).output);
    live.Files({L"a.txt", L"\u5099\u4efd\u8cc7\u6599.txt"});
    MakeBackup();
    const auto lines = Lines(RunAgent({L"show", Backup()}).output);
    ASSERT_LE(2U, lines.size());
    EXPECT_EQ(lines[0].find("a.txt"), lines[1].find("\xE5\x82\x99")) << lines[0] << "\n" << lines[1];
}

using ColourTest = HelpTest;

TEST_F(ColourTest, IsNowhere)
{
    live.File(L"a.txt");
    EXPECT_EQ(std::string::npos, RunAgent({L"--help"}).output.find('\x1b'));
    EXPECT_EQ(std::string::npos, RunAgent({L"backup", live.Root(), Backup()}).output.find('\x1b'));
    EXPECT_EQ(std::string::npos, RunAgent({L"list", live.Path(L"missing")}).messages.find('\x1b'));
}
