// The file-manager object: its error state, the host functions that it uses, and their registration.

#include "frame/FileManager.h"

#include "frame/FailureReport.h"
#include "frame/LogSinks.h"
#include "frame/ModuleState.h"

#include <windows.h>

#include <cerrno>

namespace {

constexpr const char* kLocationFormat = "%s::%d::%s\n";

// Fixed, whatever the layout of this file: hosts search their logs for these values.
constexpr const char* kLocationFile = "frame/FileManager.cpp";
constexpr int kSetLoggerLine = 147;
constexpr int kSendKaLine = 154;

} // namespace

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
    constexpr std::size_t kErrorTextCapacity = 128; // characters
    wchar_t text[kErrorTextCapacity] = {};
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
    UniqueLocalMemory<wchar_t> message = FormatSystemError(error);
    // The name is deliberately empty, whatever the error text holds: hosts parse this line.
    LogWin32Failure(m_pfnLogger, g_errorReportLevel, "   - %S: %d\n", L"", error, message.get());
    // Kept for compatibility: LocalFree is called even without a message.
    const LastErrorGuard keepLastError;
    ::LocalFree(message.release());
}

void CVssFileManager::SetHostFunctions(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                       VssFileManagerLogFn auxLogger)
{
    m_pfnLogger = logger;
    m_pfnAuxLogger = auxLogger;
    m_pfnKeepAlive = keepAlive;
}

bool CVssFileManager::BeginOperation(const std::wstring& path)
{
    ClearErrorText();
    if (path.empty()) {
        ReportLastError();
        return false;
    }
    return true;
}

void CVssFileManager::RecordErrno(const std::wstring& subject)
{
    SetErrnoError(errno, subject);
}

void CVssFileManager::TickKeepAlive()
{
    const double secondsSince = TicksSince(m_keepAliveStamp, std::clock()) / static_cast<double>(kClockTicksPerSecond);
    if (secondsSince + 1.0 > kKeepAlivePeriod) {
        m_pfnKeepAlive(kKeepAlivePeriod);
        m_keepAliveStamp = std::clock();
    }
}

} // namespace quorvantavss

void LogSendKaLocation()
{
    g_pfnLogger(kProgressLevel, kLocationFormat, kLocationFile, kSendKaLine, "SendKA");
}

void SetVssFileManagerLogger(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                             VssFileManagerLogFn auxLogger)
{
    g_pfnAuxLogger = auxLogger;
    g_pfnKeepAlive = keepAlive;
    g_pfnLogger = logger;
    logger(kProgressLevel, kLocationFormat, kLocationFile, kSetLoggerLine, "SetVssFileManagerLogger");
    g_fileManager.SetHostFunctions(logger, keepAlive, auxLogger);
}

void SendKA(const char* /*unused*/)
{
    LogSendKaLocation();
    g_pfnKeepAlive(kKeepAlivePeriod);
}
