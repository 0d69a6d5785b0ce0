// The thread's last error across a clean-up or a log line.

#pragma once

#include <windows.h>

// Restores the thread's last error at the end of the scope.
class LastErrorGuard {
public:
    LastErrorGuard() noexcept : m_error(::GetLastError()) {}
    ~LastErrorGuard() { ::SetLastError(m_error); }
    LastErrorGuard(const LastErrorGuard&) = delete;
    LastErrorGuard& operator=(const LastErrorGuard&) = delete;

private:
    DWORD m_error;
};
