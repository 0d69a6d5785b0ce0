// Restoring one file: new content is written beside the target and takes its place in one step, now or at the next reboot.

#pragma once

#include "agent/restore/NewContent.h"
#include "agent/restore/RebootReplacement.h"
#include "agent/restore/RestorePlan.h"
#include "agent/restore/RestoreRecord.h"

#include <optional>
#include <string>

namespace agent {

struct ReplacementResult {
    enum class Outcome { kNow, kAtReboot, kFailed };

    Outcome outcome = Outcome::kFailed;
    std::optional<RestoreFailure> failure; // also beside success: the content is in place, but something else failed
    std::wstring written;                  // the target, or the cache file that takes its place at the reboot
};

class Replacement {
public:
    // `record` and `reboot` must outlive this. With `withSecurity`, files get the security descriptors of the manifest; without,
    // they keep those of the files that they replace.
    Replacement(const RestoreRecord& record, RebootReplacement& reboot, bool withSecurity)
        : m_record(record), m_reboot(reboot), m_withSecurity(withSecurity)
    {
    }

    // A file that another program has open is replaced at the next reboot. A process that is killed meanwhile leaves the whole
    // old or the whole new file. Earlier registrations for the same target are taken back.
    ReplacementResult Replace(const RestoreStep& step);

private:
    ReplacementResult ReplaceNow(const RestoreStep& step);
    ReplacementResult ReplaceAtReboot(const RestoreStep& step);
    void RestoreSecurity(const RestoreStep& step, ReplacementResult& result) const;

    const RestoreRecord& m_record;
    RebootReplacement& m_reboot;
    bool m_withSecurity;
};

} // namespace agent
