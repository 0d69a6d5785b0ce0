// Copies of the live files that a restore is about to overwrite.

#pragma once

#include "agent/restore/RestoreJournal.h"

#include <map>
#include <string>

namespace agent {

class LiveProtection {
public:
    LiveProtection();

    // Where the copies lie; the journal has to know it before the first is made.
    const CacheSite& Site() const { return m_site; }

    // Keeps a copy of a live file. @return a reason when that cannot be done; the file must not be overwritten then.
    std::wstring Protect(const std::wstring& liveFile);

    bool Holds(const std::wstring& liveFile) const;

    // Puts a copy back in the place of its live file, now or at the next restart.
    enum class Outcome { kNow, kAtRestart, kFailed };
    Outcome PutBack(const std::wstring& liveFile);

    // Deletes the copies that are no longer needed, or registers their deletion. Those of live files that could not be put
    // back stay; their number is given.
    std::size_t DropCopies();

private:
    void DropLeftover();

    CacheSite m_site;
    std::map<std::wstring, std::wstring> m_copies; // as the library has it: upper-case live file to upper-case copy
    std::map<std::wstring, std::wstring> m_kept;
};

} // namespace agent
