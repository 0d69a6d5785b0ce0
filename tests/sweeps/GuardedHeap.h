// A heap whose blocks end at an unreadable page: a read or write after a block ends the process.

#pragma once

// Serves the C++ runtime, and thus every string and container of the process, and the library's own blocks and BSTR
// strings for its lifetime; one at a time. Blocks may be freed later: the library keeps its last error's string.
class GuardedHeap {
public:
    GuardedHeap();
    ~GuardedHeap();
    GuardedHeap(const GuardedHeap&) = delete;
    GuardedHeap& operator=(const GuardedHeap&) = delete;

    static int Blocks(); // allocated since construction
};
