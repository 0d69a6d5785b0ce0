// Completion of the command line by shells.

#include "agent/console/Completion.h"

#include <CLI/CLI.hpp>

#include <vector>

namespace agent {

namespace {

constexpr const char* kBegin = R"(# Completion of kestrovane-agent. In your profile:
#   kestrovane-agent completion | Out-String | Invoke-Expression
Register-ArgumentCompleter -Native -CommandName kestrovane-agent, kestrovane-agent.exe -ScriptBlock {
    param($word, $line, $cursor)
)";

constexpr const char* kEnd =
    R"ps(    $elements = $line.CommandElements | Where-Object { $_.Extent.EndOffset -lt $cursor }
    $before = @($elements | ForEach-Object { "$_" })
    $command = $before | Select-Object -Skip 1 | Where-Object { $words.ContainsKey($_) } | Select-Object -First 1
    $option = "$command $($before[-1])"
    $candidates = if ($values.ContainsKey($option)) { $values[$option] } else { $words["$command"] + $words['*'] }
    $candidates | Where-Object { $_ -like "$word*" } | ForEach-Object {
        [System.Management.Automation.CompletionResult]::new($_, $_, 'ParameterValue', $_)
    }
}
)ps";

std::string Quoted(const std::vector<std::string>& words)
{
    std::string list;
    for (const std::string& word : words) {
        list += (list.empty() ? "'" : ", '") + word + "'";
    }
    return "@(" + list + ")";
}

std::string Line(const std::string& key, const std::vector<std::string>& words)
{
    return "        '" + key + "' = " + Quoted(words) + "\n";
}

std::vector<std::string> OptionNames(const CLI::App& app)
{
    std::vector<std::string> names;
    for (const CLI::Option* option : app.get_options()) {
        for (const std::string& name : option->get_lnames()) {
            names.push_back("--" + name);
        }
    }
    return names;
}

// A set of values is shown as its type: always|if-newer|never.
std::vector<std::string> ValuesOf(const CLI::Option& option)
{
    const std::string type = option.get_type_name();
    return type.find('|') == std::string::npos ? std::vector<std::string>() : CLI::detail::split(type, '|');
}

std::string ValueLines(const CLI::App& command)
{
    std::string lines;
    for (const CLI::Option* option : command.get_options()) {
        if (const auto values = ValuesOf(*option); !values.empty()) {
            lines += Line(command.get_name() + " " + option->get_name(), values);
        }
    }
    return lines;
}

} // namespace

std::string PowerShellCompletion(const CLI::App& app)
{
    std::vector<std::string> commands;
    std::string words;
    std::string values;
    for (const CLI::App* command : app.get_subcommands({})) {
        commands.push_back(command->get_name());
        words += Line(command->get_name(), OptionNames(*command));
        values += ValueLines(*command);
    }
    return kBegin + ("    $words = @{\n" + Line("", commands)) + words + Line("*", OptionNames(app)) +
           "    }\n    $values = @{\n" + values + "    }\n" + kEnd;
}

} // namespace agent
