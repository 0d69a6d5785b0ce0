// Manifests as JSON: reading. Whatever a manifest says is checked before it is used.

#include "agent/backup/Manifest.h"
#include "agent/backup/ManifestNames.h"
#include "agent/backup/ManifestSeal.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/WholeFile.h"

#include <nlohmann/json.hpp>

namespace agent {

namespace {

using Json = nlohmann::json;

constexpr int kOldestFormat = 1;
constexpr int kNewestFormat = 3;
constexpr int kFirstSealedFormat = 3;
constexpr std::size_t kDigestLength = 64; // hexadecimal digits

bool IsDigest(const std::string& digits)
{
    return digits.size() == kDigestLength && digits.find_first_not_of("0123456789abcdef") == std::string::npos;
}

std::wstring StringOf(const Json& object, const char* key)
{
    return Wide(object.value(key, std::string()));
}

std::vector<std::wstring> StringsOf(const Json& object, const char* key)
{
    std::vector<std::wstring> strings;
    for (const Json& string : object.value(key, Json::array())) {
        strings.push_back(Wide(string.get<std::string>()));
    }
    return strings;
}

template <typename Entry>
void ReadCommonKeys(const Json& object, Entry& entry)
{
    entry.created = object.value("created", FileTime{0});
    entry.modified = object.value("modified", FileTime{0});
    entry.attributes = object.value("attributes", DWORD{0});
    entry.security = StringOf(object, "security");
}

// Throws nlohmann's exceptions for an entry that is not one.
void ReadFileEntry(const Json& object, ReadManifest& result)
{
    ManifestFile file;
    file.name = Wide(object.at("name").get<std::string>());
    file.stored = object.contains("stored") ? StringOf(object, "stored") : file.name;
    file.digest = {object.at("sha256").get<std::string>(), object.at("size").get<std::int64_t>()};
    ReadCommonKeys(object, file);
    auto reason = WhyNameIsInvalid(file.name);
    if (!reason) {
        reason = WhyNameIsInvalid(file.stored);
    }
    if (reason) {
        result.rejected.emplace_back(file.name, L"the name in the manifest is rejected: " + *reason);
    } else if (!IsDigest(file.digest.sha256) || file.digest.size < 0) {
        result.rejected.emplace_back(file.name, L"its entry in the manifest is damaged");
    } else {
        result.manifest.files.push_back(std::move(file));
    }
}

// Format 1 holds a string for each directory, later ones an object.
void ReadDirectoryEntry(const Json& entry, ReadManifest& result)
{
    ManifestDirectory directory;
    if (entry.is_string()) {
        directory.name = Wide(entry.get<std::string>());
    } else {
        directory.name = Wide(entry.at("name").get<std::string>());
        ReadCommonKeys(entry, directory);
    }
    if (const auto reason = WhyNameIsInvalid(directory.name)) {
        result.rejected.emplace_back(directory.name, L"the name in the manifest is rejected: " + *reason);
    } else {
        result.manifest.directories.push_back(std::move(directory));
    }
}

void ReadEntries(const Json& list, void (*read)(const Json&, ReadManifest&), ReadManifest& result)
{
    for (const Json& entry : list) {
        try {
            read(entry, result);
        } catch (const nlohmann::json::exception&) {
            result.rejected.emplace_back(L"an entry without a name, a size or a digest",
                                         L"the manifest is damaged there");
        }
    }
}

ReadManifest ReadJson(const Json& json)
{
    ReadManifest result;
    Manifest& manifest = result.manifest;
    manifest.original = Wide(json.at("original").get<std::string>());
    manifest.complete = json.value("complete", false);
    manifest.selection = json.value("selection", false);
    manifest.started = StringOf(json, "started");
    manifest.finished = StringOf(json, "finished");
    manifest.filters = StringsOf(json, "filters");
    manifest.excludes = StringsOf(json, "excludes");
    manifest.notBackedUp = StringsOf(json, "notBackedUp");
    ReadCommonKeys(json.value("root", Json::object()), manifest.root);
    ReadEntries(json.at("files"), &ReadFileEntry, result);
    ReadEntries(json.value("directories", Json::array()), &ReadDirectoryEntry, result);
    return result;
}

} // namespace

std::optional<ReadManifest> LoadManifest(const std::wstring& folder, std::wstring& error)
{
    const auto content = ReadWholeFile(Join(folder, kManifestName));
    if (!content) {
        error = LastReason();
        return std::nullopt;
    }
    try {
        const Json json = Json::parse(*content);
        const int format = json.at("format").get<int>();
        if (format < kOldestFormat || format > kNewestFormat) {
            error = L"the manifest has format " + std::to_wstring(format) + L", which this program cannot read";
            return std::nullopt;
        }
        ReadManifest result = ReadJson(json);
        result.isIntact = (format < kFirstSealedFormat && !json.contains("manifestSha256")) || IsSealIntact(*content);
        if (const auto reason = WhyOriginalIsInvalid(result.manifest.original)) {
            error = L"the original directory in the manifest is rejected: " + *reason;
            return std::nullopt;
        }
        return result;
    } catch (const nlohmann::json::exception& failure) {
        error = L"the manifest is damaged: " + Wide(failure.what());
        return std::nullopt;
    }
}

} // namespace agent
