// Directory entries in an order, a number or a state that no real directory of the test machine has.

#pragma once

#include "tests/support/ImportPatch.h"

#include <gtest/gtest.h>

#include <io.h>

#include <algorithm>
#include <cerrno>
#include <cwchar>
#include <functional>
#include <map>
#include <string>
#include <utility>
#include <vector>

struct SimulatedEntry {
    std::wstring name;
    unsigned attributes = _A_NORMAL;
};

inline SimulatedEntry SimulatedDirectory(const std::wstring& name)
{
    return {name, _A_SUBDIR};
}

inline std::vector<SimulatedEntry> SimulatedFiles(const std::vector<std::wstring>& names)
{
    std::vector<SimulatedEntry> entries;
    for (const std::wstring& name : names) {
        entries.push_back({name});
    }
    return entries;
}

// Replaces the runtime's find functions in one module; one at a time. Searches whose pattern was not given fail
// with ENOENT. Directories are still entered for real before they are listed.
class SimulatedListing {
public:
    explicit SimulatedListing(const char* module = "Kestrovane.dll")
        : m_first(module, "_wfindfirst64", &First),
          m_next(module, "_wfindnext64", &Next),
          m_close(module, "_findclose", &Close)
    {
        s_current = this;
    }
    ~SimulatedListing() { s_current = nullptr; }
    SimulatedListing(const SimulatedListing&) = delete;
    SimulatedListing& operator=(const SimulatedListing&) = delete;

    // What a search for exactly `pattern` finds, in this order; no entries: the search fails.
    void Answer(const std::wstring& pattern, std::vector<SimulatedEntry> entries)
    {
        m_answers[pattern] = std::move(entries);
    }
    // What a search for a pattern without an answer of its own finds.
    void AnswerAll(std::vector<SimulatedEntry> entries) { m_default = std::move(entries); }
    // Called with the pattern before a search is opened.
    void OnOpen(std::function<void(const std::wstring&)> action) { m_onOpen = std::move(action); }

    [[nodiscard]] const std::vector<std::wstring>& Patterns() const { return m_patterns; } // of all searches tried
    [[nodiscard]] std::size_t OpenSearches() const
    {
        return static_cast<std::size_t>(std::count_if(m_searches.begin(), m_searches.end(),
                                                      [](const Search& search) { return search.entries != nullptr; }));
    }
    [[nodiscard]] const std::vector<std::intptr_t>& ClosedInOrder() const
    {
        return m_closed;
    } // counted from 1, as they were opened
    [[nodiscard]] std::size_t OpenedSearches() const { return m_searches.size(); } // closed ones included

private:
    struct Search {
        const std::vector<SimulatedEntry>* entries; // null when closed
        std::size_t next;
    };

    static void Fill(_wfinddata64_t& record, const SimulatedEntry& entry)
    {
        record = {};
        record.attrib = entry.attributes;
        std::wcsncpy(record.name, entry.name.c_str(), std::size(record.name) - 1);
    }

    static std::intptr_t __cdecl First(const wchar_t* pattern, _wfinddata64_t* record)
    {
        SimulatedListing& self = *s_current;
        self.m_patterns.emplace_back(pattern);
        if (self.m_onOpen) {
            self.m_onOpen(pattern);
        }
        const auto answer = self.m_answers.find(pattern);
        const auto& entries = answer == self.m_answers.end() ? self.m_default : answer->second;
        if (entries.empty()) {
            errno = ENOENT;
            return -1;
        }
        Fill(*record, entries.front());
        self.m_searches.push_back({&entries, 1});
        return static_cast<std::intptr_t>(self.m_searches.size()); // counted from 1
    }

    static int __cdecl Next(std::intptr_t handle, _wfinddata64_t* record)
    {
        Search& search = At(handle);
        if (search.entries == nullptr || search.next == search.entries->size()) {
            errno = ENOENT;
            return -1;
        }
        Fill(*record, (*search.entries)[search.next]);
        ++search.next;
        return 0;
    }

    static int __cdecl Close(std::intptr_t handle)
    {
        EXPECT_NE(nullptr, At(handle).entries) << "a search was closed twice";
        At(handle).entries = nullptr;
        s_current->m_closed.push_back(handle);
        return 0;
    }

    static Search& At(std::intptr_t handle) { return s_current->m_searches.at(static_cast<std::size_t>(handle) - 1); }

    inline static SimulatedListing* s_current = nullptr;
    std::map<std::wstring, std::vector<SimulatedEntry>> m_answers;
    std::vector<SimulatedEntry> m_default;
    std::function<void(const std::wstring&)> m_onOpen;
    std::vector<std::wstring> m_patterns;
    std::vector<Search> m_searches;
    std::vector<std::intptr_t> m_closed;
    ImportPatch m_first;
    ImportPatch m_next;
    ImportPatch m_close;
};
