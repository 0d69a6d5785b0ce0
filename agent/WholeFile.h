// Small files that are read and written as a whole.

#pragma once

#include <optional>
#include <string>

namespace agent {

// Replaces the file. On failure the last error tells why.
bool WriteWholeFile(const std::wstring& path, const std::string& text);

// Nothing when the file cannot be read or is far too large for one of the agent's own; the last error tells.
std::optional<std::string> ReadWholeFile(const std::wstring& path);

} // namespace agent
