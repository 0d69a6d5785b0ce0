// The seal of a manifest: its last value is the digest of everything before it, so that damage to the manifest itself is
// found, too. A damaged time or name would otherwise look like any other.

#pragma once

#include <string>

namespace agent {

// Adds the seal to a JSON object that ends with "\n}". Without a working hash service the manifest stays unsealed.
std::string Sealed(const std::string& json);

// Whether the content is what Sealed has returned for it.
bool IsSealIntact(const std::string& content);

} // namespace agent
