// A simulated machine with other volumes than this one: the library's volume look-ups are answered from a table.
//
// What it shows is how the library takes Windows' answers, not that Windows gives them.

#pragma once

#include "tests/support/FileTools.h"
#include "tests/support/ImportPatch.h"

#include <cstdint>
#include <map>
#include <string>
#include <vector>

struct SimulatedVolume {
    std::wstring name;            // as the enumeration and a look-up of a mount path give it
    StringList mountPaths = {};   // in Windows' order, with trailing backslashes
    std::wstring uniqueName = {}; // as a look-up of the name gives it; empty: the name itself
    std::uint64_t availableBytes = 0;
    std::uint64_t totalBytes = 0;
};

// Answers the library's look-ups for its lifetime; inside the scope of another one, it replaces that one. Shares are
// known whatever their server.
class SimulatedVolumes {
public:
    explicit SimulatedVolumes(std::vector<SimulatedVolume> volumes);
    ~SimulatedVolumes();
    SimulatedVolumes(const SimulatedVolumes&) = delete;
    SimulatedVolumes& operator=(const SimulatedVolumes&) = delete;

    // Lets the `call`-th call of a function fail, counted from 1. A failing call writes nothing; FindVolumeClose leaves
    // the search open.
    void Fail(const std::wstring& function, int call, DWORD error);
    // Lets it throw a C++ exception.
    void Throw(const std::wstring& function, int call);

    // What was asked, in order: L"GetVolumePathNameW(C:\\dir\\, 260)", capacities included.
    [[nodiscard]] const StringList& Calls() const { return m_calls; }

    [[nodiscard]] bool IsSearchOpen() const { return m_searchOpen; }

    // For the replaced functions.
    BOOL VolumePath(const wchar_t* path, wchar_t* buffer, DWORD capacity);
    BOOL VolumeName(const wchar_t* mountPoint, wchar_t* buffer, DWORD capacity);
    BOOL MountPaths(const wchar_t* name, wchar_t* buffer, DWORD capacity, DWORD* needed);
    HANDLE FirstVolume(wchar_t* buffer, DWORD capacity);
    BOOL NextVolume(HANDLE search, wchar_t* buffer, DWORD capacity);
    BOOL CloseSearch(const std::wstring& function, HANDLE search);
    BOOL Space(const wchar_t* path, ULARGE_INTEGER* available, ULARGE_INTEGER* total, ULARGE_INTEGER* totalFree);

private:
    struct Fault {
        std::wstring function;
        int call;
        DWORD error;
        bool throws;
    };

    const SimulatedVolume* VolumeOf(const std::wstring& path, std::wstring& mountPath) const;
    bool Fails(const std::wstring& function, const std::wstring& arguments);

    SimulatedVolumes* m_outer;
    std::vector<SimulatedVolume> m_volumes;
    std::vector<Fault> m_faults;
    StringList m_calls;
    std::map<std::wstring, int> m_callCounts; // by function
    std::size_t m_next = 0;                   // of the search
    bool m_searchOpen = false;
    ImportPatch m_volumePath;
    ImportPatch m_volumeName;
    ImportPatch m_mountPaths;
    ImportPatch m_firstVolume;
    ImportPatch m_nextVolume;
    ImportPatch m_closeVolumeSearch;
    ImportPatch m_closeSearch;
    ImportPatch m_space;
};
