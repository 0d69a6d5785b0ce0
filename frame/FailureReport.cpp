// Turning a Win32 error into log lines.

#include "frame/FailureReport.h"

#include "frame/UniqueResource.h"

namespace {

constexpr DWORD kMessageFlags = FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM;
constexpr DWORD kUserDefaultLanguage = 0x400;

// Windows' text for an error code, null when there is none.
class SystemMessage {
public:
    explicit SystemMessage(DWORD error) noexcept
    {
        ::FormatMessageW(kMessageFlags, nullptr, error, kUserDefaultLanguage, reinterpret_cast<wchar_t*>(&m_text), 0,
                         nullptr);
    }
    ~SystemMessage() { ::LocalFree(m_text); }
    SystemMessage(const SystemMessage&) = delete;
    SystemMessage& operator=(const SystemMessage&) = delete;

    const wchar_t* Text() const noexcept { return m_text; }

private:
    wchar_t* m_text = nullptr;
};

} // namespace

void LogWin32Failure(VssFileManagerLogFn log, int level, const char* titleFormat, const wchar_t* name, DWORD error)
{
    const LastErrorKeeper keeper;
    const SystemMessage message(error);
    log(level, titleFormat, name, static_cast<int>(error));
    log(level, "   - Returned HRESULT = 0x%08lx\n", static_cast<unsigned long>(HResultFromWin32(error)));
    if (message.Text() != nullptr) {
        log(level, "   - Error text: %S\n", message.Text());
    }
}
