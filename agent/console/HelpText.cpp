// Help as a terminal of 80 columns shows it.

#include "agent/console/HelpText.h"

#include <sstream>

namespace agent {

namespace {

constexpr std::size_t kColumns = 80;
constexpr std::size_t kDescriptionColumn = 30; // where the parser begins descriptions

std::size_t IndentOf(const std::string& line)
{
    return line.starts_with("  ") ? kDescriptionColumn : 0;
}

} // namespace

std::string FitToTerminal(const std::string& help)
{
    std::istringstream lines(help);
    std::string fitting;
    for (std::string line; std::getline(lines, line);) {
        const std::string indent(IndentOf(line), ' ');
        while (line.size() > kColumns) {
            const auto blank = line.rfind(' ', kColumns);
            if (blank == std::string::npos || blank <= indent.size()) {
                break; // one long word
            }
            fitting.append(line, 0, line.find_last_not_of(' ', blank) + 1).append(1, '\n');
            line.replace(0, blank + 1, indent);
        }
        fitting.append(line).append(1, '\n');
    }
    return fitting;
}

} // namespace agent
