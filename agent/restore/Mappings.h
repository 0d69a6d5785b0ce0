// Alternate locations: the --map options, and where they send a file.

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
std::optional<VSS_ALTERNATE_MAPPING> ParseMapping(const std::wstring& text);

struct Place {
    std::wstring directory; // without a trailing backslash, except that of a root
    bool mapped = false;
};

// Where the file `name` of `directory` goes: to the alternate location of the first mapping that covers it, or to its own.
Place FindPlace(const std::wstring& directory, const std::wstring& name, Mappings& mappings);

// Where a directory itself goes, as far as a mapping covers all files in it.
Place FindPlaceOfDirectory(const std::wstring& directory, Mappings& mappings);

} // namespace agent
