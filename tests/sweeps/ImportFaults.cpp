// Failing calls of any import of the library, and what its calls left open.

#include "tests/sweeps/ImportFaults.h"

#include "tests/support/ImportSlots.h"

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstring>
#include <cwchar>
#include <utility>

namespace {

constexpr const char* kHost = "kestrovane-sweeps.exe";

// No import takes more; to pass too many is harmless in the platform's calling convention.
constexpr std::size_t kArguments = 12;
using Arguments = std::array<Word, kArguments>;

constexpr const char* kResourceNames[] = {
    "", "handle", "file descriptor", "search", "runtime search", "local memory", "BSTR", "memory"};
static_assert(std::size(kResourceNames) == static_cast<std::size_t>(Resource::kCount));

struct DeferredClose {
    std::size_t import;
    Arguments arguments;
};

struct State {
    std::vector<void*> originals;
    std::vector<PlannedFailure> failures;
    std::vector<int> calls;
    std::vector<DeferredClose> deferred;
    std::array<int, static_cast<std::size_t>(Resource::kCount)> balance = {};
    std::wstring home;
    std::size_t changeDirectory = 0; // the import
    int injected = 0;
};
State g_state;

template <std::size_t>
using AnyWord = Word;

template <std::size_t... Position>
Word CallOriginal(std::size_t import, const Arguments& arguments, std::index_sequence<Position...> /*positions*/)
{
    auto* original = reinterpret_cast<Word (*)(AnyWord<Position>...)>(g_state.originals[import]);
    return original(arguments[Position]...);
}

Word CallOriginal(std::size_t import, const Arguments& arguments)
{
    return CallOriginal(import, arguments, std::make_index_sequence<kArguments>());
}

void CountResource(const FailingImport& import, int change)
{
    g_state.balance[static_cast<std::size_t>(import.resource)] += change;
}

bool IsWayBack(std::size_t import, const Arguments& arguments)
{
    return import == g_state.changeDirectory && g_state.home == reinterpret_cast<const wchar_t*>(arguments[0]);
}

bool IsDue(std::size_t import)
{
    const int call = g_state.calls[import];
    return std::any_of(g_state.failures.begin(), g_state.failures.end(), [&](const PlannedFailure& failure) {
        return failure.import == import && (failure.thenOn ? call >= failure.call : call == failure.call);
    });
}

// A closing call that fails is carried out later. For the library, the resource is closed.
void DeferClose(std::size_t index, const Arguments& arguments)
{
    const FailingImport& import = FailingImports()[index];
    const Word success = import.change(0, arguments.data()) < 0 ? 0 : 1;
    if (const int change = import.change(success, arguments.data()); change < 0) {
        CountResource(import, change);
        g_state.deferred.push_back({index, arguments});
    }
}

Word Fail(std::size_t index, const Arguments& arguments)
{
    const FailingImport& import = FailingImports()[index];
    ++g_state.injected;
    if (import.change != nullptr && !import.isRetried) {
        DeferClose(index, arguments);
    }
    if (import.spoil != nullptr) {
        import.spoil(arguments.data());
    }
    if (import.errnoCode != 0) {
        errno = import.errnoCode;
    }
    if (import.lastError != 0) {
        ::SetLastError(import.lastError);
    }
    return import.result;
}

Word Meet(std::size_t index, const Arguments& arguments)
{
    const FailingImport& import = FailingImports()[index];
    if (!IsWayBack(index, arguments)) {
        ++g_state.calls[index];
        if (IsDue(index)) {
            return Fail(index, arguments);
        }
    }
    const Word result = CallOriginal(index, arguments);
    if (import.change != nullptr) {
        CountResource(import, import.change(result, arguments.data()));
    }
    return result;
}

template <std::size_t Import>
Word __cdecl Replacement(Word a, Word b, Word c, Word d, Word e, Word f, Word g, Word h, Word i, Word j, Word k, Word l)
{
    return Meet(Import, {a, b, c, d, e, f, g, h, i, j, k, l});
}

using AnyImport = Word(__cdecl*)(Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word, Word);

constexpr std::size_t kMostImports = 80; // as many replacements are generated

constexpr std::size_t kMostFailures = 4;
constexpr std::size_t kMostDeferred = 256; // more closing calls than one call of the library makes

template <std::size_t... Import>
constexpr std::array<AnyImport, sizeof...(Import)> Replacements(std::index_sequence<Import...> /*imports*/)
{
    return {&Replacement<Import>...};
}
constexpr auto kReplacements = Replacements(std::make_index_sequence<kMostImports>());

int& BstrBalance()
{
    return g_state.balance[static_cast<std::size_t>(Resource::kBstr)];
}

// What the host itself imports. To call it by its name here would call the replacement.
decltype(&::SysAllocString) g_allocate = nullptr;
decltype(&::SysFreeString) g_free = nullptr;

BSTR WINAPI HostAllocates(const OLECHAR* string)
{
    BSTR copy = g_allocate(string);
    BstrBalance() += copy == nullptr ? 0 : 1;
    return copy;
}

void WINAPI HostFrees(BSTR string)
{
    BstrBalance() -= string == nullptr ? 0 : 1;
    g_free(string);
}

bool IsOfCxxRuntime(const char* library)
{
    constexpr const char* kRuntimes[] = {"libstdc++-6.dll", "libgcc_s_seh-1.dll", "libssp-0.dll",
                                         "libwinpthread-1.dll"};
    return std::any_of(std::begin(kRuntimes), std::end(kRuntimes),
                       [&](const char* runtime) { return ::_stricmp(library, runtime) == 0; });
}

} // namespace

