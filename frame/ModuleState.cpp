// The part of the module's state that is initialised data: it is valid before any code of the module runs.

#include "frame/ModuleState.h"

#include "frame/LogSinks.h"

constinit VssFileManagerLogFn g_pfnLogger = &DefaultLogSink;
constinit VssFileManagerLogFn g_pfnAuxLogger = &PlainLogSink;
constinit VssFileManagerKeepAliveFn g_pfnKeepAlive = &NullKeepAlive;
constinit std::int32_t g_detailLevel = 0;
constinit std::int32_t g_errorReportLevel = 0;
