// Mapping of restore paths to their alternate locations.

#include "restore/FileDesc.h"

#include "frame/ModuleState.h"
#include "win32/Bstr.h"

#include <algorithm>
#include <cstddef>
#include <new>
#include <string_view>

namespace {

// How a function reads the path of a mapping.
enum class MappingPath { kAsWritten, kWithoutTrailingBackslash };

const char* TrueOrFalse(bool value)
{
    return value ? "true" : "false";
}

// The two conditions inform the reader of the log; they change nothing.
void LogMatch(FileDesc& query, FileDesc& mapping, std::size_t mappingLength, std::size_t inputLength)
{
    g_pfnLogger(kProgressLevel, "<query>   '%S', Spec = '%S',Recursive='%s'\n ", query.Path(), query.Spec(),
                TrueOrFalse(query.IsRecursive()));
    g_pfnLogger(kProgressLevel, "<mapping> '%S', Spec = '%S',Recursive='%s'\n ", mapping.Path(), mapping.Spec(),
                TrueOrFalse(mapping.IsRecursive()));
    if (mapping.IsRecursive() || inputLength == mappingLength) {
        g_pfnLogger(kProgressLevel, "Condition 1\n");
    }
    if (mappingLength <= inputLength) {
        g_pfnLogger(kProgressLevel, "Condition 2\n");
    }
}

// The host expects one exception of the mapping functions, whichever string could not be allocated.
void AssignOrThrow(std::wstring& target, std::wstring_view string)
{
    try {
        target.assign(string);
    } catch (const std::bad_alloc&) {
        throw CAtlException(E_OUTOFMEMORY);
    }
}

// Returns the alternate location followed by the input after the mapped length; nothing follows if the input is
// shorter.
CComBSTR Relocate(const CComBSTR& input, std::size_t mappedLength, const std::wstring& alternateLocation)
{
    CComBSTR relocated(alternateLocation.c_str());
    const std::size_t mapped = std::min<std::size_t>(mappedLength, input.Length());
    AppendOrThrow(relocated, input.m_str + mapped, input.Length() - mapped);
    return relocated;
}

// The first mapping that covers the file is used, even if a later one is more specific.
class Mapper {
public:
    Mapper(const std::wstring& path, MappingPath reading, bool logs)
        : m_input(path.c_str()), m_reading(reading), m_logs(logs)
    {
    }

    bool Map(std::wstring& path, const std::wstring& spec, const std::vector<VSS_ALTERNATE_MAPPING>& mappings)
    {
        if (mappings.empty()) {
            return false;
        }
        FileDesc query(m_input.m_str, spec.c_str(), false);
        return std::any_of(mappings.begin(), mappings.end(),
                           [&](const VSS_ALTERNATE_MAPPING& mapping) { return Apply(mapping, query, path); });
    }

private:
    bool Apply(const VSS_ALTERNATE_MAPPING& mapping, FileDesc& query, std::wstring& path)
    {
        const std::wstring& mappingPath = Read(mapping.path);
        FileDesc files(mappingPath.c_str(), mapping.fileSpec.c_str(), mapping.recursive);
        if (!files.Overlaps(query)) {
            return false;
        }
        if (m_logs) {
            LogMatch(query, files, mappingPath.size(), m_input.Length());
        }
        const CComBSTR relocated = Relocate(m_input, mappingPath.size(), mapping.alternateLocation);
        AssignOrThrow(path, {relocated.m_str, relocated.Length()});
        return true;
    }

    const std::wstring& Read(const std::wstring& mappingPath)
    {
        if (m_reading == MappingPath::kAsWritten || !mappingPath.ends_with(L'\\')) {
            return mappingPath;
        }
        AssignOrThrow(m_shortened, std::wstring_view(mappingPath).substr(0, mappingPath.size() - 1));
        return m_shortened;
    }

    CComBSTR m_input;
    MappingPath m_reading;
    bool m_logs;
    std::wstring m_shortened; // a buffer for all mappings
};

} // namespace

bool MapRestorePath(std::wstring& path, std::wstring& spec, std::vector<VSS_ALTERNATE_MAPPING>& mappings)
{
    return Mapper(path, MappingPath::kAsWritten, true).Map(path, spec, mappings);
}

bool MapRestorePath1(std::wstring& path, std::wstring& spec, std::vector<VSS_ALTERNATE_MAPPING>& mappings)
{
    return Mapper(path, MappingPath::kWithoutTrailingBackslash, false).Map(path, spec, mappings);
}
