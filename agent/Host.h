// The agent's side of the library: its log function and its keep-alive function.

#pragma once

namespace agent {

// Registers both. The library's log goes to standard error with `verbose`, and nowhere without.
void RegisterHost(bool verbose);

} // namespace agent
