// Which names and paths of a manifest can be trusted.

#include "agent/backup/ManifestNames.h"

#include "agent/platform/IgnoringCase.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace agent {

namespace {

constexpr std::size_t kDriveRoot = 3; // characters of C:\.

bool IsDeviceName(std::wstring_view component)
{
    constexpr std::array kDevices = {L"CON",  L"PRN",  L"AUX",  L"NUL",  L"COM1", L"COM2", L"COM3",   L"COM4",
                                     L"COM5", L"COM6", L"COM7", L"COM8", L"COM9", L"LPT1", L"LPT2",   L"LPT3",
                                     L"LPT4", L"LPT5", L"LPT6", L"LPT7", L"LPT8", L"LPT9", L"CONIN$", L"CONOUT$",
                                     L"COM¹", L"COM²", L"COM³", L"LPT¹", L"LPT²", L"LPT³"};
    std::wstring_view stem = component.substr(0, component.find(L'.'));
    stem = stem.substr(0, stem.find_last_not_of(L' ') + 1);
    return std::any_of(kDevices.begin(), kDevices.end(),
                       [stem](const wchar_t* device) { return EqualIgnoringCase(stem, device); });
}

std::optional<std::wstring> WhyComponentIsInvalid(std::wstring_view component)
{
    if (component.empty() || component == L"." || component == L"..") {
        return L"a path component is empty or consists of dots";
    }
    if (component.find_first_of(L":*?\"<>|/") != std::wstring_view::npos ||
        std::any_of(component.begin(), component.end(), [](wchar_t character) { return character < L' '; })) {
        return L"it has a character that no file name can have";
    }
    if (component.back() == L'.' || component.back() == L' ') {
        return L"a path component ends with a dot or a blank, which Windows drops";
    }
    if (IsDeviceName(component)) {
        return L"a path component is the name of a device";
    }
    return std::nullopt;
}

bool IsDriveRoot(std::wstring_view start)
{
    const wchar_t letter = start.empty() ? L'\0' : start[0];
    const bool isLetter = (letter >= L'A' && letter <= L'Z') || (letter >= L'a' && letter <= L'z');
    return isLetter && start.substr(1) == LR"(:\)";
}

} // namespace

std::optional<std::wstring> WhyNameIsInvalid(const std::wstring& name)
{
    std::size_t start = 0;
    while (start <= name.size()) {
        const std::size_t end = std::min(name.find(L'\\', start), name.size());
        if (auto reason = WhyComponentIsInvalid(std::wstring_view(name).substr(start, end - start))) {
            return reason;
        }
        start = end + 1;
    }
    return std::nullopt;
}

std::optional<std::wstring> WhyOriginalIsInvalid(const std::wstring& path)
{
    if (IsDriveRoot(std::wstring_view(path).substr(0, kDriveRoot))) {
        return path.size() == kDriveRoot ? std::nullopt : WhyNameIsInvalid(path.substr(kDriveRoot));
    }
    constexpr std::wstring_view kShare = LR"(\\)";
    const auto share = path.find(L'\\', kShare.size()); // between server and share
    if (!path.starts_with(kShare) || share == std::wstring::npos) {
        return L"it is not an absolute path on a drive or a share";
    }
    return WhyNameIsInvalid(path.substr(kShare.size()));
}

} // namespace agent
