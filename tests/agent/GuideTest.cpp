// The examples of docs/agent.md, run in their order in a directory of their own.

#include "tests/support/AgentTest.h"

#include "AgentGuide.h"

#include <map>
#include <regex>
#include <set>
#include <sstream>

namespace {

struct Example {
    std::string command;
    std::vector<std::string> output;
};

// The examples of all console blocks: a command follows "> ", its output the command.
std::vector<Example> ReadExamples(const std::string& guide)
{
    std::vector<Example> examples;
    std::istringstream lines(guide);
    bool isConsole = false;
    for (std::string line; std::getline(lines, line);) {
        if (line.starts_with("```")) {
            isConsole = line == "```console";
        } else if (isConsole && line.starts_with("> ")) {
            examples.push_back({line.substr(2), {}});
        } else if (isConsole && !examples.empty()) {
            examples.back().output.push_back(line);
        }
    }
    return examples;
}

std::string Replaced(std::string string, const std::string& from, const std::string& to)
{
    for (auto place = string.find(from); place != std::string::npos; place = string.find(from, place + to.size())) {
        string.replace(place, from.size(), to);
    }
    return string;
}

// What differs from run to run: versions, times, seconds.
std::string WithPlaceholders(std::string line)
{
    line = std::regex_replace(line, std::regex(R"(\d{4}-\d\d-\d\dT\d\d-\d\d-\d\dZ(-\d{3})?)"), "VERSION");
    line = std::regex_replace(line, std::regex(R"(\d{4}-\d\d-\d\dT\d\d:\d\d:\d\dZ)"), "TIME");
    line = std::regex_replace(line, std::regex(R"((seconds\s+)[0-9.]+)"), "seconds N");
    return line.substr(0, line.find_last_not_of(" \r") + 1);
}

// "..." stands for anything.
bool Matches(const std::string& expected, const std::string& actual)
{
    const auto dots = expected.find("...");
    if (dots == std::string::npos) {
        return expected == actual;
    }
    const std::string rest = expected.substr(dots + 3);
    for (std::size_t i = dots; actual.starts_with(expected.substr(0, dots)) && i <= actual.size(); ++i) {
        if (Matches(rest, actual.substr(i))) {
            return true;
        }
    }
    return false;
}

} // namespace

class GuideTest : public AgentTest {
protected:
    GuideTest()
    {
        live.File(LR"(Data\letter.txt)", "Dear reader\r\n");
        live.File(LR"(Data\notes.txt)", "first notes\r\n");
        live.File(LR"(Data\Photos\sea.jpg)", SampleBytes(2000));
    }

    // The guide's directory is C:\Example, its versions have the names of the real ones in the same order.
    std::string ToReal(const std::string& command)
    {
        std::string real = Replaced(command, R"(C:\Example)", Utf8(live.Root()));
        StringList versions;
        for (const WIN32_FIND_DATAW& entry : EntriesOf(live.Path(L"Backup"))) {
            versions.emplace_back(entry.cFileName);
        }
        std::sort(versions.begin(), versions.end());
        std::size_t number = 0;
        for (const std::string& name : m_guideVersions) {
            real = number < versions.size() ? Replaced(real, name, Utf8(versions[number])) : real;
            ++number;
        }
        return real;
    }

    std::vector<std::string> Run(const std::string& command)
    {
        std::istringstream words(ToReal(command));
        std::vector<std::wstring> arguments;
        for (std::string word; words >> word;) {
            arguments.emplace_back(word.begin(), word.end());
        }
        if (arguments.empty()) {
            ADD_FAILURE() << "a prompt without a command";
            return {};
        }
        const std::wstring program = arguments.front();
        arguments.erase(arguments.begin());
        if (program == L"del") {
            EXPECT_TRUE(::DeleteFileW(arguments.front().c_str()));
            return {};
        }
        if (program == L"echo") {
            return Echo(arguments);
        }
        EXPECT_EQ(L"kestrovane-agent", program);
        return RunAgentFor(arguments);
    }

    // echo %ERRORLEVEL%, or echo words > file.
    std::vector<std::string> Echo(const std::vector<std::wstring>& arguments)
    {
        if (arguments.front() == L"%ERRORLEVEL%") {
            return {std::to_string(m_exitCode)};
        }
        std::string text;
        for (std::size_t i = 0; i + 2 < arguments.size(); ++i) {
            text += (i == 0 ? "" : " ") + Utf8(arguments[i]);
        }
        WriteFileBytes(arguments.back(), text + "\r\n");
        return {};
    }

    std::vector<std::string> RunAgentFor(const std::vector<std::wstring>& arguments)
    {
        const AgentResult result = RunAgent(arguments);
        m_exitCode = result.exitCode;
        std::istringstream output(Replaced(result.output + result.messages, Utf8(live.Root()), R"(C:\Example)"));
        std::vector<std::string> lines;
        for (std::string line; std::getline(output, line);) {
            lines.push_back(line);
        }
        return lines;
    }

    void Check(const Example& example)
    {
        SCOPED_TRACE(example.command);
        const std::vector<std::string> actual = Run(example.command);
        std::string all;
        for (const std::string& line : actual) {
            all += line + "\n";
        }
        ASSERT_EQ(example.output.size(), actual.size()) << all;
        for (std::size_t i = 0; i < actual.size(); ++i) {
            const std::string expected = WithPlaceholders(example.output[i]);
            EXPECT_TRUE(Matches(expected, WithPlaceholders(actual[i]))) << expected << "\n" << actual[i];
        }
    }

    std::set<std::string> m_guideVersions;
    DWORD m_exitCode = 0;
};

TEST_F(GuideTest, ShowsWhatTheAgentPrints)
{
    const std::string guide = kAgentGuide;
    const std::regex version(R"(\d{4}-\d\d-\d\dT\d\d-\d\d-\d\dZ)");
    for (std::sregex_iterator name(guide.begin(), guide.end(), version); name != std::sregex_iterator(); ++name) {
        m_guideVersions.insert(name->str());
    }
    const auto examples = ReadExamples(guide);
    EXPECT_LT(20U, examples.size());
    for (const Example& example : examples) {
        Check(example);
    }
}

TEST_F(GuideTest, HasAnExampleOfEachCommand)
{
    const std::string guide = kAgentGuide;
    const Json help = RunForJson({L"--help"}, 0);
    std::istringstream lines(help["help"].get<std::string>());
    int commands = 0;
    for (std::string line; std::getline(lines, line);) {
        std::smatch match;
        if (std::regex_match(line, match, std::regex(R"(([a-z]+))"))) {
            ++commands;
            EXPECT_NE(std::string::npos, guide.find("\n> kestrovane-agent " + match[1].str())) << match[1];
        }
    }
    EXPECT_EQ(14, commands);
}
