// The composition root: what is built when the DLL is loaded, in this order, and destroyed in reverse.
//
// All of it stands in one translation unit, because the order across units is not that of the sources.

#include "frame/FileManager.h"
#include "frame/ModuleState.h"
#include "volumes/HardDiskManager.h"

std::clock_t g_keepAliveStamp = std::clock(); // NOLINT(cert-err58-cpp): clock throws nothing
quorvantavss::CVssFileManager g_fileManager;
quorvantavss::CHardDiskManager g_hardDiskManager;
