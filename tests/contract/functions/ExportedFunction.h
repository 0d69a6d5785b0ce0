// The table of all exported functions, for suites that hold for every function.
//
// A new function gets a row in the file of its folder. ExportsTest fails until it has one.

#pragma once

#include "tests/support/TestDirectory.h"

#include <functional>
#include <string>
#include <vector>

// The files that the calls work on. The process is in `home`, three directories below the root of the tree.
class CallGround {
public:
    explicit CallGround(const TestDirectory& directory) : tree(directory), home(directory.Directory(LR"(1\2\3)")) {}

    // Creates what a call may have changed or deleted.
    void Build() const
    {
        tree.Files({L"a.txt", LR"(sub\b.txt)", LR"(sub\deeper\c.txt)", LR"(doomed\x.txt)", LR"(doomed\sub\y.txt)",
                    L"cache.tmp", LR"(1\2\3\here.txt)"});
        tree.Directory(L"there");
    }

    const TestDirectory& tree;
    const std::wstring home;
};

// Runs the call itself, after its arguments are prepared: simulated faults happen in there alone.
using RunCall = std::function<void(const std::function<void()>&)>;

// One call with sensible arguments.
struct SampleCall {
    const char* circumstances;
    void (*make)(const CallGround& ground, const RunCall& run);
};

// What a function does with the file or directory that a string names.
enum class Effect {
    kReads,
    kChanges, // creates, writes, deletes or takes over: only strings that stay inside the tree are passed
};

// A string argument, for strings that no sensible host would pass.
struct StringArgument {
    const char* name;
    Effect effect;
    void (*call)(const CallGround& ground, const std::wstring& string);
};

// What a function may throw.
enum class Throws {
    kNothingAtAll, // the exceptions of the host's functions included
    kNothing,      // of its own
    kBadAlloc,
    kAtlException,
    kBadAllocOrAtlException, // a container of the host's is extended, too
};

struct ExportedFunction {
    const char* name;
    void* address;
    Throws throws;
    std::vector<SampleCall> calls;
    std::vector<StringArgument> strings;
};

template <typename Function>
void* AddressOf(Function* function)
{
    return reinterpret_cast<void*>(function);
}

// By the folders of the sources.
extern const std::vector<ExportedFunction> kFrameFunctions;
extern const std::vector<ExportedFunction> kPathFunctions;
extern const std::vector<ExportedFunction> kStringFunctions;
extern const std::vector<ExportedFunction> kFileFunctions;
extern const std::vector<ExportedFunction> kListingFunctions;
extern const std::vector<ExportedFunction> kDeletionFunctions;
extern const std::vector<ExportedFunction> kCopyFunctions;
extern const std::vector<ExportedFunction> kVolumeFunctions;
extern const std::vector<ExportedFunction> kOwnerFunctions;
extern const std::vector<ExportedFunction> kRestoreFunctions;
extern const std::vector<ExportedFunction> kCacheFunctions;

std::vector<ExportedFunction> AllFunctions();
