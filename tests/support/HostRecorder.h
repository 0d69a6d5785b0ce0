// A host that keeps everything the library tells it, in order.

#pragma once

#include <ostream>
#include <string>
#include <vector>

// One log line or keep-alive.
struct HostEvent {
    enum class Kind { kLog, kKeepAlive };

    Kind kind;
    int value;          // the level, or the seconds
    std::string format; // empty for a keep-alive
    std::wstring text;  // the formatted line, line end included; empty for a keep-alive

    bool operator==(const HostEvent&) const = default;
};

std::ostream& operator<<(std::ostream& out, const HostEvent& event);

// Registers itself with the library for its lifetime; one at a time. Afterwards a silent host replaces it.
class HostRecorder {
public:
    HostRecorder();
    ~HostRecorder();
    HostRecorder(const HostRecorder&) = delete;
    HostRecorder& operator=(const HostRecorder&) = delete;

    [[nodiscard]] const std::vector<HostEvent>& Events() const { return m_events; } // since registration or Clear
    [[nodiscard]] std::vector<std::wstring> Lines() const;                          // the formatted log lines alone
    [[nodiscard]] std::vector<std::wstring> LinesAt(int level) const;
    [[nodiscard]] std::vector<int> KeepAlives() const; // the seconds of each
    [[nodiscard]] int AuxCalls() const { return m_auxCalls; }
    void Clear() { m_events.clear(); }

    // For the callbacks.
    void Add(HostEvent event) { m_events.push_back(std::move(event)); }
    void CountAux() { ++m_auxCalls; }

private:
    std::vector<HostEvent> m_events;
    int m_auxCalls = 0;
};

// The three lines that a reported Win32 error gives, with Windows' own text for it (two when it has none).
// `title` is the first of them, line end included.
std::vector<std::wstring> FailureLines(unsigned long error, const std::wstring& title);

// The lines by which a file-manager operation reports a Win32 error.
std::vector<std::wstring> ReportLines(unsigned long error);
