// Memory that runs short at a chosen moment, and what of it was not given back. Simulations, by patched imports.

#pragma once

#include "tests/support/ImportPatch.h"

// The BSTR strings that the library itself allocates and frees; one meter at a time.
class BstrMeter {
public:
    BstrMeter();
    ~BstrMeter();
    BstrMeter(const BstrMeter&) = delete;
    BstrMeter& operator=(const BstrMeter&) = delete;

    static void FailAt(int allocation); // counted from 1, from now on; 0: none fails
    static bool HasFailed();            // since FailAt
    static int Allocations();           // that succeeded
    static int Outstanding();           // allocated less freed

private:
    ImportPatch m_copy;
    ImportPatch m_copyLength;
    ImportPatch m_free;
};

// What the C++ runtime takes from the heap for every module of the process: operator new and exceptions. One meter
// at a time.
class HeapMeter {
public:
    enum class Shortage { kOneAllocation, kFromThenOn };

    HeapMeter();
    ~HeapMeter();
    HeapMeter(const HeapMeter&) = delete;
    HeapMeter& operator=(const HeapMeter&) = delete;

    // Calls `function`; the given allocation in it, counted from 1, finds no memory. 0: none fails.
    template <typename Function>
    static void Run(int failingAllocation, Shortage shortage, Function function)
    {
        Arm(failingAllocation, shortage);
        function();
        Disarm();
    }
    static bool HasFailed();  // in the last Run
    static int Outstanding(); // allocated less freed, since construction

private:
    static void Arm(int failingAllocation, Shortage shortage);
    static void Disarm();

    ImportPatch m_take;
    ImportPatch m_give;
};
