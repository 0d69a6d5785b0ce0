// Windows' error codes as messages.

#pragma once

#include <windows.h>

#include <string>

namespace agent {

// Windows' message for an error, without its line end, followed by the code: "Access denied. (error 5)".
std::wstring SystemReason(DWORD error);

// The same for the thread's last error. Call it in the statement after the call that failed.
std::wstring LastReason();

} // namespace agent
