// Mapping of restore paths to their alternate locations.

#include "restore/FileDesc.h"

#include "frame/ModuleState.h"

#include <algorithm>
#include <new>

namespace {

// How a function reads the path of a mapping.
enum class MappingPath { kAsWritten, kWithoutTrailingBackslash };

// The files that a mapping covers, and how much of their paths its alternate location replaces.
struct Coverage {
    FileDesc files;
    std::size_t length; // characters
};

Coverage CoverageOf(const VSS_ALTERNATE_MAPPING& mapping, MappingPath reading)
{
    const std::wstring& path = mapping.path;
    if (reading == MappingPath::kWithoutTrailingBackslash && path.ends_with(L'\\')) {
        const std::size_t length = path.size() - 1;
        const CComBSTR trimmed(static_cast<int>(length), path.c_str());
        return {FileDesc(trimmed.m_str, mapping.fileSpec.c_str(), mapping.recursive), length};
    }
    return {FileDesc(path.c_str(), mapping.fileSpec.c_str(), mapping.recursive), path.size()};
}

const char* TrueOrFalse(bool value)
{
    return value ? "true" : "false";
}

// The two conditions are for the reader of the log; they change nothing.
void LogMatch(const FileDesc& query, const Coverage& coverage, std::size_t inputLength)
{
    const FileDesc& mapping = coverage.files;
    g_pfnLogger(kProgressLevel, "<query>   '%S', Spec = '%S',Recursive='%s'\n ", query.Path(), query.Spec(),
                TrueOrFalse(query.IsRecursive()));
    g_pfnLogger(kProgressLevel, "<mapping> '%S', Spec = '%S',Recursive='%s'\n ", mapping.Path(), mapping.Spec(),
                TrueOrFalse(mapping.IsRecursive()));
    if (mapping.IsRecursive() || inputLength == coverage.length) {
        g_pfnLogger(kProgressLevel, "Condition 1\n");
    }
    if (coverage.length <= inputLength) {
        g_pfnLogger(kProgressLevel, "Condition 2\n");
    }
}

// The alternate location followed by what the input has after the covered length; nothing where it is shorter.
CComBSTR Relocate(const CComBSTR& input, std::size_t coveredLength, const std::wstring& alternateLocation)
{
    CComBSTR relocated(alternateLocation.c_str());
    const auto covered = static_cast<unsigned int>(std::min<std::size_t>(coveredLength, input.Length()));
    const HRESULT appended = relocated.Append(input.m_str + covered, static_cast<int>(input.Length() - covered));
    if (FAILED(appended)) {
        throw CAtlException(appended);
    }
    return relocated;
}

// The host knows one exception of the mapping functions, whichever string could not be allocated.
void AssignText(std::wstring& target, const CComBSTR& text)
{
    try {
        target.assign(text.m_str == nullptr ? L"" : text.m_str);
    } catch (const std::bad_alloc&) {
        throw CAtlException(E_OUTOFMEMORY);
    }
}

// The first mapping that covers the file decides, even if a later one fits it better.
bool MapPath(std::wstring& path, const std::wstring& spec, const std::vector<VSS_ALTERNATE_MAPPING>& mappings,
             MappingPath reading, bool logs)
{
    const CComBSTR input(path.c_str());
    if (mappings.empty()) {
        return false;
    }
    const FileDesc query(input.m_str, spec.c_str(), false);
    for (const VSS_ALTERNATE_MAPPING& mapping : mappings) {
        const Coverage coverage = CoverageOf(mapping, reading);
        if (!coverage.files.Overlaps(query)) {
            continue;
        }
        if (logs) {
            LogMatch(query, coverage, input.Length());
        }
        AssignText(path, Relocate(input, coverage.length, mapping.alternateLocation));
        return true;
    }
    return false;
}

} // namespace

bool MapRestorePath(std::wstring& path, std::wstring& spec, std::vector<VSS_ALTERNATE_MAPPING>& mappings)
{
    return MapPath(path, spec, mappings, MappingPath::kAsWritten, true);
}

bool MapRestorePath1(std::wstring& path, std::wstring& spec, std::vector<VSS_ALTERNATE_MAPPING>& mappings)
{
    return MapPath(path, spec, mappings, MappingPath::kWithoutTrailingBackslash, false);
}
