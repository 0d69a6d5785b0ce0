// Windows' error codes as messages.

#include "agent/platform/Errors.h"

#include "agent/platform/Handles.h"

namespace agent {

std::wstring SystemReason(DWORD error)
{
    if (error == ERROR_SUCCESS) {
        return L"Windows gives no reason.";
    }
    wchar_t* allocated = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0,
                     reinterpret_cast<wchar_t*>(&allocated), 0, nullptr);
    const UniqueLocal<wchar_t> message(allocated);
    std::wstring reason = message == nullptr ? L"Windows reports an error." : message.get();
    reason.erase(reason.find_last_not_of(L" \r\n") + 1);
    return reason + L" (error " + std::to_wstring(error) + L")";
}

std::wstring LastReason()
{
    return SystemReason(::GetLastError());
}

} // namespace agent
