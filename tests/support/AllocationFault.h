// Memory that runs short: one allocation of the C++ runtime, which library and tests share, fails.

#pragma once

#include "tests/support/ImportPatch.h"

// For the scope of one call: allocations of the test count, too.
class AllocationFault {
public:
    explicit AllocationFault(int allocation); // which one, counted from 1
    ~AllocationFault();
    AllocationFault(const AllocationFault&) = delete;
    AllocationFault& operator=(const AllocationFault&) = delete;

    bool Happened() const; // false: the call needs fewer allocations
    int Live() const;      // allocations of the scope that have not been freed

private:
    ImportPatch m_malloc;
    ImportPatch m_free;
};
