// Texts on their way between Windows (UTF-16) and output, manifests and command lines (UTF-8).

#include "agent/Text.h"

#include <memory>

namespace agent {

namespace {

struct LocalMemoryDeleter {
    void operator()(wchar_t* memory) const noexcept { ::LocalFree(memory); }
};

bool IsHigh(wchar_t character)
{
    return character >= 0xD800 && character <= 0xDBFF;
}

bool IsLow(wchar_t character)
{
    return character >= 0xDC00 && character <= 0xDFFF;
}

} // namespace

std::string Utf8(std::wstring_view text)
{
    const int length = static_cast<int>(text.size());
    const int room = ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, nullptr, 0, nullptr, nullptr);
    std::string utf8(static_cast<std::size_t>(room), '\0');
    ::WideCharToMultiByte(CP_UTF8, 0, text.data(), length, utf8.data(), room, nullptr, nullptr);
    return utf8;
}

std::wstring Wide(std::string_view utf8)
{
    const int length = static_cast<int>(utf8.size());
    const int room = ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, nullptr, 0);
    std::wstring text(static_cast<std::size_t>(room), L'\0');
    ::MultiByteToWideChar(CP_UTF8, 0, utf8.data(), length, text.data(), room);
    return text;
}

bool IsWellFormed(std::wstring_view text)
{
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (IsLow(text[i])) {
            return false;
        }
        if (IsHigh(text[i])) {
            ++i;
            if (i == text.size() || !IsLow(text[i])) {
                return false;
            }
        }
    }
    return true;
}

std::wstring SystemReason(DWORD error)
{
    wchar_t* allocated = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0,
                     reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    const std::unique_ptr<wchar_t, LocalMemoryDeleter> message(allocated);
    std::wstring text = message == nullptr ? L"Windows reports an error." : message.get();
    text.erase(text.find_last_not_of(L" \r\n") + 1);
    return text + L" (error " + std::to_wstring(error) + L")";
}

bool EqualIgnoringCase(std::wstring_view first, std::wstring_view second)
{
    return ::CompareStringOrdinal(first.data(), static_cast<int>(first.size()), second.data(),
                                  static_cast<int>(second.size()), TRUE) == CSTR_EQUAL;
}

} // namespace agent
