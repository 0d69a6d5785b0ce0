// The file manager's error state and host functions.

#include "frame/FileManager.h"

#include "frame/FailureReport.h"
#include "frame/LogSinks.h"
#include "frame/ModuleState.h"

#include <windows.h>

#include <cerrno>

namespace quorvantavss {

CVssFileManager::CVssFileManager() noexcept
    : m_pfnLogger(&DefaultLogSink),
      m_pfnAuxLogger(&PlainLogSink),
      m_pfnKeepAlive(&NullKeepAlive),
      m_keepAliveStamp(std::clock())
{
}

std::wstring CVssFileManager::GetErrorText()
{
    return m_errorText;
}

void CVssFileManager::SetErrnoError(std::int32_t code, const std::wstring& subject)
{
    constexpr std::size_t kLongestText = 128; // characters
    wchar_t text[kLongestText] = {};
    ::wsprintfW(text, L"errno: %d", code);
    m_errorText = text;
    if (!subject.empty()) {
        m_errorText += L' ';
        m_errorText += subject;
    }
    m_lastError = code;
}

void CVssFileManager::ReportLastError()
{
    const DWORD error = ::GetLastError();
    if (error == ERROR_SUCCESS) {
        return;
    }
    m_errorText = L"CVssFileManager call failed";
    // The name stays empty on purpose, whatever the error text holds: hosts parse this line.
    LogWin32Failure(m_pfnLogger, g_errorReportLevel, "   - %S: %d\n", L"", error);
}

void CVssFileManager::SetHostFunctions(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                       VssFileManagerLogFn auxLogger)
{
    m_pfnLogger = logger;
    m_pfnAuxLogger = auxLogger;
    m_pfnKeepAlive = keepAlive;
}

void CVssFileManager::RecordErrno(const std::wstring& subject)
{
    SetErrnoError(errno, subject);
}

} // namespace quorvantavss
