// The agent's side of the library: its log function and its keep-alive function.

#pragma once

#include <functional>
#include <string>

namespace agent {

// Registers both. The library's log goes to standard error with `verbose`, and nowhere without.
void RegisterHost(bool verbose);

// Thrown from the library's next log line after an interrupt. The library lets it pass.
struct Interrupted {};

// Makes calls of the library interruptible for one scope.
class InterruptibleScope {
public:
    InterruptibleScope();
    ~InterruptibleScope();
    InterruptibleScope(const InterruptibleScope&) = delete;
    InterruptibleScope& operator=(const InterruptibleScope&) = delete;
};

// Calls the library. @return false when an interrupt has ended the call.
template <typename Call>
bool CallInterruptibly(const Call& call)
{
    const InterruptibleScope scope;
    try {
        call();
        return true;
    } catch (const Interrupted&) {
        return false;
    }
}

// Receives the library's log lines, without their line ends, for one scope. One at a time.
class LogListener {
public:
    using Receive = std::function<void(int level, const std::wstring& line)>;

    explicit LogListener(Receive receive);
    ~LogListener();
    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;
};

} // namespace agent
