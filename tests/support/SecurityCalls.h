// The calls of an owner change, written into the transcript of its host.
//
// This machine answers that owner and DACL were written, and keeps the old ones: only the calls can tell. They
// go on to the system, unless a test lets one fail, which is a simulation. The clock is a simulation always.

#pragma once

#include "tests/support/HostRecorder.h"
#include "tests/support/ImportPatch.h"

#include <windows.h>

#include <aclapi.h>

#include <cstdint>
#include <ctime>
#include <map>
#include <string>
#include <vector>

// One write of an object's owner and DACL.
struct SecurityWrite {
    std::wstring path;
    int type;
    unsigned information;
    std::wstring owner; // as text
    bool hasGroup;
    bool hasNewAccessList; // the one that was made right before
    bool hasSystemList;

    bool operator==(const SecurityWrite&) const = default;
};

// One entry that was to be added to an DACL.
struct AddedEntry {
    unsigned count;
    unsigned rights;
    int mode;
    unsigned inheritance;
    bool hasMultipleTrustee;
    int multipleOperation;
    int form;
    int type;
    std::wstring trustee;   // as text
    bool goesToTheListRead; // right before

    bool operator==(const AddedEntry&) const = default;
};

// Records the library's calls for its lifetime; one at a time.
class SecurityCalls {
public:
    explicit SecurityCalls(HostRecorder& host);
    ~SecurityCalls();
    SecurityCalls(const SecurityCalls&) = delete;
    SecurityCalls& operator=(const SecurityCalls&) = delete;

    // The transcript's line of a call.
    static HostEvent Call(const std::wstring& text) { return {HostEvent::Kind::kLog, -1, {}, text}; }

    // Lets the `call`-th call of a function, counted from 1, fail with a last error, and with a result where the
    // function has one.
    void Fail(const std::wstring& function, int call, DWORD lastError, DWORD result = ERROR_GEN_FAILURE);
    // Lets every call of a function for `path` fail.
    void FailFor(const std::wstring& function, const std::wstring& path, DWORD result);
    // Lets a call throw a C++ exception.
    void Throw(const std::wstring& function, int call);
    // Whatever account is asked for, this one is looked up.
    void LookUpInstead(const std::wstring& account) { m_standIn = account; }
    // What the next readings of the clock give, in ticks since the start of the recording, which is also what the
    // module's stamp says; the last value stays.
    void SetClock(std::vector<std::int32_t> readings) { m_readings = std::move(readings); }

    [[nodiscard]] const std::vector<SecurityWrite>& Writes() const { return m_writes; }
    [[nodiscard]] const std::vector<AddedEntry>& Entries() const { return m_entries; }
    [[nodiscard]] const wchar_t* PathPointer() const { return m_pathPointer; } // of the latest DACL read
    [[nodiscard]] DWORD ErrorAfterRead() const { return m_errorAfterRead; }    // the thread's last error then
    [[nodiscard]] bool HoldsNothing() const { return m_made == nullptr && m_sid == nullptr && m_domain == nullptr; }

private:
    friend struct ReplacedSecurityFunctions;

    struct Fault {
        std::wstring function;
        int call; // 0: every one for `path`
        std::wstring path;
        DWORD lastError;
        DWORD result;
        bool throws;
    };

    void Write(const std::wstring& text) { m_host.Add(Call(text)); }
    // The fault that a call meets; null when it goes on to the system.
    const Fault* Meet(const std::wstring& function, const std::wstring& path);
    void NoteFreed(const void* memory);
    std::clock_t ReadClock();

    HostRecorder& m_host;
    std::vector<Fault> m_faults;
    std::map<std::wstring, int> m_calls;
    std::wstring m_standIn;
    std::vector<std::int32_t> m_readings = {0};
    std::vector<SecurityWrite> m_writes;
    std::vector<AddedEntry> m_entries;
    const wchar_t* m_pathPointer = nullptr;
    DWORD m_errorAfterRead = 0;
    const void* m_read = nullptr; // the latest DACL read
    const void* m_made = nullptr; // these three are the library's to free
    const void* m_sid = nullptr;
    const void* m_domain = nullptr;

    ImportPatch m_lookUp;
    ImportPatch m_get;
    ImportPatch m_add;
    ImportPatch m_set;
    ImportPatch m_localFree;
    ImportPatch m_isDirectory;
    ImportPatch m_findFirst;
    ImportPatch m_findNext;
    ImportPatch m_findClose;
    ImportPatch m_clock;
    ImportPatch m_free;
};
