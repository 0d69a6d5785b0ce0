// What a command did: counts, failures and notes, for people or as one JSON object.

#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

namespace agent {

enum ExitCode : int {
    kAllDone = 0,
    kNothingDone = 1,
    kWrongUsage = 2,
    kDoneInPart = 3,
    kDoneAtRestart = 4,
    kInterrupted = 130,
};

// Named values of one item in the JSON object.
using Scalar = std::variant<std::int64_t, double, bool, std::wstring>;
using Item = std::vector<std::pair<std::string, Scalar>>;

// "1 file", "2 files".
std::wstring Counted(std::int64_t number, std::wstring_view noun);

class Report {
public:
    explicit Report(std::string command) : m_command(std::move(command)) {}

    // A row of the summary, in the order of the first mention. Numbers may be counted up.
    void Set(const std::string& name, std::int64_t number);
    void Set(const std::string& name, const std::wstring& string);
    void SetFlag(const std::string& name, bool flag);
    void SetSeconds(const std::string& name, double seconds);
    void Count(const std::string& name, std::int64_t number = 1);
    [[nodiscard]] std::int64_t Number(const std::string& name) const;

    // Something that was achieved: with failures beside it, the command was done in part.
    void CountAchieved() { ++m_achieved; }

    // A failure, written to standard error at once, and how many files it concerns, for the row "failed".
    void Fail(const std::wstring& subject, const std::wstring& reason, std::int64_t files = 1);
    void Note(const std::wstring& string); // the same, but no failure

    // An item of a list in the JSON object: a string, or named values.
    void Add(const std::string& list, const std::wstring& item);
    void AddItem(const std::string& list, const Item& item);
    void SetInterrupted() { m_interrupted = true; }
    void SetInPart() { m_inPart = true; }   // something was left undone without a failure
    void SetUseless() { m_useless = true; } // what was achieved cannot be used
    void SetAtRestart() { m_atRestart = true; }

    [[nodiscard]] bool HasFailures() const { return !m_failures.empty(); }

    // Writes the summary or the JSON object. @return the exit code.
    int Finish();

    // Writes the JSON object, where one is asked for, with a given exit code. @return the exit code.
    int FinishObject(ExitCode code);

private:
    using Value = std::variant<std::int64_t, double, bool, std::wstring, std::vector<std::wstring>, std::vector<Item>>;

    Value& Row(const std::string& name, Value initial);
    [[nodiscard]] ExitCode Code() const;
    void PrintText() const;
    void PrintJson(int code) const;

    std::string m_command;
    std::vector<std::pair<std::string, Value>> m_rows;
    std::vector<std::pair<std::wstring, std::wstring>> m_failures; // subject and reason
    std::vector<std::wstring> m_notes;
    std::int64_t m_achieved = 0;
    bool m_interrupted = false;
    bool m_atRestart = false;
    bool m_inPart = false;
    bool m_useless = false;
};

} // namespace agent
