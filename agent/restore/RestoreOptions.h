// What the user asked of a restore.

#pragma once

#include "agent/restore/Mappings.h"

#include <string>

namespace agent {

enum class Overwrite { kAlways, kIfNewer, kNever };

struct RestoreOptions {
    std::wstring backup;
    Mappings mappings;
    Overwrite overwrite = Overwrite::kAlways;
    bool dryRun = false;
    bool temporaryCache = false; // cache files in the temporary directory instead of beside the files in use
    bool protectLive = false;    // copies of the live files until the restore is through
    std::wstring owner;          // empty: owners stay
};

} // namespace agent
