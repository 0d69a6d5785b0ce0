// Replacing one export of a loaded module for the modules that are loaded later, before any code of theirs runs.
//
// A module that is loaded already keeps what it has imported. A simulation, like a patched import.

#pragma once

#include <windows.h>

class ExportPatch {
public:
    // Fails the test when the module has no such export.
    template <typename Function>
    ExportPatch(const char* module, const char* function, Function* replacement)
        : ExportPatch(module, function, reinterpret_cast<void*>(replacement))
    {
    }
    ~ExportPatch();
    ExportPatch(const ExportPatch&) = delete;
    ExportPatch& operator=(const ExportPatch&) = delete;

private:
    ExportPatch(const char* module, const char* function, void* replacement);

    DWORD* m_slot = nullptr;
    DWORD m_original = 0; // offset from the module's start
    void* m_bridge = nullptr;
};
