// The composition root: the objects that exist while the DLL is loaded. They are created in this order and destroyed in
// reverse.
//
// They share one translation unit, because the order of initialisation across translation units is not defined.

#include "frame/FileManager.h"
#include "frame/ModuleState.h"
#include "volumes/HardDiskManager.h"

std::clock_t g_keepAliveStamp = std::clock(); // NOLINT(cert-err58-cpp): clock throws nothing
quorvantavss::CVssFileManager g_fileManager;
quorvantavss::CHardDiskManager g_hardDiskManager;
