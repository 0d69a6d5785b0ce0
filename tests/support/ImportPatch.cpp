// Replacing one import of a loaded module.

#include "tests/support/ImportPatch.h"

#include "tests/support/ImportSlots.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

// Null when the module does not import the function.
void** FindSlot(HMODULE module, const char* function)
{
    void** found = nullptr;
    VisitImports(module, [&](const char* /*library*/, const char* name, void** slot) {
        if (found == nullptr && std::strcmp(name, function) == 0) {
            found = slot;
        }
    });
    return found;
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
    m_original = ExchangeImport(m_slot, replacement);
}

ImportPatch::~ImportPatch()
{
    if (m_slot != nullptr) {
        ExchangeImport(m_slot, m_original);
    }
}
