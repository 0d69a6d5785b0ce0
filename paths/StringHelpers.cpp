// Comparisons, list membership, cutting and upper-casing of wide strings.

#include <Kestrovane.h>

#include <algorithm>
#include <cctype>
#include <cwchar>
#include <cwctype>

namespace {

std::wstring ToLower(std::wstring text)
{
    std::transform(text.begin(), text.end(), text.begin(),
                   [](wchar_t character) { return static_cast<wchar_t>(::towlower(character)); });
    return text;
}

bool ContainsIgnoringCase(std::wstring text, std::wstring fragment)
{
    return ToLower(std::move(text)).find(ToLower(std::move(fragment))) != std::wstring::npos;
}

} // namespace

bool IsEqual(std::wstring first, std::wstring second)
{
    return ::_wcsicmp(first.c_str(), second.c_str()) == 0;
}

bool FindStringInList(std::wstring text, std::vector<std::wstring> list)
{
    return std::any_of(list.begin(), list.end(),
                       [&text](const std::wstring& element) { return ::_wcsicmp(text.c_str(), element.c_str()) == 0; });
}

bool FindMatchStringInList(std::wstring text, std::vector<std::wstring> list)
{
    return std::any_of(list.begin(), list.end(),
                       [&text](const std::wstring& fragment) { return ContainsIgnoringCase(text, fragment); });
}

std::wstring WStringAfterWCHAR(std::wstring text, wchar_t character)
{
    const auto position = text.find(character);
    return position == std::wstring::npos ? text : text.substr(position + 1);
}

std::wstring WStringBeforeWCHAR(std::wstring text, wchar_t character)
{
    const auto position = text.find(character);
    return position == std::wstring::npos ? text : text.substr(0, position);
}

std::wstring WString2UpperCase(const std::wstring& text)
{
    // The narrow toupper, although the text is wide: it leaves every character above 127 alone.
    std::wstring upper = text;
    std::transform(upper.begin(), upper.end(), upper.begin(),
                   [](wchar_t character) { return static_cast<wchar_t>(std::toupper(character)); });
    return upper;
}
