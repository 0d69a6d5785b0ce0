// Security descriptors as strings (SDDL).

#pragma once

#include <optional>
#include <string>

namespace agent {

// Owner, group and DACL of a file or directory; nothing when they cannot be read. The last error tells why.
std::optional<std::wstring> ReadSecurity(const std::wstring& path);

// Sets what the string holds, as far as the process has the rights: where the owner cannot be set, the DACL is set
// alone.
// @return a reason for what could not be set.
std::optional<std::wstring> WriteSecurity(const std::wstring& path, const std::wstring& security);

} // namespace agent
