// Ctrl-C.

#include "agent/console/Interrupt.h"

#include <windows.h>

#include <atomic>

namespace agent {

namespace {

std::atomic<bool> g_interrupted = false;

BOOL WINAPI NoteInterrupt(DWORD event)
{
    if (event != CTRL_C_EVENT && event != CTRL_BREAK_EVENT) {
        return FALSE;
    }
    g_interrupted = true;
    return TRUE;
}

} // namespace

void WatchForInterrupt()
{
    // A parent that ignores Ctrl-C would hand that on.
    ::SetConsoleCtrlHandler(nullptr, FALSE);
    ::SetConsoleCtrlHandler(&NoteInterrupt, TRUE);
}

bool IsInterrupted()
{
    return g_interrupted;
}

} // namespace agent
