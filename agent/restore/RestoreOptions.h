// What the user asked of a restore.

#pragma once

#include "agent/restore/Mappings.h"

#include <string>
#include <vector>

namespace agent {

enum class Overwrite { kAlways, kIfNewer, kNever };

// What becomes of the files that no mapping covers.
enum class Unmapped { kLeaveOut, kInPlace };

struct RestoreOptions {
    std::wstring backup;
    std::wstring at; // the name of a version; empty: the newest complete one
    std::wstring to; // everything goes below this directory; empty: in place, or where the mappings say
    Mappings mappings;
    Unmapped unmapped = Unmapped::kLeaveOut;
    std::vector<std::wstring> only; // file patterns; empty: all files
    Overwrite overwrite = Overwrite::kAlways;
    bool dryRun = false;
    bool temporaryCache = false; // cache files in the temporary directory instead of beside the files in use
    bool security = false;       // security descriptors, too
    std::wstring owner;          // empty: owners stay
};

} // namespace agent
