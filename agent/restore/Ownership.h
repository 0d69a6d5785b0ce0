// Giving files and trees their owner.

#pragma once

#include "agent/console/Report.h"

#include <optional>
#include <string>

namespace agent {

// Makes `account` the owner of a file, or of a directory and everything below it, with full access. Failures below are
// taken from the library's log, because its result speaks of the object itself alone. Rows of the report: "owned",
// "ownerFailed".
void GiveOwner(const std::wstring& path, const std::wstring& account, Report& report);

// Why an account cannot become an owner; nothing when Windows can look it up.
std::optional<std::wstring> WhyAccountIsUnknown(const std::wstring& account);

} // namespace agent
