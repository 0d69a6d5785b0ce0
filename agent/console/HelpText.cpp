// Help as a terminal of 80 columns shows it.

#include "agent/console/HelpText.h"

#include <sstream>

namespace agent {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kDescriptionColumn = 30; // where the parser begins descriptions

std::string IndentOf(const std::string& line)
{
    return std::string(line.starts_with("  ") ? kDescriptionColumn : 0, ' ');
}

} // namespace

std::string FitToTerminal(const std::string& help)
{
    std::istringstream lines(help);
    std::string fitting;
    for (std::string line; std::getline(lines, line);) {
        const std::string indent = IndentOf(line);
        while (line.size() > kColumns) {
            const auto blank = line.rfind(' ', kColumns);
            if (blank == std::string::npos || blank <= indent.size()) {
                break; // one long word
            }
            fitting += line.substr(0, line.find_last_not_of(' ', blank) + 1) + '\n';
            line = indent + line.substr(blank + 1);
        }
        fitting += line + '\n';
    }
    return fitting;
}

} // namespace agent
