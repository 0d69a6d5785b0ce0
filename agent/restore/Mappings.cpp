// Alternate locations.

#include "agent/restore/Mappings.h"

#include "agent/console/CommandOptions.h"
#include "agent/platform/IgnoringCase.h"

namespace agent {

namespace {

std::wstring WithoutTrailingBackslash(std::wstring path)
{
    while (path.ends_with(L'\\')) {
        path.pop_back();
    }
    return path;
}

} // namespace

void AddMappings(CommandOptions& options, Mappings& mappings)
{
    options.InOrder("--map", "FROM=TO[;SPEC[;recursive]]", "Alternate location; the first that covers a file decides",
                    [&mappings](const std::wstring& value) -> std::wstring {
                        const auto mapping = ParseMapping(value);
                        if (!mapping) {
                            return value + L" is not FROM=TO[;SPEC[;recursive]]";
                        }
                        mappings.push_back(*mapping);
                        return {};
                    });
}

std::optional<VSS_ALTERNATE_MAPPING> ParseMapping(const std::wstring& text)
{
    const auto equals = text.find(L'=');
    if (equals == std::wstring::npos) {
        return std::nullopt;
    }
    VSS_ALTERNATE_MAPPING mapping{text.substr(0, equals), text.substr(equals + 1), L"*", false};
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
        mapping.fileSpec = L"*";
    }
    if (mapping.path.empty() || mapping.alternateLocation.empty()) {
        return std::nullopt;
    }
    return mapping;
}

Place FindPlace(const std::wstring& directory, const std::wstring& name, Mappings& mappings)
{
    // The library adds no backslash between the alternate location and the rest, and takes none out: the rest brings its
    // own where nothing stands at the end of either.
    Mappings plain = mappings;
    for (VSS_ALTERNATE_MAPPING& mapping : plain) {
        mapping.alternateLocation = WithoutTrailingBackslash(mapping.alternateLocation);
    }
    Place place{WithoutTrailingBackslash(directory), false};
    std::wstring spec = name;
    place.mapped = MapRestorePath1(place.directory, spec, plain);
    if (place.directory.ends_with(L':')) {
        place.directory += L'\\';
    }
    return place;
}

Place FindPlaceOfDirectory(const std::wstring& directory, Mappings& mappings)
{
    // No file has such a name, so nothing but a specification for all files covers it.
    return FindPlace(directory, L"\x01.\x01", mappings);
}

} // namespace agent
