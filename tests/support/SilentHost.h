// A host whose functions record nothing and allocate nothing.

#pragma once

#include <Kestrovane.h>

inline int __cdecl SilentLog(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

inline int __cdecl SilentKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// Registers a silent host, which stays until the next registration.
inline void RegisterSilentHost()
{
    SetVssFileManagerLogger(&SilentLog, &SilentKeepAlive, &SilentLog);
}
