// Failing calls of any import of the library, and what its calls left open. Simulations, by patched imports.

#pragma once

#include "tests/support/ImportPatch.h"
#include "tests/sweeps/ImportTable.h"

#include <memory>
#include <string>
#include <vector>

// A call of an import that fails, counted from 1.
struct PlannedFailure {
    std::size_t import; // its index in FailingImports()
    int call;
    bool thenOn; // whether all later ones fail, too
};

// Patches every import of the table for its lifetime; one at a time.
class ImportFaults {
public:
    ImportFaults();
    ~ImportFaults();
    ImportFaults(const ImportFaults&) = delete;
    ImportFaults& operator=(const ImportFaults&) = delete;

    // A change to this directory never fails.
    void SetHome(const std::wstring& home);
    // Forgets what was opened and closed before.
    void StartCounting();
    // From now on these calls fail, until Disarm. Calls are counted from here.
    void Arm(const std::vector<PlannedFailure>& failures);
    // Carries out the closing calls that failed.
    void Disarm();

    [[nodiscard]] const std::vector<int>& Calls() const; // by import, since Arm
    [[nodiscard]] int Injected() const;                  // failures since Arm
    // The resources that were not closed, or closed twice, since StartCounting; empty if there are none.
    [[nodiscard]] std::string Unbalanced() const;

private:
    std::vector<std::unique_ptr<ImportPatch>> m_patches;
    // The strings that the host frees, and those that it passes.
    ImportPatch m_hostAllocates;
    ImportPatch m_hostFrees;
};

// The names of all imports of the library, without those of the C++ runtime.
std::vector<std::string> NamesOfImports();
