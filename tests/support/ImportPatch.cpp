// Replacing one import of a loaded module.

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <cstring>
#include <utility>

namespace {

BYTE* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<BYTE*>(module) + offset;
}

const IMAGE_DATA_DIRECTORY& ImportDirectory(HMODULE module)
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(At(module, static_cast<DWORD>(dos->e_lfanew)));
    return headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
}

// Where the module keeps the address of an imported function; null when it does not import it.
void** FindSlot(HMODULE module, const char* function)
{
    const DWORD imports = ImportDirectory(module).VirtualAddress;
    auto* descriptor = reinterpret_cast<IMAGE_IMPORT_DESCRIPTOR*>(At(module, imports));
    for (; descriptor->Name != 0; ++descriptor) {
        auto* name = reinterpret_cast<IMAGE_THUNK_DATA*>(At(module, descriptor->OriginalFirstThunk));
        auto* slot = reinterpret_cast<IMAGE_THUNK_DATA*>(At(module, descriptor->FirstThunk));
        for (; name->u1.AddressOfData != 0; ++name, ++slot) {
            if (IMAGE_SNAP_BY_ORDINAL(name->u1.Ordinal)) {
                continue;
            }
            const auto offset = static_cast<DWORD>(name->u1.AddressOfData);
            const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(At(module, offset));
            if (std::strcmp(reinterpret_cast<const char*>(byName->Name), function) == 0) {
                return reinterpret_cast<void**>(&slot->u1.Function);
            }
        }
    }
    return nullptr;
}

void* Exchange(void** slot, void* value)
{
    DWORD protection = 0;
    ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    void* old = std::exchange(*slot, value);
    ::VirtualProtect(slot, sizeof(*slot), protection, &protection);
    return old;
}

} // namespace

ImportPatch::ImportPatch(const char* module, const char* function, void* replacement)
{
    const HMODULE loaded = ::GetModuleHandleA(module);
    m_slot = loaded == nullptr ? nullptr : FindSlot(loaded, function);
    if (m_slot == nullptr) {
        ADD_FAILURE() << module << " does not import " << function;
        return;
    }
    m_original = Exchange(m_slot, replacement);
}

ImportPatch::~ImportPatch()
{
    if (m_slot != nullptr) {
        Exchange(m_slot, m_original);
    }
}
