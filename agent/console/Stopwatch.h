// How long a command took.

#pragma once

#include <chrono>

namespace agent {

class Stopwatch {
public:
    [[nodiscard]] double Seconds() const { return std::chrono::duration<double>(Clock::now() - m_start).count(); }

private:
    using Clock = std::chrono::steady_clock;
    Clock::time_point m_start = Clock::now();
};

} // namespace agent
