// Failing calls of Windows, simulated: a library that is loaded into the agent and replaces its imports.
//
// KESTROVANE_CALLS: names of imports, with a blank between two
// KESTROVANE_FAILING: which of them fails, the first and the last of its calls that fail, its result and last error then
// KESTROVANE_COUNTS: the file that holds at the end how often each was called, and which others of Windows there are

#include "tests/support/ImportSlots.h"

#include <windows.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <cstdint>
#include <cstring>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

namespace {

using Word = std::uintptr_t; // an argument or a result in its register; no import takes floating-point numbers

constexpr std::size_t kMostImports = 80; // as many replacements are generated
constexpr int kNotImported = -1;

struct State {
    std::vector<std::string> names;
    std::string others;
    std::string counts; // the file
    std::array<void*, kMostImports> originals = {};
    std::array<std::atomic<int>, kMostImports> calls = {};
    std::size_t failing = kMostImports; // none
    int first = 0;
    int last = 0;
    Word result = 0;
    DWORD error = 0;
};

State& TheState()
{
    static State state;
    return state;
}

using AnyImport = Word(__cdecl*)(Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word);

Word Fail(const State& state, Word transferred)
{
    const std::string& name = state.names[state.failing];
    if (name == "ReadFile" || name == "WriteFile") {
        *reinterpret_cast<DWORD*>(transferred) = 0;
    }
    if (state.error != ERROR_SUCCESS) {
        ::SetLastError(state.error);
    }
    return state.result;
}

template <std::size_t Import>
Word __cdecl Replacement(Word a, Word b, Word c, Word d, Word e, Word f, Word g, Word h, Word i, Word j, Word k, Word l)
{
    State& state = TheState();
    const int call = ++state.calls[Import];
    if (Import == state.failing && call >= state.first && call <= state.last) {
        return Fail(state, d);
    }
    return reinterpret_cast<AnyImport>(state.originals[Import])(a, b, c, d, e, f, g, h, i, j, k, l);
}

template <std::size_t... Import>
constexpr std::array<AnyImport, sizeof...(Import)> Replacements(std::index_sequence<Import...> /*imports*/)
{
    return {&Replacement<Import>...};
}
constexpr auto kReplacements = Replacements(std::make_index_sequence<kMostImports>());

std::string Variable(const char* name)
{
    constexpr DWORD kLongest = 4096; // characters
    std::string value(kLongest, '\0');
    value.resize(::GetEnvironmentVariableA(name, value.data(), kLongest));
    return value;
}

void ReadVariables(State& state)
{
    state.counts = Variable("KESTROVANE_COUNTS");
    std::istringstream names(Variable("KESTROVANE_CALLS"));
    for (std::string name; names >> name;) {
        state.names.push_back(name);
    }
    std::istringstream failing(Variable("KESTROVANE_FAILING"));
    failing >> state.failing >> state.first >> state.last >> state.result >> state.error;
}

bool IsOfWindows(const char* library)
{
    constexpr const char* kLibraries[] = {"ADVAPI32.dll", "bcrypt.dll", "KERNEL32.dll", "SHELL32.dll"};
    return std::any_of(std::begin(kLibraries), std::end(kLibraries),
                       [&](const char* name) { return ::_stricmp(library, name) == 0; });
}

void PatchImports(State& state)
{
    for (std::size_t i = 0; i < state.names.size(); ++i) {
        state.calls[i] = kNotImported;
    }
    VisitImports(::GetModuleHandleW(nullptr), [&](const char* library, const char* function, void** slot) {
        const auto name = std::find(state.names.begin(), state.names.end(), function);
        const auto import = static_cast<std::size_t>(name - state.names.begin());
        if (name != state.names.end()) {
            state.calls[import] = 0;
            state.originals[import] = ExchangeImport(slot, reinterpret_cast<void*>(kReplacements[import]));
        } else if (IsOfWindows(library)) {
            state.others += std::string(function) + " ";
        }
    });
}

void WriteCounts(const State& state)
{
    std::string text;
    for (std::size_t i = 0; i < state.names.size(); ++i) {
        text += std::to_string(state.calls[i]) + " ";
    }
    text += state.others;
    const HANDLE file = ::CreateFileA(state.counts.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, 0, nullptr);
    DWORD written = 0;
    ::WriteFile(file, text.data(), static_cast<DWORD>(text.size()), &written, nullptr);
    ::CloseHandle(file);
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, LPVOID /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH) {
        ReadVariables(TheState());
        PatchImports(TheState());
    } else if (reason == DLL_PROCESS_DETACH) {
        WriteCounts(TheState());
    }
    return TRUE;
}
