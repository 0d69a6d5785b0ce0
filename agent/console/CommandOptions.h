// The arguments and options of one command.

#pragma once

#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

namespace CLI {
class App;
}

namespace agent {

class CommandOptions {
public:
    explicit CommandOptions(CLI::App& app) : m_app(app) {}

    // An argument without a name in front; an empty one is wrong usage.
    void Required(const std::string& name, std::wstring& value, const std::string& help);
    void Optional(const std::string& name, std::wstring& value, const std::string& help);

    // A command line that the help shows as an example, after those before it.
    void Example(const std::string& line);

    void Flag(const std::string& name, bool& value, const std::string& help);
    void Number(const std::string& name, int& value, int smallest, const std::string& help);

    // An option with a string; an empty one is wrong usage.
    void String(const std::string& name, std::wstring& value, const std::string& type, const std::string& help);

    // The same for an option that may be repeated.
    void Strings(const std::string& name, std::vector<std::wstring>& values, const std::string& type,
                 const std::string& help);

    // File patterns: strings that are no paths.
    void Pattern(const std::string& name, std::wstring& value, const std::string& help);
    void Patterns(const std::string& name, std::vector<std::wstring>& values, const std::string& help);

    // An option that may be repeated, and mixed with others of its kind: `take` is called for each in the order of the
    // command line. It returns why a value is wrong usage, or an empty string.
    void InOrder(const std::string& name, const std::string& type, const std::string& help,
                 const std::function<std::wstring(const std::wstring& value)>& take);
    void FlagInOrder(const std::string& name, const std::string& help, std::function<std::wstring()> take);

    // An option with a set of values, which the help shows with the default.
    template <typename Value>
    void Choice(const std::string& name, Value& value, const std::vector<std::pair<std::string, Value>>& values,
                const std::string& help)
    {
        std::vector<std::string> names;
        std::string standard;
        for (const auto& [spelling, meaning] : values) {
            names.push_back(spelling);
            if (meaning == value) {
                standard = spelling;
            }
        }
        AddChoice(name, names, standard, help, [&value, values](std::size_t index) { value = values[index].second; });
    }

private:
    void AddChoice(const std::string& name, const std::vector<std::string>& names, const std::string& standard,
                   const std::string& help, std::function<void(std::size_t index)> take);

    CLI::App& m_app;
};

} // namespace agent
