// Where the files and directories of a backup go, and the directory that none of them may leave.

#include "agent/restore/Placement.h"

#include "agent/platform/Handles.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/restore/PresentFiles.h"

#include <utility>

namespace agent {

Placement::Placement(const RestoreOptions& options, std::wstring original)
    : m_options(options),
      m_original(std::move(original)),
      m_to(options.to.empty() ? L"" : Absolute(options.to)),
      m_mapper(options.mappings)
{
}

std::optional<Destination> Placement::PlaceFile(const std::wstring& name)
{
    if (!m_to.empty()) {
        const std::wstring path = Join(m_to, name);
        return Destination{path, ParentOf(path), m_to, false};
    }
    const std::wstring path = Join(m_original, name);
    const std::wstring fileName = NameOf(path);
    const Place place = m_mapper.Find(ParentOf(path), fileName);
    return At(place, Join(place.directory, fileName));
}

std::optional<Destination> Placement::PlaceDirectory(const std::wstring& name)
{
    const auto below = [&](const std::wstring& root) { return name.empty() ? root : Join(root, name); };
    if (!m_to.empty()) {
        return Destination{below(m_to), below(m_to), m_to, false};
    }
    const Place place = m_mapper.FindDirectory(below(m_original));
    auto destination = At(place, place.directory);
    if (destination) {
        destination->directory = place.directory;
    }
    return destination;
}

std::optional<Destination> Placement::At(const Place& place, const std::wstring& path) const
{
    if (place.mapped) {
        return Destination{path, place.directory, m_mapper.AlternateLocation(place.mapping), true};
    }
    if (!m_options.mappings.empty() && m_options.unmapped == Unmapped::kLeaveOut) {
        return std::nullopt;
    }
    return Destination{path, place.directory, m_original, false};
}

bool Placement::Covers(std::size_t mapping, const std::wstring& name)
{
    const std::wstring path = Join(m_original, name);
    return m_mapper.Covers(mapping, ParentOf(path), NameOf(path));
}

bool IsConfined(const std::wstring& path, const std::wstring& bound)
{
    return EqualIgnoringCase(Absolute(path), path) && IsSameOrBelow(path, bound);
}

std::wstring LinkOnTheWay(const std::wstring& directory, const std::wstring& bound)
{
    for (std::wstring path = directory; path.size() > bound.size(); path = ParentOf(path)) {
        WIN32_FIND_DATAW entry = {};
        const UniqueSearch search = OwnSearch(::FindFirstFileW(path.c_str(), &entry));
        if (search != nullptr && IsLinkEntry(entry)) {
            return path;
        }
    }
    return {};
}

} // namespace agent
