// Help as a terminal of 80 columns shows it.

#pragma once

#include <string>

namespace agent {

// Breaks the lines that are too long between words; what continues an option's description is indented like it.
std::string FitToTerminal(const std::string& help);

} // namespace agent
