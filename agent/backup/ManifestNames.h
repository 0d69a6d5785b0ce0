// Which names and paths of a manifest can be trusted.

#pragma once

#include <optional>
#include <string>

namespace agent {

// Why a name relative to the original directory is rejected; nothing for an ordinary name. Names that leave their
// directory (a ".." component, a drive, a stream), and those that Windows takes for something else, are rejected.
std::optional<std::wstring> WhyNameIsInvalid(const std::wstring& name);

// Why a path cannot be an original directory; nothing for an absolute, normalised path on a drive or a share.
std::optional<std::wstring> WhyOriginalIsInvalid(const std::wstring& path);

} // namespace agent
