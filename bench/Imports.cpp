// Replacement of one import of the library.

#include "bench/Imports.h"

#include <windows.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <map>
#include <string>
#include <utility>

namespace bench {

namespace {

BYTE* At(HMODULE module, ULONGLONG offset)
{
    return reinterpret_cast<BYTE*>(module) + offset;
}

void** FindSlot(const std::string& function)
{
    const HMODULE module = ::GetModuleHandleW(L"Kestrovane.dll");
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(At(module, static_cast<ULONGLONG>(dos->e_lfanew)));
    const DWORD imports = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    for (auto* dll = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(At(module, imports)); dll->Name != 0; ++dll) {
        auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(At(module, dll->OriginalFirstThunk));
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(At(module, dll->FirstThunk));
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(At(module, name->u1.AddressOfData));
            if (!IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal) && function == reinterpret_cast<const char*>(byName->Name)) {
                return reinterpret_cast<void**>(&slot->u1.Function);
            }
        }
    }
    static_cast<void>(std::fprintf(stderr, "the library does not import %s\n", function.c_str()));
    std::exit(EXIT_FAILURE);
}

// Found once: the look-up would be part of what is measured.
void** SlotOf(const char* function)
{
    static std::map<std::string, void**> slots;
    void**& slot = slots[function];
    if (slot == nullptr) {
        slot = FindSlot(function);
        DWORD protection = 0;
        ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    }
    return slot;
}

} // namespace

ImportPatch::ImportPatch(const char* function, void* replacement)
    : m_slot(SlotOf(function)), m_original(std::exchange(*m_slot, replacement))
{
}

ImportPatch::~ImportPatch()
{
    *m_slot = m_original;
}

} // namespace bench
