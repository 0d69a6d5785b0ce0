// Plain statements of the rules of file patterns and restore mappings.

#include "tests/sweeps/MappingModel.h"

#include <algorithm>
#include <cwctype>

namespace {

std::wstring Bare(std::wstring directory)
{
    if (directory.ends_with(L'\\')) {
        directory.pop_back();
    }
    return WString2UpperCase(directory);
}

bool Covers(const VSS_ALTERNATE_MAPPING& mapping, const std::wstring& path, const std::wstring& spec)
{
    const std::wstring top = Bare(mapping.path);
    const std::wstring directory = Bare(path);
    const bool isBelow = mapping.recursive && (directory + L"\\").starts_with(top + L"\\");
    return (directory == top || isBelow) && SomeNameMatches(mapping.fileSpec, spec);
}

} // namespace

// One character at a time.
bool SomeNameMatches(std::wstring_view first, std::wstring_view second)
{
    if (first.empty() && second.empty()) {
        return true;
    }
    if (!second.starts_with(L'*') && first.starts_with(L'*')) {
        return SomeNameMatches(second, first);
    }
    if (second.starts_with(L'*')) {
        return SomeNameMatches(first, second.substr(1)) || (!first.empty() && SomeNameMatches(first.substr(1), second));
    }
    if (first.empty() || second.empty()) {
        return false;
    }
    const bool meet = first[0] == L'?' || second[0] == L'?' || std::towupper(first[0]) == std::towupper(second[0]);
    return meet && SomeNameMatches(first.substr(1), second.substr(1));
}

std::optional<std::wstring> Mapped(const std::vector<VSS_ALTERNATE_MAPPING>& mappings, const std::wstring& path,
                                   const std::wstring& spec, bool ignoresBackslash)
{
    for (const VSS_ALTERNATE_MAPPING& mapping : mappings) {
        if (Covers(mapping, path, spec)) {
            const bool isShorter = ignoresBackslash && mapping.path.ends_with(L'\\');
            const std::size_t length = mapping.path.size() - (isShorter ? 1 : 0);
            return mapping.alternateLocation + path.substr(std::min(length, path.size()));
        }
    }
    return std::nullopt;
}
