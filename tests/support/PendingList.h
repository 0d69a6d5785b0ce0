// The list of moves and deletions that is registered for the next restart, empty for one test.

#pragma once

#include "tests/support/FileTools.h"

#include <string>
#include <utility>
#include <vector>

// Source and target of one entry as Windows writes them: \??\C:\a, !\??\C:\b, or nothing for a deletion.
using PendingEntry = std::pair<std::wstring, std::wstring>;
std::vector<PendingEntry> ReadPendingList();

// Empties the list at the start and at the end. Tests that use it must not run beside each other.
class PendingList {
public:
    PendingList();
    ~PendingList();
    PendingList(const PendingList&) = delete;
    PendingList& operator=(const PendingList&) = delete;

    [[nodiscard]] std::vector<PendingEntry> Entries() const { return ReadPendingList(); }
    [[nodiscard]] bool DeletesAtRestart(const std::wstring& path) const;
    [[nodiscard]] bool ReplacesAtRestart(const std::wstring& source, const std::wstring& target) const;

    void Write(const std::vector<PendingEntry>& entries) const;
};
