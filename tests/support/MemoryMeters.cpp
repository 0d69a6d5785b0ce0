// Memory that runs short at a chosen moment, and what of it was not given back.

#include "tests/support/MemoryMeters.h"

#include <oleauto.h>

#include <cstdlib>

namespace {

constexpr const char* kCxxRuntime = "libstdc++-6.dll";

// Counts allocations down to the one that is to fail.
class Countdown {
public:
    void Start(int failing, bool thenOn)
    {
        m_left = failing;
        m_thenOn = thenOn;
        m_failed = false;
    }
    void Stop() { m_left = 0; }
    [[nodiscard]] bool HasFailed() const { return m_failed; }

    // Whether the allocation that is being made is to fail.
    bool IsDue()
    {
        if (m_left == 0) {
            return false;
        }
        if (m_left > 1) {
            --m_left;
            return false;
        }
        m_left = m_thenOn ? 1 : 0;
        m_failed = true;
        return true;
    }

private:
    int m_left = 0;
    bool m_thenOn = false;
    bool m_failed = false;
};

struct Meter {
    Countdown failure;
    int allocations = 0;
    int outstanding = 0;

    template <typename Pointer>
    Pointer Counted(Pointer pointer)
    {
        if (pointer != nullptr) {
            ++allocations;
            ++outstanding;
        }
        return pointer;
    }
};

Meter g_bstrs;
Meter g_heap;

BSTR WINAPI CopyOfText(const OLECHAR* text)
{
    if (text == nullptr) { // not an allocation
        return nullptr;
    }
    return g_bstrs.failure.IsDue() ? nullptr : g_bstrs.Counted(::SysAllocString(text));
}

BSTR WINAPI CopyOfLength(const OLECHAR* text, UINT length)
{
    return g_bstrs.failure.IsDue() ? nullptr : g_bstrs.Counted(::SysAllocStringLen(text, length));
}

void WINAPI FreeString(BSTR text)
{
    g_bstrs.outstanding -= text == nullptr ? 0 : 1;
    ::SysFreeString(text);
}

void* __cdecl Take(std::size_t size)
{
    return g_heap.failure.IsDue() ? nullptr : g_heap.Counted(std::malloc(size));
}

void __cdecl Give(void* memory)
{
    g_heap.outstanding -= memory == nullptr ? 0 : 1;
    std::free(memory);
}

} // namespace

BstrMeter::BstrMeter()
    : m_copy("SysAllocString", &CopyOfText),
      m_copyLength("SysAllocStringLen", &CopyOfLength),
      m_free("SysFreeString", &FreeString)
{
    g_bstrs = {};
}

BstrMeter::~BstrMeter() = default;

void BstrMeter::FailAt(int allocation)
{
    g_bstrs.failure.Start(allocation, false);
}

bool BstrMeter::HasFailed()
{
    return g_bstrs.failure.HasFailed();
}

int BstrMeter::Allocations()
{
    return g_bstrs.allocations;
}

int BstrMeter::Outstanding()
{
    return g_bstrs.outstanding;
}

HeapMeter::HeapMeter() : m_take(kCxxRuntime, "malloc", &Take), m_give(kCxxRuntime, "free", &Give)
{
    g_heap = {};
}

HeapMeter::~HeapMeter() = default;

bool HeapMeter::HasFailed()
{
    return g_heap.failure.HasFailed();
}

int HeapMeter::Outstanding()
{
    return g_heap.outstanding;
}

void HeapMeter::Arm(int failingAllocation, Shortage shortage)
{
    g_heap.failure.Start(failingAllocation, shortage == Shortage::kFromThenOn);
}

void HeapMeter::Disarm()
{
    g_heap.failure.Stop();
}
