// The two streams of the agent: results on standard output, messages on standard error, both in UTF-8.

#pragma once

#include <string_view>

namespace agent {

// Keeps standard output for the agent alone: what the library prints there goes to standard error with `verbose`, and
// nowhere without. Call once, before the library does anything.
void OpenOutput(bool verbose);

void WriteResult(std::wstring_view text); // no line end is added
void WriteMessage(std::wstring_view line);
bool IsResultTerminal();

} // namespace agent
