// What a backup holds.

#include "agent/Manifest.h"

#include "agent/FileFacts.h"
#include "agent/Text.h"
#include "agent/WholeFile.h"

#include <windows.h>

#include <nlohmann/json.hpp>

#include <algorithm>
#include <array>

namespace agent {

namespace {

using Json = nlohmann::ordered_json;

constexpr int kFormat = 1;
constexpr std::size_t kDigestLength = 64; // hexadecimal digits

bool IsDeviceName(std::wstring_view part)
{
    constexpr std::array kDevices = {L"CON",  L"PRN",  L"AUX",  L"NUL",  L"COM1", L"COM2", L"COM3", L"COM4",
                                     L"COM5", L"COM6", L"COM7", L"COM8", L"COM9", L"LPT1", L"LPT2", L"LPT3",
                                     L"LPT4", L"LPT5", L"LPT6", L"LPT7", L"LPT8", L"LPT9"};
    std::wstring_view stem = part.substr(0, part.find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    return std::any_of(kDevices.begin(), kDevices.end(),
                       [stem](const wchar_t* device) { return EqualIgnoringCase(stem, device); });
}

std::optional<std::wstring> RefusePart(std::wstring_view part)
{
    if (part.empty() || part == L"." || part == L"..") {
        return L"the name has an empty part or one of dots";
    }
    if (part.find_first_of(L":*?\"<>|/") != std::wstring_view::npos ||
        std::any_of(part.begin(), part.end(), [](wchar_t character) { return character < L' '; })) {
        return L"the name has a character that no file name can have";
    }
    if (part.back() == L'.' || part.back() == L' ') {
        return L"a part of the name ends with a dot or a blank, which Windows drops";
    }
    if (IsDeviceName(part)) {
        return L"a part of the name is that of a device";
    }
    return std::nullopt;
}

bool IsDigest(const std::string& text)
{
    return text.size() == kDigestLength && text.find_first_not_of("0123456789abcdef") == std::string::npos;
}

Json ToJson(const Manifest& manifest)
{
    Json files = Json::array();
    for (const ManifestFile& file : manifest.files) {
        files.push_back({{"name", Utf8(file.name)},
                         {"size", file.digest.size},
                         {"sha256", file.digest.sha256},
                         {"modified", file.modified}});
    }
    Json directories = Json::array();
    for (const std::wstring& directory : manifest.directories) {
        directories.push_back(Utf8(directory));
    }
    return {{"format", kFormat},
            {"original", Utf8(manifest.original)},
            {"complete", manifest.complete},
            {"directories", directories},
            {"files", files}};
}

// Throws nlohmann's exceptions for an entry that is not one.
void ReadFileEntry(const Json& entry, ReadManifest& result)
{
    ManifestFile file;
    file.name = Wide(entry.at("name").get<std::string>());
    file.digest = {entry.at("sha256").get<std::string>(), entry.at("size").get<std::int64_t>()};
    file.modified = entry.value("modified", std::int64_t{0});
    if (const auto reason = RefuseName(file.name)) {
        result.refused.emplace_back(file.name, *reason);
    } else if (!IsDigest(file.digest.sha256) || file.digest.size < 0) {
        result.refused.emplace_back(file.name, L"its entry in the manifest is damaged");
    } else {
        result.manifest.files.push_back(std::move(file));
    }
}

void ReadEntries(const Json& json, ReadManifest& result)
{
    for (const Json& entry : json.at("files")) {
        try {
            ReadFileEntry(entry, result);
        } catch (const nlohmann::json::exception&) {
            result.refused.emplace_back(L"an entry without a name, a size or a digest",
                                        L"the manifest is damaged there");
        }
    }
    for (const Json& entry : json.value("directories", Json::array())) {
        const std::wstring name = entry.is_string() ? Wide(entry.get<std::string>()) : std::wstring();
        if (const auto reason = RefuseName(name)) {
            result.refused.emplace_back(name, *reason);
        } else {
            result.manifest.directories.push_back(name);
        }
    }
}

bool IsAbsolute(const std::wstring& path)
{
    const bool onDrive = path.size() >= 3 && path[1] == L':' && path[2] == L'\\';
    return onDrive || path.starts_with(LR"(\\)");
}

} // namespace

std::optional<std::wstring> RefuseName(const std::wstring& name)
{
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t end = std::min(name.find(L'\\', start), name.size());
        if (auto reason = RefusePart(std::wstring_view(name).substr(start, end - start))) {
            return reason;
        }
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::wstring> WriteManifest(const std::wstring& backup, const Manifest& manifest)
{
    const std::wstring path = Join(backup, kManifestName);
    const std::wstring fresh = path + L".new";
    if (!WriteWholeFile(fresh, ToJson(manifest).dump(1)) ||
        !::MoveFileExW(fresh.c_str(), path.c_str(), MOVEFILE_REPLACE_EXISTING | MOVEFILE_WRITE_THROUGH)) {
        return SystemReason(::GetLastError());
    }
    return std::nullopt;
}

std::optional<ReadManifest> LoadManifest(const std::wstring& backup, std::wstring& error)
{
    const auto text = ReadWholeFile(Join(backup, kManifestName));
    if (!text) {
        error = SystemReason(::GetLastError());
        return std::nullopt;
    }
    try {
        const Json json = Json::parse(*text);
        ReadManifest result;
        result.manifest.original = Wide(json.at("original").get<std::string>());
        result.manifest.complete = json.value("complete", false);
        if (json.at("format").get<int>() != kFormat || !IsAbsolute(result.manifest.original)) {
            error = L"the manifest is of another format or names no original directory";
            return std::nullopt;
        }
        ReadEntries(json, result);
        return result;
    } catch (const nlohmann::json::exception& failure) {
        error = L"the manifest is damaged: " + Wide(failure.what());
        return std::nullopt;
    }
}

} // namespace agent
