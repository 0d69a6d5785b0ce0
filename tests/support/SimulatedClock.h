// A clock that shows what a test wants.

#pragma once

#include "tests/support/ImportPatch.h"

#include <cstdint>
#include <ctime>
#include <deque>
#include <vector>

// Replaces the runtime's clock in one module; one at a time.
class SimulatedClock {
public:
    explicit SimulatedClock(const char* module = "Kestrovane.dll") : m_patch(module, "clock", &Read)
    {
        s_readings.clear();
        s_reads = 0;
    }

    // What the next readings show, in order; the last one stays.
    void Show(const std::vector<std::uint32_t>& ticks) { s_readings.assign(ticks.begin(), ticks.end()); }

    static int Reads() { return s_reads; } // since this clock was put in place

private:
    static std::clock_t Read()
    {
        ++s_reads;
        const std::uint32_t ticks = s_readings.empty() ? 0 : s_readings.front();
        if (s_readings.size() > 1) {
            s_readings.pop_front();
        }
        return static_cast<std::clock_t>(ticks);
    }

    inline static std::deque<std::uint32_t> s_readings;
    inline static int s_reads = 0;
    ImportPatch m_patch;
};
