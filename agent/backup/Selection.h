// Which files of a tree a backup takes.

#pragma once

#include "agent/platform/Patterns.h"

#include <string>
#include <vector>

namespace agent {

struct Selection {
    std::vector<std::wstring> filters;  // patterns of file names; empty: all
    std::vector<std::wstring> excludes; // patterns of file and directory names

    [[nodiscard]] bool IsPartial() const { return !filters.empty() || !excludes.empty(); }

    [[nodiscard]] bool TakesFile(std::wstring_view name) const
    {
        return (filters.empty() || MatchesAny(name, filters)) && !MatchesAny(name, excludes);
    }

    // Whether a directory is entered.
    [[nodiscard]] bool TakesDirectory(std::wstring_view name) const { return !MatchesAny(name, excludes); }
};

} // namespace agent
