// How each import of the library fails, and which imports cannot.

#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

// An argument or a result in its register. No import takes or returns a floating-point number.
using Word = std::uintptr_t;

// What a successful call opens or closes.
enum class Resource { kNone, kHandle, kFileDescriptor, kSearch, kRuntimeSearch, kLocalMemory, kBstr, kMemory, kCount };

struct FailingImport {
    const char* name;
    Word result;             // that reports the failure
    unsigned long lastError; // 0: unchanged
    int errnoCode;           // 0: unchanged
    Resource resource = Resource::kNone;
    // How many resources a successful call opened (1) or closed (-1).
    int (*change)(Word result, const Word* arguments) = nullptr;
    // Writes what a failing call leaves in its output arguments; null: they are unchanged.
    void (*spoil)(const Word* arguments) = nullptr;
    bool canFail = true;    // otherwise its calls are counted alone
    bool isRetried = false; // the library closes by another call what this one could not
};

// An import that cannot fail, or whose failure is not simulated.
struct SoundImport {
    const char* name;
    const char* reason;
};

std::span<const FailingImport> FailingImports();
std::span<const SoundImport> SoundImports();
