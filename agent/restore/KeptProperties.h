// What a file keeps when its content is replaced: its security descriptor and its named streams.

#pragma once

#include <optional>
#include <string>

namespace agent {

// Gives `fresh` what `target` has. @return a reason when its DACL or a stream could not be kept; owner and group are
// kept where the rights allow it.
std::optional<std::wstring> KeepProperties(const std::wstring& target, const std::wstring& fresh);

} // namespace agent
