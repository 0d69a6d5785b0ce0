// Alternate locations: the options of mappings, and where they send a file.

#pragma once

#include <Kestrovane.h>

#include <optional>
#include <string>
#include <vector>

namespace agent {

class CommandOptions;

using Mappings = std::vector<VSS_ALTERNATE_MAPPING>;

// Adds the options of mappings to a command.
void AddMappings(CommandOptions& options, Mappings& mappings);

// Reads FROM=TO[;SPEC[;recursive]]; nothing when it is not of that form.
std::optional<VSS_ALTERNATE_MAPPING> ParseMapping(const std::wstring& string);

// Why the options do not form whole mappings; nothing when each has FROM and TO.
std::optional<std::wstring> WhyMappingsAreIncomplete(const Mappings& mappings);

struct Place {
    std::wstring directory; // without a trailing backslash, except that of a root
    bool mapped = false;
    std::size_t mapping = 0; // the number of the mapping that decided
};

// Mappings in the form that sends many files to their places: with absolute alternate locations.
class Mapper {
public:
    explicit Mapper(const Mappings& mappings);

    // Where the file `name` of `directory` goes: to the alternate location of the first mapping that covers it, or to
    // its own.
    Place Find(const std::wstring& directory, const std::wstring& name);

    // Where a directory itself goes, as far as a mapping covers all files in it.
    Place FindDirectory(const std::wstring& directory);

    bool Covers(std::size_t mapping, const std::wstring& directory, const std::wstring& name);

    // The directory that a mapping must not leave.
    [[nodiscard]] const std::wstring& AlternateLocation(std::size_t mapping) const { return m_locations[mapping]; }

private:
    std::vector<Mappings> m_single; // each mapping in a list of its own
    std::vector<std::wstring> m_locations;
};

// Mapper::Find for one file.
Place FindPlace(const std::wstring& directory, const std::wstring& name, const Mappings& mappings);

} // namespace agent
