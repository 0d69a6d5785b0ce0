// Restoring one file.

#include "agent/restore/Replacement.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Security.h"
#include "agent/restore/KeptProperties.h"
#include "agent/restore/RecordFormat.h"
#include "agent/restore/StagedFile.h"

#include <memory>

namespace agent {

namespace {

using Outcome = ReplacementResult::Outcome;

constexpr std::size_t kWorkers = 8; // with more, small files are restored no faster

// Clears the read-only attribute of a file for one scope. The attribute is set again at the end, unless the file was
// replaced.
class WritableScope {
public:
    explicit WritableScope(const RestoreStep& step)
        : m_step(step), m_changed(step.replaces && step.present.IsReadOnly())
    {
        if (m_changed) {
            ::SetFileAttributesW(step.target.path.c_str(),
                                 step.present.attributes & ~static_cast<DWORD>(FILE_ATTRIBUTE_READONLY));
        }
    }
    ~WritableScope()
    {
        if (m_changed) {
            ::SetFileAttributesW(m_step.target.path.c_str(), m_step.present.attributes);
        }
    }
    WritableScope(const WritableScope&) = delete;
    WritableScope& operator=(const WritableScope&) = delete;

    void LeaveAsItIs() { m_changed = false; }

private:
    const RestoreStep& m_step;
    bool m_changed;
};

// Access that is denied is another matter: no reboot would change that.
bool IsInUse(const RestoreStep& step)
{
    if (!step.replaces) {
        return false;
    }
    const WritableScope writable(step);
    const UniqueHandle file = Own(::CreateFileW(step.target.path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING,
                                                FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return file == nullptr && ::GetLastError() == ERROR_SHARING_VIOLATION;
}

std::wstring WhyNotPlaced(DWORD error)
{
    return error == ERROR_ALREADY_EXISTS ? L"a file has appeared there since the restore began" : SystemReason(error);
}

ReplacementResult Failed(RestoreFailure failure)
{
    return {Outcome::kFailed, std::move(failure), {}};
}

// A backup that does not know the attributes leaves those of the old file.
DWORD AttributesFor(const RestoreStep& step)
{
    const DWORD known = step.file.attributes != 0 ? step.file.attributes : step.present.attributes;
    const DWORD restored = known & kRestoredAttributes;
    return known != 0 && restored == 0 ? FILE_ATTRIBUTE_NORMAL : restored;
}

// Runs on a worker thread, and calls nothing of the library's.
ReplacementResult PlaceStaged(const RestoreStep& step, StagedFile& staged)
{
    const std::wstring& target = step.target.path;
    const auto lost = step.replaces ? KeepProperties(target, staged.Path()) : std::nullopt;
    if (lost) {
        return Failed({target, *lost});
    }
    const FileTime created = step.file.created != 0 ? step.file.created : step.present.created;
    const Durability durability = step.replaces ? Durability::kFlushed : Durability::kUnflushed;
    WritableScope writable(step);
    if (!staged.Complete(created, step.file.modified, AttributesFor(step), durability) ||
        !staged.TakePlace(target, step.replaces)) {
        return Failed({target, WhyNotPlaced(::GetLastError())});
    }
    writable.LeaveAsItIs();
    return {Outcome::kNow, std::nullopt, target};
}

} // namespace

Replacement::Replacement(RestoreRecord& record, RebootReplacement& reboot, bool withSecurity, OnResult onResult)
    : m_record(record),
      m_reboot(reboot),
      m_withSecurity(withSecurity),
      m_onResult(std::move(onResult)),
      m_threads(kWorkers)
{
}

void Replacement::Add(const RestoreStep& step)
{
    std::future<ReplacementResult> later;
    ReplacementResult now = Start(step, later);
    if (!later.valid()) {
        std::promise<ReplacementResult> done;
        done.set_value(std::move(now));
        later = done.get_future();
    }
    m_works.push_back({&step, std::move(later)});
    if (m_works.size() == kMostStagedFiles) { // the next one takes the staging name of the oldest
        FinishOldest();
    }
}

void Replacement::Finish()
{
    while (!m_works.empty()) {
        FinishOldest();
    }
}

// Writes the new content. The result comes later, unless the file failed or is in use.
ReplacementResult Replacement::Start(const RestoreStep& step, std::future<ReplacementResult>& later)
{
    if (!IsConfined(step.target.path, step.target.bound)) {
        return Failed({step.target.path, L"it would leave " + step.target.bound});
    }
    if (IsInUse(step)) {
        return ReplaceAtReboot(step);
    }
    const auto staged = std::make_shared<StagedFile>(m_record.NextStagingPath(step.stagingDirectory));
    if (auto failure = staged->Fill(step.source, step.file, step.target.path)) {
        return Failed(std::move(*failure));
    }
    const auto task = std::make_shared<std::packaged_task<ReplacementResult()>>(
        [&step, staged] { return PlaceStaged(step, *staged); });
    later = task->get_future();
    m_threads.Add([task] { (*task)(); });
    return {};
}

void Replacement::FinishOldest()
{
    Work work = std::move(m_works.front());
    m_works.pop_front();
    ReplacementResult result = work.result.get();
    if (result.outcome == Outcome::kFailed && IsInUse(*work.step)) {
        result = ReplaceAtReboot(*work.step); // it was opened meanwhile
    }
    Complete(*work.step, result);
    m_onResult(*work.step, result);
}

// Security comes last, because the process may have no access afterwards.
void Replacement::Complete(const RestoreStep& step, ReplacementResult& result)
{
    std::optional<std::wstring> reason;
    if (result.outcome == Outcome::kNow) {
        reason = m_reboot.TakeBackEarlier(step.target.path);
    }
    if (result.outcome != Outcome::kFailed && m_withSecurity && !step.file.security.empty() && !reason) {
        reason = WriteSecurity(result.written, step.file.security);
    }
    if (reason) {
        result.failure = {step.target.path, *reason};
    }
}

ReplacementResult Replacement::ReplaceAtReboot(const RestoreStep& step)
{
    WritableScope writable(step);
    auto registered = m_reboot.Register(step, AttributesFor(step));
    if (registered.failure && registered.cacheFile.empty()) {
        return Failed(std::move(*registered.failure));
    }
    writable.LeaveAsItIs(); // a move at the reboot does not replace a read-only file
    return {Outcome::kAtReboot, std::move(registered.failure), registered.cacheFile};
}

} // namespace agent