ImportFaults::ImportFaults()
    : m_hostAllocates(kHost, "SysAllocString", &HostAllocates), m_hostFrees(kHost, "SysFreeString", &HostFrees)
{
    g_allocate = m_hostAllocates.Original<decltype(::SysAllocString)>();
    g_free = m_hostFrees.Original<decltype(::SysFreeString)>();
    const std::span<const FailingImport> imports = FailingImports();
    g_state = {};
    g_state.calls.resize(imports.size());
    g_state.originals.resize(imports.size());
    // Nothing is allocated while a test counts what the library allocates.
    g_state.failures.reserve(kMostFailures);
    g_state.deferred.reserve(kMostDeferred);
    for (std::size_t i = 0; i < imports.size() && i < kMostImports; ++i) {
        m_patches.push_back(std::make_unique<ImportPatch>(imports[i].name, kReplacements[i]));
        g_state.changeDirectory = std::strcmp(imports[i].name, "_wchdir") == 0 ? i : g_state.changeDirectory;
        g_state.originals[i] = reinterpret_cast<void*>(m_patches.back()->Original<void()>());
    }
}

ImportFaults::~ImportFaults()
{
    while (!m_patches.empty()) {
        m_patches.pop_back();
    }
}

void ImportFaults::SetHome(const std::wstring& home)
{
    g_state.home = home;
}

void ImportFaults::StartCounting()
{
    g_state.balance = {};
}

void ImportFaults::Arm(const std::vector<PlannedFailure>& failures)
{
    g_state.failures = failures;
    g_state.injected = 0;
    std::fill(g_state.calls.begin(), g_state.calls.end(), 0);
}

void ImportFaults::Disarm()
{
    g_state.failures.clear();
    for (const auto& [import, arguments] : g_state.deferred) {
        CallOriginal(import, arguments);
    }
    g_state.deferred.clear();
}

const std::vector<int>& ImportFaults::Calls() const
{
    return g_state.calls;
}

int ImportFaults::Injected() const
{
    return g_state.injected;
}

std::string ImportFaults::Unbalanced() const
{
    std::string unbalanced;
    for (std::size_t i = 1; i < g_state.balance.size(); ++i) {
        if (g_state.balance[i] != 0) {
            unbalanced += std::string(kResourceNames[i]) + " " + std::to_string(g_state.balance[i]) + "; ";
        }
    }
    return unbalanced;
}

std::vector<std::string> NamesOfImports()
{
    std::vector<std::string> names;
    VisitImports(::GetModuleHandleW(L"Kestrovane.dll"),
                 [&](const char* library, const char* function, void** /*slot*/) {
                     if (!IsOfCxxRuntime(library)) {
                         names.emplace_back(function);
                     }
                 });
    return names;
}
