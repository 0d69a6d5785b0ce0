// Comparisons, list membership, cutting and upper-casing of wide strings.

#include <Kestrovane.h>

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <cwctype>
#include <utility>

namespace {

std::wstring ToLower(std::wstring string)
{
    std::transform(string.begin(), string.end(), string.begin(),
                   [](wchar_t character) { return static_cast<wchar_t>(::towlower(character)); });
    return string;
}

bool ContainsIgnoringCase(std::wstring string, std::wstring fragment)
{
    return ToLower(std::move(string)).find(ToLower(std::move(fragment))) != std::wstring::npos;
}

} // namespace

bool IsEqual(std::wstring first, std::wstring second)
{
    return ::_wcsicmp(first.c_str(), second.c_str()) == 0;
}

bool FindStringInList(std::wstring string, std::vector<std::wstring> list)
{
    return std::any_of(list.begin(), list.end(), [&string](const std::wstring& element) {
        return ::_wcsicmp(string.c_str(), element.c_str()) == 0;
    });
}

bool FindMatchStringInList(std::wstring string, std::vector<std::wstring> list)
{
    return std::any_of(list.begin(), list.end(),
                       [&string](const std::wstring& fragment) { return ContainsIgnoringCase(string, fragment); });
}

std::wstring WStringAfterWCHAR(std::wstring string, wchar_t character)
{
    const auto position = string.find(character);
    return position == std::wstring::npos ? string : string.substr(position + 1);
}

std::wstring WStringBeforeWCHAR(std::wstring string, wchar_t character)
{
    const auto position = string.find(character);
    return position == std::wstring::npos ? string : string.substr(0, position);
}

std::wstring WString2UpperCase(const std::wstring& string)
{
    // Deliberately the narrow toupper: it leaves every character above 127 unchanged.
    std::wstring upper = string;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](wchar_t character) { return static_cast<wchar_t>(std::toupper(character)); });
    return upper;
}
