// The calls that a function makes of a simulated platform and of the host, in their order, and those that fail.

#include "tests/models/CallScript.h"

#include "tests/support/FileTools.h"

#include <Kestrovane.h>

#include <algorithm>
#include <cstdarg>
#include <cstring>
#include <iterator>

namespace {

CallScript* g_host = nullptr;

std::wstring Wide(const char* string)
{
    return {string, string + std::strlen(string)};
}

// The arguments of a format of the library: wide strings and numbers. The deleter passes wide strings to %s, too.
std::vector<std::wstring> ArgumentsOf(const char* format, va_list arguments)
{
    std::vector<std::wstring> read;
    for (const char* at = std::strchr(format, '%'); at != nullptr; at = std::strchr(at, '%')) {
        ++at;
        const bool isString = *at == 'S' || *at == 's';
        read.push_back(isString ? std::wstring(va_arg(arguments, const wchar_t*))
                                : std::to_wstring(va_arg(arguments, unsigned)));
    }
    return read;
}

int __cdecl AddLogLine(int level, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const bool isLocation = std::strstr(format, "::") != nullptr; // its strings are narrow
    const std::wstring line = LogLine(level, format, isLocation ? StringList() : ArgumentsOf(format, arguments));
    va_end(arguments);
    g_host->Succeeds(line);
    return 0;
}

int __cdecl AddKeepAlive(int seconds, ...)
{
    g_host->Succeeds(L"keep-alive " + std::to_wstring(seconds));
    return 0;
}

// 0x80070000 and the lower half of the error, or the error itself where it is negative or 0.
std::wstring HResultOf(DWORD error)
{
    const bool isHResult = error == 0 || (error & 0x80000000U) != 0;
    return std::to_wstring(isHResult ? error : (error & 0xFFFFU) | 0x80070000U);
}

std::wstring MessageCall(DWORD error)
{
    return L"FormatMessageW " + std::to_wstring(error);
}

std::wstring MessageOf(DWORD error)
{
    return L"message " + std::to_wstring(error);
}

} // namespace

std::optional<DWORD> CallScript::Add(std::wstring call)
{
    const auto failure = m_failures.find(m_calls.size());
    m_calls.push_back(std::move(call));
    return failure == m_failures.end() ? std::nullopt : std::optional<DWORD>(failure->second);
}

bool CallScript::Succeeds(std::wstring call)
{
    const std::optional<DWORD> error = Add(std::move(call));
    if (error) {
        ::SetLastError(*error);
    }
    return !error;
}

CallScript::Failures RandomFailures(RandomInput& input, std::size_t calls)
{
    constexpr DWORD kErrors[] = {ERROR_SUCCESS,           ERROR_FILE_NOT_FOUND, ERROR_PATH_NOT_FOUND,
                                 ERROR_ACCESS_DENIED,     ERROR_NO_MORE_FILES,  ERROR_SHARING_VIOLATION,
                                 ERROR_NOT_ENOUGH_MEMORY, ERROR_DISK_FULL,      0x80070005};
    constexpr std::size_t kMostFailures = 3;
    CallScript::Failures failures;
    for (std::size_t left = input.Below(kMostFailures + 1); left > 0; --left) {
        failures[input.Below(calls)] = kErrors[input.Below(std::size(kErrors))];
    }
    return failures;
}

std::string FirstDifference(const CallScript& expected, const CallScript& actual)
{
    const auto& first = expected.Calls();
    const auto& second = actual.Calls();
    const auto [one, other] = std::mismatch(first.begin(), first.end(), second.begin(), second.end());
    if (one == first.end() && other == second.end()) {
        return {};
    }
    return "call " + std::to_string(one - first.begin()) + ": expected " + (one == first.end() ? "none" : Utf8(*one)) +
           ", actual " + (other == second.end() ? "none" : Utf8(*other));
}

void RegisterScriptHost(CallScript& script)
{
    CallScript unused({});
    g_host = &unused;
    SetVssFileManagerLogger(&AddLogLine, &AddKeepAlive, &AddLogLine);
    g_host = &script;
}

std::wstring LogLine(int level, const char* format, const std::vector<std::wstring>& arguments)
{
    std::wstring line = L"log " + std::to_wstring(level) + L" " + Wide(format);
    for (const std::wstring& argument : arguments) {
        line += L" | " + argument;
    }
    return line;
}

void AddFailureReport(CallScript& script, const FailureReport& report, DWORD error)
{
    if (error == ERROR_SUCCESS) {
        return;
    }
    const bool hasMessage = !script.Add(MessageCall(error)).has_value();
    script.Add(LogLine(report.level, report.titleFormat, {report.name, std::to_wstring(error)}));
    script.Add(LogLine(report.level, "   - Returned HRESULT = 0x%08lx\n", {HResultOf(error)}));
    if (hasMessage) {
        script.Add(LogLine(report.level, "   - Error text: %S\n", {MessageOf(error)}));
    }
    ::SetLastError(error);
}

DWORD WINAPI FormatScriptMessage(DWORD /*flags*/, const void* /*source*/, DWORD error, DWORD /*language*/,
                                 wchar_t* buffer, DWORD /*size*/, va_list* /*arguments*/)
{
    if (!g_host->Succeeds(MessageCall(error))) {
        return 0;
    }
    const std::wstring message = MessageOf(error);
    auto* copy = static_cast<wchar_t*>(::LocalAlloc(LPTR, (message.size() + 1) * sizeof(wchar_t)));
    message.copy(copy, message.size());
    *reinterpret_cast<wchar_t**>(buffer) = copy; // FORMAT_MESSAGE_ALLOCATE_BUFFER
    return static_cast<DWORD>(message.size());
}
