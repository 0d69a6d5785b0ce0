// The agent's streams.

#include "agent/console/Output.h"

#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <windows.h>

#include <fcntl.h>
#include <io.h>

#include <algorithm>
#include <cstdio>
#include <mutex>

namespace agent {

namespace {

struct Streams {
    OutputOptions options;
    UniqueHandle result;
    UniqueHandle log;
    std::wstring status; // what the status line shows
    bool isLost = false;
    std::mutex mutex;
};

Streams& TheStreams()
{
    static Streams streams;
    return streams;
}

bool IsConsole(HANDLE stream)
{
    DWORD mode = 0;
    return ::GetConsoleMode(stream, &mode) != 0;
}

bool WriteBytes(HANDLE stream, std::string_view bytes)
{
    while (!bytes.empty()) {
        DWORD written = 0;
        if (!::WriteFile(stream, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr) || written == 0) {
            return false;
        }
        bytes.remove_prefix(written);
    }
    return true;
}

bool Write(HANDLE stream, std::wstring_view string)
{
    DWORD written = 0;
    if (IsConsole(stream)) {
        return ::WriteConsoleW(stream, string.data(), static_cast<DWORD>(string.size()), &written, nullptr) != FALSE;
    }
    return WriteBytes(stream, Utf8(string));
}

// Replaces the status line; what the new one is shorter is overwritten with blanks.
void DrawStatus(Streams& streams, const std::wstring& line)
{
    const std::size_t rest = streams.status.size() - std::min(streams.status.size(), line.size());
    std::wstring drawn = L"\r" + line + std::wstring(rest, L' ');
    if (line.empty()) {
        drawn += L'\r';
    }
    Write(streams.result.get(), drawn);
    streams.status = line;
}

UniqueHandle DuplicateOutput()
{
    HANDLE copy = nullptr;
    ::DuplicateHandle(::GetCurrentProcess(), ::GetStdHandle(STD_OUTPUT_HANDLE), ::GetCurrentProcess(), &copy, 0, FALSE,
                      DUPLICATE_SAME_ACCESS);
    return Own(copy);
}

// The library prints through the C runtime, so its descriptor 1 is what has to change.
void RedirectLibrary(bool verbose)
{
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

} // namespace

std::optional<std::wstring> OpenOutput(const OutputOptions& options)
{
    Streams& streams = TheStreams();
    streams.options = options;
    if (streams.result == nullptr) { // the library's redirection would be taken for the output
        streams.result = DuplicateOutput();
    }
    RedirectLibrary(options.verbose);
    if (options.log.empty()) {
        return std::nullopt;
    }
    streams.log = Own(::CreateFileW(options.log.c_str(), FILE_APPEND_DATA, FILE_SHARE_READ, nullptr, OPEN_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr));
    return streams.log == nullptr ? std::optional(LastReason()) : std::nullopt;
}

bool IsJson()
{
    return TheStreams().options.json;
}

bool IsQuiet()
{
    return TheStreams().options.quiet;
}

void WriteResult(std::wstring_view result)
{
    Streams& streams = TheStreams();
    if (!streams.options.json) {
        const std::lock_guard lock(streams.mutex);
        streams.isLost = !Write(streams.result.get(), result) || streams.isLost;
    }
}

void WriteObject(std::string_view json)
{
    Streams& streams = TheStreams();
    const std::lock_guard lock(streams.mutex);
    streams.isLost = !WriteBytes(streams.result.get(), json) || streams.isLost;
}

void WriteMessage(std::wstring_view line)
{
    Streams& streams = TheStreams();
    {
        const std::lock_guard lock(streams.mutex);
        const std::wstring status = streams.status;
        if (!status.empty()) {
            DrawStatus(streams, L"");
        }
        Write(::GetStdHandle(STD_ERROR_HANDLE), std::wstring(L"kestrovane-agent: ").append(line).append(L"\n"));
        if (!status.empty()) {
            DrawStatus(streams, status);
        }
    }
    WriteLog(line);
}

void WriteLog(std::wstring_view line)
{
    const Streams& streams = TheStreams();
    if (streams.log != nullptr) {
        WriteBytes(streams.log.get(), Utf8(std::wstring(line).append(L"\r\n")));
    }
}

bool HasStatusLine()
{
    const Streams& streams = TheStreams();
    return !streams.options.json && !streams.options.quiet && IsConsole(streams.result.get());
}

void ShowStatus(std::wstring_view line)
{
    Streams& streams = TheStreams();
    const std::lock_guard lock(streams.mutex);
    DrawStatus(streams, std::wstring(line));
}

bool IsOutputLost()
{
    return TheStreams().isLost;
}

} // namespace agent
