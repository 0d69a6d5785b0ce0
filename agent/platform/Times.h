// Times as strings.

#pragma once

#include "agent/platform/FileInformation.h"

#include <string>

namespace agent {

FileTime Now();

// UTC, to the second: 2026-11-21T15:04:05Z. Empty for a time that is not known (0).
std::wstring FormatUtc(FileTime time);

} // namespace agent
