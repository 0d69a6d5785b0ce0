// A host that keeps everything the library tells it, in order.

#include "tests/support/HostRecorder.h"

#include "tests/support/FileTools.h"
#include "tests/support/SilentHost.h"

#include <Kestrovane.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

namespace {

HostRecorder* g_recorder = nullptr;

// The text of one conversion. Wide texts are not cut at characters outside the locale, as the runtime's printf would.
std::wstring FormatOne(const std::string& conversion, va_list& arguments)
{
    constexpr std::size_t kLongestNumber = 64; // characters
    char number[kLongestNumber] = {};
    switch (conversion.back()) {
    case 's': {
        const char* narrow = va_arg(arguments, const char*);
        return narrow == nullptr ? L"(null)" : std::wstring(narrow, narrow + std::strlen(narrow));
    }
    case 'S': {
        const wchar_t* wide = va_arg(arguments, const wchar_t*);
        return wide == nullptr ? L"(null)" : wide;
    }
    case 'd':
    case 'u':
    case 'x':
        std::snprintf(number, kLongestNumber, conversion.c_str(), va_arg(arguments, int)); // long is as wide
        return std::wstring(number, number + std::strlen(number));
    default:
        return L"<conversion %" + std::wstring(conversion.begin(), conversion.end()) + L">";
    }
}

std::wstring Format(const std::string& format, va_list& arguments)
{
    std::wstring text;
    for (std::size_t i = 0; i < format.size(); ++i) {
        if (format[i] != '%') {
            text += static_cast<wchar_t>(format[i]);
        } else if (format[i + 1] == '%') {
            text += L'%';
            ++i;
        } else {
            const auto end = format.find_first_of("sSdux", i);
            text += FormatOne(format.substr(i, end - i + 1), arguments);
            i = end;
        }
    }
    return text;
}

int __cdecl RecordLog(int level, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    g_recorder->Add({HostEvent::Kind::kLog, level, format, Format(format, arguments)});
    va_end(arguments);
    return 0;
}

int __cdecl RecordKeepAlive(int seconds, ...)
{
    g_recorder->Add({HostEvent::Kind::kKeepAlive, seconds, {}, {}});
    return 0;
}

int __cdecl RecordAux(int /*level*/, const char* /*format*/, ...)
{
    g_recorder->CountAux();
    return 0;
}

} // namespace

std::ostream& operator<<(std::ostream& out, const HostEvent& event)
{
    if (event.kind == HostEvent::Kind::kKeepAlive) {
        return out << "keep-alive " << event.value;
    }
    return out << "log " << event.value << ' ' << Utf8(event.text);
}

HostRecorder::HostRecorder()
{
    g_recorder = this;
    SetVssFileManagerLogger(&RecordLog, &RecordKeepAlive, &RecordAux);
    Clear();
}

HostRecorder::~HostRecorder()
{
    RegisterSilentHost();
    g_recorder = nullptr;
}

std::vector<std::wstring> HostRecorder::Lines() const
{
    std::vector<std::wstring> lines;
    for (const HostEvent& event : m_events) {
        if (event.kind == HostEvent::Kind::kLog) {
            lines.push_back(event.text);
        }
    }
    return lines;
}

std::vector<std::wstring> HostRecorder::LinesAt(int level) const
{
    std::vector<std::wstring> lines;
    for (const HostEvent& event : m_events) {
        if (event.kind == HostEvent::Kind::kLog && event.value == level) {
            lines.push_back(event.text);
        }
    }
    return lines;
}

std::vector<int> HostRecorder::KeepAlives() const
{
    std::vector<int> seconds;
    for (const HostEvent& event : m_events) {
        if (event.kind == HostEvent::Kind::kKeepAlive) {
            seconds.push_back(event.value);
        }
    }
    return seconds;
}

std::vector<std::wstring> FailureLines(unsigned long error, const std::wstring& title)
{
    constexpr std::size_t kLongestLine = 64; // characters
    const auto code = static_cast<int>(error);
    const unsigned long hresult = code <= 0 ? error : ((error & 0xFFFFUL) | 0x80070000UL);
    wchar_t line[kLongestLine] = {};
    std::swprintf(line, kLongestLine, L"   - Returned HRESULT = 0x%08lx\n", hresult);
    std::vector<std::wstring> lines = {title, line};
    wchar_t* text = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0x400,
                     reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const UniqueLocalMemory<wchar_t> owner(text);
    if (text != nullptr) {
        lines.push_back(std::wstring(L"   - Error text: ") + text + L"\n");
    }
    return lines;
}

std::vector<std::wstring> ReportLines(unsigned long error)
{
    return FailureLines(error, L"   - : " + std::to_wstring(static_cast<int>(error)) + L"\n");
}
