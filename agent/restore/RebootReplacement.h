// Files that other programs have open: their new content waits in a cache file and takes their place at the next
// reboot.

#pragma once

#include "agent/platform/IgnoringCase.h"
#include "agent/restore/NewContent.h"
#include "agent/restore/PendingMoves.h"
#include "agent/restore/RestorePlan.h"
#include "agent/restore/RestoreRecord.h"

#include <map>
#include <optional>
#include <string>

namespace agent {

class RebootReplacement {
public:
    // Cache files are created beside their targets, or in the temporary directory where that is on the same volume.
    RebootReplacement(RestoreRecord& record, bool temporaryCache);

    // Why earlier registrations are not known; they cannot be taken back then.
    [[nodiscard]] const std::wstring& Problem() const { return m_problem; }

    struct Result {
        std::wstring cacheFile;                // empty when nothing was registered
        std::optional<RestoreFailure> failure; // also beside a registration, when something else failed
    };

    // Registers the replacement of a file in use, and takes earlier ones for the same target back.
    Result Register(const RestoreStep& step, DWORD attributes);

    // Takes back what earlier restores have registered for a target, which would undo this one at the reboot. @return a
    // reason when that fails.
    std::optional<std::wstring> TakeBackEarlier(const std::wstring& target);

private:
    Result Fill(const RestoreStep& step, DWORD attributes);
    static Result WithInformation(const RestoreStep& step, const std::wstring& cacheFile, DWORD attributes);

    RestoreRecord& m_record;
    bool m_temporaryCache;
    std::wstring m_problem;
    std::multimap<std::wstring, PendingMove, LessIgnoringCase> m_earlier; // by target
};

} // namespace agent
