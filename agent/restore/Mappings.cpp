// Alternate locations: the options of mappings, and where they send a file.

#include "agent/restore/Mappings.h"

#include "agent/console/CommandOptions.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"

#include <algorithm>
#include <memory>

namespace agent {

namespace {

constexpr const wchar_t* kAllFiles = L"*";

std::wstring WithoutTrailingBackslash(std::wstring path)
{
    while (path.ends_with(L'\\')) {
        path.pop_back();
    }
    return path;
}

// Collects mappings in the order of the command line. --map-from begins a group; --map-to, --map-spec and
// --map-recursive belong to the group before them.
class MappingGroups {
public:
    explicit MappingGroups(Mappings& mappings) : m_mappings(mappings) {}

    std::wstring TakeShortForm(const std::wstring& value)
    {
        const auto mapping = ParseMapping(value);
        if (!mapping) {
            return value + L" is not FROM=TO[;SPEC[;recursive]]";
        }
        m_mappings.push_back(*mapping);
        m_inGroup = false;
        return {};
    }

    std::wstring TakeFrom(const std::wstring& value)
    {
        m_mappings.push_back({value, L"", kAllFiles, false});
        m_inGroup = true;
        return {};
    }

    // Sets one member of the mapping that the last --map-from began.
    template <typename Value>
    std::wstring Take(Value VSS_ALTERNATE_MAPPING::*member, const Value& value)
    {
        if (!m_inGroup) {
            return L"comes after the --map-from that it belongs to";
        }
        m_mappings.back().*member = value;
        return {};
    }

private:
    Mappings& m_mappings;
    bool m_inGroup = false;
};

} // namespace

void AddMappings(CommandOptions& options, Mappings& mappings)
{
    const auto groups = std::make_shared<MappingGroups>(mappings);
    options.InOrder("--map", "FROM=TO[;SPEC[;recursive]]", "Alternate location; the first that covers a file decides",
                    [groups](const std::wstring& value) { return groups->TakeShortForm(value); });
    options.InOrder("--map-from", "FROM", "The same for paths with any character: begins a mapping of this directory",
                    [groups](const std::wstring& value) { return groups->TakeFrom(value); });
    options.InOrder("--map-to", "TO", "The directory that takes its place", [groups](const std::wstring& value) {
        return groups->Take(&VSS_ALTERNATE_MAPPING::alternateLocation, value);
    });
    options.InOrder("--map-spec", "PATTERN", "Which files (default: all)", [groups](const std::wstring& value) {
        return groups->Take(&VSS_ALTERNATE_MAPPING::fileSpec, value);
    });
    options.FlagInOrder("--map-recursive", "Also the files of all directories below",
                        [groups] { return groups->Take(&VSS_ALTERNATE_MAPPING::recursive, true); });
}

std::optional<VSS_ALTERNATE_MAPPING> ParseMapping(const std::wstring& string)
{
    const auto equals = string.find(L'=');
    if (equals == std::wstring::npos) {
        return std::nullopt;
    }
    VSS_ALTERNATE_MAPPING mapping{string.substr(0, equals), string.substr(equals + 1), kAllFiles, false};
    if (const auto end = mapping.alternateLocation.find(L';'); end != std::wstring::npos) {
        mapping.fileSpec = mapping.alternateLocation.substr(end + 1);
        mapping.alternateLocation.resize(end);
    }
    if (const auto end = mapping.fileSpec.find(L';'); end != std::wstring::npos) {
        if (!EqualIgnoringCase(mapping.fileSpec.substr(end + 1), L"recursive")) {
            return std::nullopt;
        }
        mapping.fileSpec.resize(end);
        mapping.recursive = true;
    }
    if (mapping.fileSpec.empty()) {
        mapping.fileSpec = kAllFiles;
    }
    if (mapping.path.empty() || mapping.alternateLocation.empty()) {
        return std::nullopt;
    }
    return mapping;
}

std::optional<std::wstring> WhyMappingsAreIncomplete(const Mappings& mappings)
{
    const auto incomplete = std::find_if(mappings.begin(), mappings.end(),
                                         [](const auto& mapping) { return mapping.alternateLocation.empty(); });
    if (incomplete == mappings.end()) {
        return std::nullopt;
    }
    return L"--map-from " + incomplete->path + L" has no --map-to";
}

// The library adds no backslash between the alternate location and the rest, and removes none: the rest begins with its
// own where neither ends with one.
Mapper::Mapper(const Mappings& mappings)
{
    for (VSS_ALTERNATE_MAPPING mapping : mappings) {
        m_locations.push_back(Absolute(mapping.alternateLocation));
        mapping.alternateLocation = WithoutTrailingBackslash(m_locations.back());
        m_single.push_back({mapping});
    }
}

Place Mapper::Find(const std::wstring& directory, const std::wstring& name)
{
    Place place{WithoutTrailingBackslash(directory)};
    std::wstring spec = name;
    for (std::size_t i = 0; i < m_single.size() && !place.mapped; ++i) {
        place.mapped = MapRestorePath1(place.directory, spec, m_single[i]);
        place.mapping = i;
    }
    if (place.directory.ends_with(L':')) {
        place.directory += L'\\';
    }
    return place;
}

Place Mapper::FindDirectory(const std::wstring& directory)
{
    // No file has such a name, so nothing but a pattern for all files covers it.
    return Find(directory, L"\x01.\x01");
}

bool Mapper::Covers(std::size_t mapping, const std::wstring& directory, const std::wstring& name)
{
    std::wstring path = WithoutTrailingBackslash(directory);
    std::wstring spec = name;
    return MapRestorePath1(path, spec, m_single[mapping]);
}

Place FindPlace(const std::wstring& directory, const std::wstring& name, const Mappings& mappings)
{
    return Mapper(mappings).Find(directory, name);
}

} // namespace agent
