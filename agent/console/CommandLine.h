// From the command line to a command's function.

#pragma once

#include <string>
#include <vector>

namespace agent {

// Runs the command that the arguments (without the program's name) ask for. @return the exit code.
int RunCommandLine(const std::vector<std::wstring>& arguments);

} // namespace agent
