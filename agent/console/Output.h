// The agent's streams: results on standard output, messages on standard error and in the log file, all in UTF-8.

#pragma once

#include <optional>
#include <string>
#include <string_view>

namespace agent {

struct OutputOptions {
    bool json = false;    // one JSON object on standard output, nothing else
    bool verbose = false; // the library's log on standard error
    bool quiet = false;   // no progress, notes or summary
    std::wstring log;     // a file that receives every message; empty: none
};

// Keeps standard output for the agent alone: what the library prints there goes to standard error with `verbose`, and
// nowhere without. Call once, before the library does anything. @return a reason when the log file cannot be opened.
std::optional<std::wstring> OpenOutput(const OutputOptions& options);

bool IsJson();
bool IsQuiet();

// Results for people; nothing is written with --json. No line end is added.
void WriteResult(std::wstring_view result);

// The one JSON object.
void WriteObject(std::string_view json);

// A line for standard error and the log file. The status line is cleared before and drawn again after it.
void WriteMessage(std::wstring_view line);

// A line for the log file alone.
void WriteLog(std::wstring_view line);

// The line on the terminal that is written over again and again. An empty one clears it. Any thread may call it.
bool HasStatusLine(); // whether standard output is a terminal for people
void ShowStatus(std::wstring_view line);

// Whether something for standard output could not be written: it is closed or full.
bool IsOutputLost();

} // namespace agent
