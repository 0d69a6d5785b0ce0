// What is registered for the next reboot.

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

    [[nodiscard]] bool IsDeletion() const { return target.empty(); }

    bool operator==(const PendingMove&) const = default;
};

// Reads Windows' two lists in the order in which they are carried out; nothing when the registry cannot be read, and
// the last error tells why. No list at all is an empty one.
std::optional<std::vector<PendingMove>> ReadPendingMoves();

// The entries of one list as the registry holds it: pairs of zero-terminated strings, the second of which may be empty.
std::vector<PendingMove> ParsePendingMoves(std::wstring_view list);

// Whether this agent has registered a move: by the name of the cache file.
bool IsOwn(const PendingMove& move);

// Removes registrations of this agent and deletes their cache files; all other entries stay as they are. @return a
// reason when the registry cannot be written.
std::optional<std::wstring> TakeBack(const std::vector<PendingMove>& moves);

} // namespace agent
