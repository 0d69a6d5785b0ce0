// Completion of the command line by shells.

#pragma once

#include <string>

namespace CLI {
class App;
}

namespace agent {

// A script for PowerShell that completes the names of commands and options, and the values of options that have a set
// of them. It is generated from the command line itself.
std::string PowerShellCompletion(const CLI::App& app);

} // namespace agent
