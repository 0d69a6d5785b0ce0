// The state of the loaded module: the host's functions, the levels of log lines and the keep-alive stamp.

#pragma once

#include <Kestrovane.h>

#include <cstdint>
#include <ctime>

extern VssFileManagerLogFn g_pfnLogger;          // receives the log lines of the free functions
extern VssFileManagerLogFn g_pfnAuxLogger;       // kept for the host, never called
extern VssFileManagerKeepAliveFn g_pfnKeepAlive; // called by SendKA and the owner change
extern std::int32_t g_detailLevel;               // level of detail lines; stays 0
extern std::int32_t g_errorReportLevel;          // level of failure reports; stays 0
extern std::clock_t g_keepAliveStamp;            // clock ticks at the owner change's last keep-alive

constexpr int kProgressLevel = 2;          // level of location lines and progress lines
constexpr int kKeepAlivePeriod = 600;      // seconds that the host is told to wait
constexpr int kClockTicksPerSecond = 1000; // of the runtime's clock()

// Returns the clock ticks from `stamp` to `now`. The 32-bit tick count may have wrapped in between.
inline std::int32_t TicksSince(std::clock_t stamp, std::clock_t now) noexcept
{
    return static_cast<std::int32_t>(static_cast<std::uint32_t>(now) - static_cast<std::uint32_t>(stamp));
}

// Logs the line that SendKA writes. The owner change writes the same line with its own keep-alives.
void LogSendKaLocation();
