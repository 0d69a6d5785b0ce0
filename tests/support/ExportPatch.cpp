// Replacing one export of a loaded module.

#include "tests/support/ExportPatch.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <cstring>
#include <utility>

namespace {

BYTE* At(HMODULE module, DWORD offset)
{
    return reinterpret_cast<BYTE*>(module) + offset;
}

const IMAGE_OPTIONAL_HEADER& Headers(HMODULE module)
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(module);
    return reinterpret_cast<const IMAGE_NT_HEADERS*>(At(module, static_cast<DWORD>(dos->e_lfanew)))->OptionalHeader;
}

// Where the module keeps the offset of an exported function; null when it does not export it.
DWORD* FindSlot(HMODULE module, const char* function)
{
    const DWORD offset = Headers(module).DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    const auto* exports = reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(At(module, offset));
    const auto* names = reinterpret_cast<const DWORD*>(At(module, exports->AddressOfNames));
    const auto* ordinals = reinterpret_cast<const WORD*>(At(module, exports->AddressOfNameOrdinals));
    for (DWORD i = 0; i < exports->NumberOfNames; ++i) {
        if (std::strcmp(reinterpret_cast<const char*>(At(module, names[i])), function) == 0) {
            return reinterpret_cast<DWORD*>(At(module, exports->AddressOfFunctions)) + ordinals[i];
        }
    }
    return nullptr;
}

DWORD Exchange(DWORD* slot, DWORD value)
{
    DWORD protection = 0;
    ::VirtualProtect(slot, sizeof(*slot), PAGE_READWRITE, &protection);
    const DWORD old = std::exchange(*slot, value);
    ::VirtualProtect(slot, sizeof(*slot), protection, &protection);
    return old;
}

// A jump to `target`, above the module and near enough for a 32-bit offset.
void* BuildBridge(HMODULE module, void* target)
{
    constexpr std::size_t kStep = 0x10000;      // granularity of reservations, bytes
    constexpr std::size_t kReach = 0x70000000U; // bytes
    std::array<unsigned char, 12> code = {0x48, 0xB8, 0, 0, 0, 0, 0, 0, 0, 0, 0xFF, 0xE0}; // mov rax, target; jmp rax
    std::memcpy(&code[2], &target, sizeof(target));
    for (std::size_t offset = Headers(module).SizeOfImage; offset < kReach; offset += kStep) {
        const auto place = (reinterpret_cast<std::uintptr_t>(module) + offset + kStep - 1) & ~(kStep - 1);
        void* bridge = ::VirtualAlloc(reinterpret_cast<void*>(place), code.size(), MEM_RESERVE | MEM_COMMIT,
                                      PAGE_EXECUTE_READWRITE);
        if (bridge != nullptr) {
            std::memcpy(bridge, code.data(), code.size());
            return bridge;
        }
    }
    return nullptr;
}

} // namespace

ExportPatch::ExportPatch(const char* module, const char* function, void* replacement)
{
    const HMODULE loaded = ::GetModuleHandleA(module);
    DWORD* slot = loaded == nullptr ? nullptr : FindSlot(loaded, function);
    m_bridge = slot == nullptr ? nullptr : BuildBridge(loaded, replacement);
    if (m_bridge == nullptr) {
        ADD_FAILURE() << function << " of " << module << " could not be replaced";
        return;
    }
    m_slot = slot;
    m_original = Exchange(m_slot, static_cast<DWORD>(static_cast<BYTE*>(m_bridge) - At(loaded, 0)));
}

// Modules that were loaded meanwhile must be gone by now.
ExportPatch::~ExportPatch()
{
    if (m_slot != nullptr) {
        Exchange(m_slot, m_original);
    }
    if (m_bridge != nullptr) {
        ::VirtualFree(m_bridge, 0, MEM_RELEASE);
    }
}
