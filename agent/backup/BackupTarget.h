// The directory that holds the versions of a backup.

#pragma once

#include "agent/console/Report.h"

#include <optional>
#include <string>

namespace agent {

// Why no version may be written into a target: it holds something else than versions. A missing directory is fine.
std::optional<std::wstring> WhyTargetIsRejected(const std::wstring& target);

// Removes the oldest complete versions until `keep` of them are left, which is at least one. Incomplete versions stay.
// Rows of the report: "removedVersions".
void RemoveOldVersions(const std::wstring& target, std::size_t keep, Report& report);

} // namespace agent
