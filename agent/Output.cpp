// The two streams of the agent.

#include "agent/Output.h"

#include "agent/Text.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <cstdio>
#include <string>

namespace agent {

namespace {

HANDLE g_result = INVALID_HANDLE_VALUE; // lives as long as the process

bool IsConsole(HANDLE stream)
{
    DWORD mode = 0;
    return ::GetConsoleMode(stream, &mode) != 0;
}

void Write(HANDLE stream, std::wstring_view text)
{
    DWORD written = 0;
    if (IsConsole(stream)) {
        ::WriteConsoleW(stream, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
        return;
    }
    const std::string utf8 = Utf8(text);
    ::WriteFile(stream, utf8.data(), static_cast<DWORD>(utf8.size()), &written, nullptr);
}

} // namespace

void OpenOutput(bool verbose)
{
    ::DuplicateHandle(::GetCurrentProcess(), ::GetStdHandle(STD_OUTPUT_HANDLE), ::GetCurrentProcess(), &g_result, 0,
                      FALSE, DUPLICATE_SAME_ACCESS);
    // The library prints through the C runtime, so its descriptor 1 is what has to change.
    if (verbose) {
        ::_dup2(::_fileno(stderr), ::_fileno(stdout));
        return;
    }
    const int nowhere = ::_wopen(L"NUL", _O_WRONLY);
    if (nowhere != -1) {
        ::_dup2(nowhere, ::_fileno(stdout));
        ::_close(nowhere);
    }
}

void WriteResult(std::wstring_view text)
{
    Write(g_result, text);
}

void WriteMessage(std::wstring_view line)
{
    Write(::GetStdHandle(STD_ERROR_HANDLE), std::wstring(L"kestrovane-agent: ").append(line).append(L"\n"));
}

bool IsResultTerminal()
{
    return IsConsole(g_result);
}

} // namespace agent
