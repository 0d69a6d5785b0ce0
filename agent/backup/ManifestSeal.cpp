// The seal of a manifest.

#include "agent/backup/ManifestSeal.h"

#include "agent/platform/Digest.h"

#include <string_view>

namespace agent {

namespace {

constexpr std::string_view kEnd = "\n}";
constexpr std::string_view kKey = ",\n \"manifestSha256\": \"";
constexpr std::string_view kSealEnd = "\"\n}";

std::string SealOf(const std::string& content)
{
    Sha256 hash;
    const auto digest = hash.Add(content.data(), content.size()) ? hash.Finish() : std::nullopt;
    return digest ? digest->sha256 : std::string();
}

} // namespace

std::string Sealed(const std::string& json)
{
    const std::string content = json.substr(0, json.size() - kEnd.size());
    const std::string seal = SealOf(content);
    return seal.empty() ? json : content + std::string(kKey) + seal + std::string(kSealEnd);
}

bool IsSealIntact(const std::string& content)
{
    const auto key = content.rfind(kKey);
    return key != std::string::npos && content == Sealed(content.substr(0, key) + std::string(kEnd));
}

} // namespace agent
