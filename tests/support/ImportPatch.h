// Replacing one import of a loaded module, so that Windows and the runtime library answer what a test wants.
//
// The module's own calls change, the test's stay real. A simulation: what it shows is how the library takes the answer.

#pragma once

#include <windows.h>

class ImportPatch {
public:
    // Fails the test when the module has no such import: a test that replaces nothing shows nothing.
    template <typename Function>
    ImportPatch(const char* module, const char* function, Function* replacement)
        : ImportPatch(module, function, reinterpret_cast<void*>(replacement))
    {
    }
    // Patches the library.
    template <typename Function>
    ImportPatch(const char* function, Function* replacement) : ImportPatch("Kestrovane.dll", function, replacement)
    {
    }
    ~ImportPatch();
    ImportPatch(const ImportPatch&) = delete;
    ImportPatch& operator=(const ImportPatch&) = delete;

    // The function that stood there before.
    template <typename Function>
    [[nodiscard]] Function* Original() const
    {
        return reinterpret_cast<Function*>(m_original);
    }

private:
    ImportPatch(const char* module, const char* function, void* replacement);

    void** m_slot = nullptr;
    void* m_original = nullptr;
};
