// Named streams.

#pragma once

#include <string>
#include <vector>

namespace agent {

// The names of the named streams of a file or directory, as Windows writes them (":name:$DATA"). Empty where the file
// system has none.
std::vector<std::wstring> ListNamedStreams(const std::wstring& path);

} // namespace agent
