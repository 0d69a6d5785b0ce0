// Where the files and directories of a backup go, and the directory that none of them may leave.

#pragma once

#include "agent/restore/RestoreOptions.h"

#include <optional>
#include <string>
#include <vector>

namespace agent {

struct Destination {
    std::wstring path;      // absolute
    std::wstring directory; // that the path is in
    std::wstring bound;     // the directory that the path lies below
    bool mapped = false;
};

class Placement {
public:
    // `original` is the directory that was backed up. `options` must outlive this.
    Placement(const RestoreOptions& options, std::wstring original);

    // Where a file or a directory goes; nothing when it is left out because no mapping covers it. Names are relative to
    // the original directory.
    std::optional<Destination> PlaceFile(const std::wstring& name);
    std::optional<Destination> PlaceDirectory(const std::wstring& name);

    // Whether a mapping covers the file, even if an earlier mapping decides where it goes.
    bool Covers(std::size_t mapping, const std::wstring& name);

private:
    [[nodiscard]] std::optional<Destination> At(const Place& place, const std::wstring& path) const;

    const RestoreOptions& m_options;
    std::wstring m_original;
    std::wstring m_to; // absolute; empty: in place, or where the mappings say
    Mapper m_mapper;
};

// Whether a path is normalised and lies below the directory that confines it.
bool IsConfined(const std::wstring& path, const std::wstring& bound);

// The junction or symbolic link on the way from `bound` down to `directory`, either of which may be missing; empty when
// there is none. `bound` itself may be one.
std::wstring LinkOnTheWay(const std::wstring& directory, const std::wstring& bound);

} // namespace agent
