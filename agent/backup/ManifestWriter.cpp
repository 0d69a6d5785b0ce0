// Manifests as JSON: writing.

#include "agent/backup/Manifest.h"
#include "agent/backup/ManifestSeal.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/WholeFile.h"

#include <nlohmann/json.hpp>

namespace agent {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 3;

Json ToJson(const std::vector<std::wstring>& strings)
{
    Json list = Json::array();
    for (const std::wstring& string : strings) {
        list.push_back(Utf8(string));
    }
    return list;
}

// The keys that files and directories share.
template <typename Entry>
void AddCommonKeys(Json& object, const Entry& entry)
{
    object["created"] = entry.created;
    object["modified"] = entry.modified;
    object["attributes"] = entry.attributes;
    if (!entry.security.empty()) {
        object["security"] = Utf8(entry.security);
    }
}

Json ToJson(const ManifestFile& file)
{
    Json object = {{"name", Utf8(file.name)}};
    if (file.stored != file.name) {
        object["stored"] = Utf8(file.stored);
    }
    object["size"] = file.digest.size;
    object["sha256"] = file.digest.sha256;
    AddCommonKeys(object, file);
    return object;
}

Json ToJson(const ManifestDirectory& directory)
{
    Json object = {{"name", Utf8(directory.name)}};
    AddCommonKeys(object, directory);
    return object;
}

template <typename Entry>
Json ToJson(const std::vector<Entry>& entries)
{
    Json list = Json::array();
    for (const Entry& entry : entries) {
        list.push_back(ToJson(entry));
    }
    return list;
}

Json ToJson(const Manifest& manifest)
{
    return {{"format", kFormat},
            {"original", Utf8(manifest.original)},
            {"complete", manifest.complete},
            {"started", Utf8(manifest.started)},
            {"finished", Utf8(manifest.finished)},
            {"filters", ToJson(manifest.filters)},
            {"excludes", ToJson(manifest.excludes)},
            {"selection", manifest.selection},
            {"notBackedUp", ToJson(manifest.notBackedUp)},
            {"root", ToJson(manifest.root)},
            {"directories", ToJson(manifest.directories)},
            {"files", ToJson(manifest.files)}};
}

} // namespace

std::optional<std::wstring> WriteManifest(const std::wstring& folder, const Manifest& manifest)
{
    if (!WriteWholeFile(Join(folder, kManifestName), Sealed(ToJson(manifest).dump(1)))) {
        return LastReason();
    }
    return std::nullopt;
}

} // namespace agent
