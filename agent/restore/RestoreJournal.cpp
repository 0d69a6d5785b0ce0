// What a restore is in the middle of.

#include "agent/restore/RestoreJournal.h"

#include "agent/platform/Encoding.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/platform/WholeFile.h"
#include "agent/restore/PendingMoves.h"

#include <Kestrovane.h>

#include <nlohmann/json.hpp>

#include <algorithm>

namespace agent {

namespace {

using Json = nlohmann::ordered_json;

Json ToJson(const CacheSite& site)
{
    Json before = Json::array();
    for (const std::wstring& name : site.before) {
        before.push_back(Utf8(name));
    }
    return {{"directory", Utf8(site.directory)}, {"prefix", Utf8(site.prefix)}, {"before", before}};
}

CacheSite SiteFromJson(const Json& json)
{
    CacheSite site{Wide(json.at("directory").get<std::string>()), Wide(json.at("prefix").get<std::string>()), {}};
    for (const Json& name : json.at("before")) {
        site.before.push_back(Wide(name.get<std::string>()));
    }
    return site;
}

bool Holds(const std::vector<std::wstring>& names, const std::wstring& name)
{
    return std::any_of(names.begin(), names.end(),
                       [&](const std::wstring& other) { return EqualIgnoringCase(other, name); });
}

} // namespace

CacheSite SurveyCacheSite(const std::wstring& directory, const std::wstring& prefix)
{
    return {directory, prefix, ListFilesFilter(directory, prefix + L"*.tmp", false)};
}

RestoreJournal::RestoreJournal(const std::wstring& backup) : m_path(Join(backup, L"kestrovane-restore.journal")) {}

std::optional<JournalEntry> RestoreJournal::Read() const
{
    const auto text = ReadWholeFile(m_path);
    if (!text) {
        return std::nullopt;
    }
    try {
        const Json json = Json::parse(*text);
        JournalEntry entry{Wide(json.at("target").get<std::string>()), {}};
        for (const Json& site : json.at("sites")) {
            entry.sites.push_back(SiteFromJson(site));
        }
        return entry;
    } catch (const nlohmann::json::exception&) {
        return std::nullopt;
    }
}

bool RestoreJournal::Write(const JournalEntry& entry) const
{
    Json sites = Json::array();
    for (const CacheSite& site : entry.sites) {
        sites.push_back(ToJson(site));
    }
    return WriteWholeFile(m_path, Json{{"target", Utf8(entry.target)}, {"sites", sites}}.dump());
}

void RestoreJournal::Remove() const
{
    ::DeleteFileW(m_path.c_str());
}

std::vector<std::wstring> FindLeftovers(const CacheSite& site)
{
    std::vector<std::wstring> registered;
    for (const PendingMove& move : ReadPendingMoves().value_or(std::vector<PendingMove>())) {
        registered.push_back(move.source);
    }
    std::vector<std::wstring> leftovers;
    for (const std::wstring& name : ListFilesFilter(site.directory, site.prefix + L"*.tmp", false)) {
        const std::wstring path = Join(site.directory, name);
        if (!Holds(site.before, name) && !Holds(registered, path)) {
            leftovers.push_back(path);
        }
    }
    return leftovers;
}

} // namespace agent
