// Restoring files: new content is written beside each target and takes its place in one step, now or at the next
// reboot.

#pragma once

#include "agent/restore/NewContent.h"
#include "agent/restore/RebootReplacement.h"
#include "agent/restore/RestorePlan.h"
#include "agent/restore/RestoreRecord.h"
#include "agent/restore/WorkerThreads.h"

#include <deque>
#include <functional>
#include <future>
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
    using OnResult = std::function<void(const RestoreStep& step, const ReplacementResult& result)>;

    // `record` and `reboot` must outlive this. With `withSecurity`, files get the security descriptors of the manifest;
    // without, they keep those of the files that they replace. `onResult` is called for each file, in the order of Add.
    Replacement(RestoreRecord& record, RebootReplacement& reboot, bool withSecurity, OnResult onResult);

    // A file that another program has open is replaced at the next reboot. A process that is killed meanwhile leaves
    // the whole old or the whole new file. Earlier registrations for the same target are taken back. `step` must
    // outlive this.
    void Add(const RestoreStep& step);

    // Waits for the results that are still to come.
    void Finish();

private:
    struct Work {
        const RestoreStep* step;
        std::future<ReplacementResult> result;
    };

    ReplacementResult Start(const RestoreStep& step, std::future<ReplacementResult>& later);
    void FinishOldest();
    void Complete(const RestoreStep& step, ReplacementResult& result);
    ReplacementResult ReplaceAtReboot(const RestoreStep& step);

    RestoreRecord& m_record;
    RebootReplacement& m_reboot;
    bool m_withSecurity;
    OnResult m_onResult;
    std::deque<Work> m_works;
    WorkerThreads m_threads;
};

} // namespace agent
