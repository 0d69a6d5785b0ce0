// What is registered for the next restart.

#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace agent {

struct PendingMove {
    std::wstring source;
    std::wstring target;   // empty: the source is deleted
    bool replaces = false; // an existing target is replaced

    bool IsDeletion() const { return target.empty(); }
};

// Reads Windows' two lists in the order in which they are carried out; nothing when the registry refuses, and the last
// error tells why. No list at all is an empty one.
std::optional<std::vector<PendingMove>> ReadPendingMoves();

// The entries of one list as the registry holds it: pairs of zero-terminated texts, the second of which may be empty.
std::vector<PendingMove> ParsePendingMoves(std::wstring_view list);

} // namespace agent
