// The arguments and options of one command.

#include "agent/console/CommandOptions.h"

#include "agent/platform/Encoding.h"

#include <CLI/CLI.hpp>

#include <algorithm>

namespace agent {

namespace {

// The parser itself handles UTF-8.
CLI::Option* AddString(CLI::App& app, const std::string& name, std::wstring& value, const std::string& help)
{
    return app.add_option_function<std::string>(
        name,
        [name, &value](const std::string& string) {
            if (string.empty()) {
                throw CLI::ValidationError(name, "must not be empty");
            }
            value = Wide(string);
        },
        help);
}

CLI::Option* AddEach(CLI::App& app, const std::string& name, const std::string& help,
                     const std::function<std::wstring(const std::wstring&)>& take)
{
    return app
        .add_option_function<std::vector<std::string>>(
            name,
            [name, take](const std::vector<std::string>& strings) {
                for (const std::string& string : strings) {
                    const std::wstring reason = string.empty() ? L"must not be empty" : take(Wide(string));
                    if (!reason.empty()) {
                        throw CLI::ValidationError(name, Utf8(reason));
                    }
                }
            },
            help)
        ->allow_extra_args(false);
}

std::wstring WhyPatternIsWrong(const std::wstring& pattern)
{
    return pattern.find_first_of(L"\\/:") == std::wstring::npos ? L"" : L"takes names with * and ?, not paths";
}

} // namespace

void CommandOptions::Required(const std::string& name, std::wstring& value, const std::string& help)
{
    AddString(m_app, name, value, help)->required();
}

void CommandOptions::Optional(const std::string& name, std::wstring& value, const std::string& help)
{
    AddString(m_app, name, value, help);
}

void CommandOptions::Example(const std::string& line)
{
    const std::string before = m_app.get_footer().empty() ? "Examples:" : m_app.get_footer();
    m_app.footer(before + "\n  " + line);
}

void CommandOptions::Flag(const std::string& name, bool& value, const std::string& help)
{
    m_app.add_flag(name, value, help);
}

void CommandOptions::Number(const std::string& name, int& value, int smallest, const std::string& help)
{
    constexpr int kLargest = 1000000;
    m_app.add_option(name, value, help)->check(CLI::Range(smallest, kLargest).description(""))->type_name("N");
}

void CommandOptions::String(const std::string& name, std::wstring& value, const std::string& type,
                            const std::string& help)
{
    AddString(m_app, name, value, help)->type_name(type);
}

void CommandOptions::Strings(const std::string& name, std::vector<std::wstring>& values, const std::string& type,
                             const std::string& help)
{
    AddEach(m_app, name, help,
            [&values](const std::wstring& value) {
                values.push_back(value);
                return std::wstring();
            })
        ->take_all()
        ->type_name(type);
}

void CommandOptions::Pattern(const std::string& name, std::wstring& value, const std::string& help)
{
    AddEach(m_app, name, help,
            [&value](const std::wstring& pattern) {
                value = pattern;
                return WhyPatternIsWrong(pattern);
            })
        ->expected(1)
        ->type_name("PATTERN");
}

void CommandOptions::Patterns(const std::string& name, std::vector<std::wstring>& values, const std::string& help)
{
    AddEach(m_app, name, help,
            [&values](const std::wstring& pattern) {
                values.push_back(pattern);
                return WhyPatternIsWrong(pattern);
            })
        ->take_all()
        ->type_name("PATTERN");
}

void CommandOptions::InOrder(const std::string& name, const std::string& type, const std::string& help,
                             const std::function<std::wstring(const std::wstring&)>& take)
{
    AddEach(m_app, name, help, take)->trigger_on_parse()->type_name(type);
}

void CommandOptions::FlagInOrder(const std::string& name, const std::string& help, std::function<std::wstring()> take)
{
    m_app
        .add_flag_callback(
            name,
            [name, take = std::move(take)] {
                if (const std::wstring reason = take(); !reason.empty()) {
                    throw CLI::ValidationError(name, Utf8(reason));
                }
            },
            help)
        ->trigger_on_parse();
}

void CommandOptions::AddChoice(const std::string& name, const std::vector<std::string>& names,
                               const std::string& standard, const std::string& help,
                               std::function<void(std::size_t)> take)
{
    std::string list;
    for (const std::string& value : names) {
        list += (list.empty() ? "" : "|") + value;
    }
    m_app
        .add_option_function<std::string>(
            name,
            [names, take = std::move(take)](const std::string& value) {
                take(static_cast<std::size_t>(std::find(names.begin(), names.end(), value) - names.begin()));
            },
            help + " (default: " + standard + ")")
        ->check(CLI::IsMember(names).description(""))
        ->type_name(list);
}

} // namespace agent
