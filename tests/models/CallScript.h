// The calls that a function makes of a simulated platform and of the host, in their order, and those that fail.
//
// The library and a model of it run with equal scripts: both must make the same calls.

#pragma once

#include "tests/sweeps/RandomInput.h"

#include <windows.h>

#include <map>
#include <optional>
#include <string>
#include <vector>

class CallScript {
public:
    // The calls that fail, by their number from 0, with their errors. A log line with an error sets it: hosts may.
    using Failures = std::map<std::size_t, DWORD>;

    explicit CallScript(Failures failures) : m_failures(std::move(failures)) {}

    // Adds a call. Returns the error with which it fails; nothing if it succeeds.
    std::optional<DWORD> Add(std::wstring call);
    // The same. Returns whether the call succeeds, after setting the last error if it fails.
    bool Succeeds(std::wstring call);

    [[nodiscard]] const std::vector<std::wstring>& Calls() const { return m_calls; }

private:
    Failures m_failures;
    std::vector<std::wstring> m_calls;
};

// At random up to three failures among the first calls.
CallScript::Failures RandomFailures(RandomInput& input, std::size_t calls);

// The first call in which two scripts differ, for a message; empty if they are equal.
std::string FirstDifference(const CallScript& expected, const CallScript& actual);

// Registers host functions that add each log line and keep-alive to the script. It must outlive the calls.
void RegisterScriptHost(CallScript& script);

// A log line as the host's function adds it: the level, the format and the arguments, which it must name.
std::wstring LogLine(int level, const char* format, const std::vector<std::wstring>& arguments);

// The lines of a failure report, whose message comes from `message`: a call of FormatMessageW.
struct FailureReport {
    const char* titleFormat;
    const wchar_t* name;
    int level;
};
void AddFailureReport(CallScript& script, const FailureReport& report, DWORD error);

// Replaces FormatMessageW in the library: it adds its call to the script that is registered.
DWORD WINAPI FormatScriptMessage(DWORD flags, const void* source, DWORD error, DWORD language, wchar_t* buffer,
                                 DWORD size, va_list* arguments);
