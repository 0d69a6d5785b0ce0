// Registration of the host's functions, and the keep-alive call for the host's own use.

#include "frame/FileManager.h"

#include "frame/ModuleState.h"

namespace {

constexpr const char* kLocationFormat = "%s::%d::%s\n";

// Hosts search their logs for these three, so they do not follow the layout of the source.
constexpr const char* kLocationFile = "frame/FileManager.cpp";
constexpr int kSetLoggerLine = 147;
constexpr int kSendKaLine = 154;

} // namespace

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
