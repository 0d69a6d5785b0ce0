// The agent's side of the library: its log function and its keep-alive function.

#pragma once

#include <functional>
#include <string>

namespace agent {

// Registers both. The library's log goes to standard error with `verbose`, and nowhere without.
void RegisterHost(bool verbose);

// Hears the library's log lines, without their line ends, for one scope. One at a time.
class LogListener {
public:
    using Hear = std::function<void(int level, const std::wstring& line)>;

    explicit LogListener(Hear hear);
    ~LogListener();
    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;
};

} // namespace agent
