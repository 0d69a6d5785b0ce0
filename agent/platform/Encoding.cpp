// Strings between Windows (UTF-16) and output, manifests and command lines (UTF-8).

#include "agent/platform/Encoding.h"

#include <windows.h>

namespace agent {

namespace {

bool IsHigh(wchar_t character)
{
    return character >= 0xD800 && character <= 0xDBFF;
}

bool IsLow(wchar_t character)
{
    return character >= 0xDC00 && character <= 0xDFFF;
}

} // namespace

std::string Utf8(std::wstring_view string)
{
    const int length = static_cast<int>(string.size());
    const int size = ::WideCharToMultiByte(CP_UTF8, 0, string.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(size), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, string.data(), length, utf8.data(), size, nullptr, nullptr);
    return utf8;
}

std::wstring Wide(std::string_view utf8)
{
    const int length = static_cast<int>(utf8.size());
    const int size = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring string(static_cast<std::size_t>(size), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, string.data(), size);
    return string;
}

bool IsWellFormed(std::wstring_view string)
{
    for (std::size_t i = 0; i < string.size(); ++i) {
        if (IsLow(string[i])) {
            return false;
        }
        if (IsHigh(string[i])) {
            ++i;
            if (i == string.size() || !IsLow(string[i])) {
                return false;
            }
        }
    }
    return true;
}

} // namespace agent
