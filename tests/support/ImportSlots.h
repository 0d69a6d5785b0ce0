// Where a loaded module keeps the addresses of the functions that it imports.

#pragma once

#include <windows.h>

#include <utility>

inline BYTE* AddressIn(HMODULE module, DWORD offset)
{
    return reinterpret_cast<BYTE*>(module) + offset;
}

// Calls visit(library, function, slot) for each function that the module imports by its name.
template <typename Visit>
void VisitImports(HMODULE module, const Visit& visit)
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto* headers =
        reinterpret_cast<const IMAGE_NT_HEADERS*>(AddressIn(module, static_cast<DWORD>(dos->e_lfanew)));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    auto* library = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(AddressIn(module, imports));
    for (; library->Name != 0; ++library) {
        auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(AddressIn(module, library->OriginalFirstThunk));
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(AddressIn(module, library->FirstThunk));
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                const auto offset = static_cast<DWORD>(name->u1.AddressOfData);
                const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(AddressIn(module, offset));
                visit(reinterpret_cast<const char*>(AddressIn(module, library->Name)),
                      reinterpret_cast<const char*>(byName->Name), reinterpret_cast<void**>(&slot->u1.Function));
            }
        }
    }
}

// Returns what the slot held before.
inline void* ExchangeImport(void** slot, void* function)
{
    DWORD protection = 0;
    ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    void* const old = std::exchange(*slot, function);
    ::VirtualProtect(slot, sizeof(*slot), protection, &protection);
    return old;
}
