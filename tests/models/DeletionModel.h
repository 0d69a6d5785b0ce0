// A plain restatement of the tree deletion's steps, and the simulated file system that it and the library work on.

#pragma once

#include "tests/models/CallScript.h"

#include <windows.h>

#include <map>
#include <string>
#include <vector>

// Directories in memory. Every call is added to the script and fails if the script says so.
class SimulatedTree {
public:
    struct Entry {
        std::wstring name;
        DWORD attributes;
    };
    // The entries of each directory, in the order in which a search finds them.
    using Directories = std::map<std::wstring, std::vector<Entry>>;

    SimulatedTree(Directories directories, CallScript::Failures failures)
        : script(std::move(failures)), m_directories(std::move(directories))
    {
    }

    HANDLE FindFirst(const std::wstring& pattern, WIN32_FIND_DATAW& entry);
    BOOL FindNext(HANDLE search, WIN32_FIND_DATAW& entry);
    BOOL FindClose(HANDLE search);
    BOOL DeleteFile(const std::wstring& path);
    BOOL RemoveDirectory(const std::wstring& path);

    [[nodiscard]] const Directories& Left() const { return m_directories; }

    CallScript script;

private:
    struct Search {
        std::vector<Entry> entries;
        std::size_t next;
    };
    BOOL RemoveEntry(const std::wstring& path, bool isDirectory);

    Directories m_directories;
    std::vector<Search> m_searches;
};

// What DeleteDirectoryRecursive does, step by step. The last error is that of the thread.
int DeleteDirectoryByModel(SimulatedTree& tree, const std::wstring& directory);
