// A library with the imports of the DLL and a static object, and nothing else: the least that loading can cost.

#include <bench/PlainImports.h> // generated from tests/contract/imports.txt

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

namespace {

std::vector<std::wstring> g_strings = {L"a string that needs memory of its own"};

} // namespace

// Uses every import, so that the linker keeps them all.
extern "C" __declspec(dllexport) std::size_t SumPlainImports()
{
    return g_strings.size() + SumOfImports();
}
