// Small files that are read and written as a whole.

#pragma once

#include <optional>
#include <string>

namespace agent {

// What the name of a file has while it is being written.
constexpr const wchar_t* kFreshSuffix = L".new";

// Replaces the file in one step: the content is written beside it, flushed and renamed, so that a process that is
// killed leaves the old file or the new one. On failure the last error tells why.
bool WriteWholeFile(const std::wstring& path, const std::string& content);

// Nothing when the file cannot be read or is far too large for one of the agent's own; the last error tells.
std::optional<std::string> ReadWholeFile(const std::wstring& path);

} // namespace agent
