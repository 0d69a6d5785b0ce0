// A library with the same runtime and a static object, and nothing else: the least that loading can cost.

#include <windows.h>

#include <string>
#include <vector>

namespace {

std::vector<std::wstring> g_strings = {L"a string that needs memory of its own"};

} // namespace

extern "C" __declspec(dllexport) std::size_t CountPlainStrings()
{
    return g_strings.size() + ::GetTickCount64();
}
