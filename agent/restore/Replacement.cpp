// Restoring one file.

#include "agent/restore/Replacement.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"
#include "agent/platform/Security.h"
#include "agent/restore/KeptProperties.h"

namespace agent {

namespace {

using Outcome = ReplacementResult::Outcome;

// A staged file is deleted at the end of the scope, unless it has taken the target's place.
class StagedFile {
public:
    explicit StagedFile(std::wstring path) : m_path(std::move(path)) {}
    ~StagedFile()
    {
        if (!m_isPlaced) {
            const DWORD error = ::GetLastError();
            ::SetFileAttributesW(m_path.c_str(), FILE_ATTRIBUTE_NORMAL); // a read-only file cannot be deleted
            ::DeleteFileW(m_path.c_str());
            ::SetLastError(error);
        }
    }
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    const std::wstring& Path() const { return m_path; }

    // Takes the target's place in one step: there is no moment without a whole file. ReplaceFileW has one, between the removal
    // of the old file and the move of the new one. On failure the last error tells why, and the target is as it was.
    bool TakePlace(const std::wstring& target, bool replaces)
    {
        const DWORD flags = MOVEFILE_WRITE_THROUGH | (replaces ? MOVEFILE_REPLACE_EXISTING : 0);
        m_isPlaced = ::MoveFileExW(m_path.c_str(), target.c_str(), flags) != FALSE;
        return m_isPlaced;
    }

private:
    std::wstring m_path;
    bool m_isPlaced = false;
};

// Clears the read-only attribute of a file for one scope. The attribute is set again at the end, unless the file was replaced.
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

    void KeepWritable() { m_changed = false; }

private:
    const RestoreStep& m_step;
    bool m_changed;
};

// Access that is denied is another matter: no reboot would change that.
bool IsInUse(const std::wstring& path)
{
    const UniqueHandle file =
        Own(::CreateFileW(path.c_str(), GENERIC_WRITE, 0, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    return file == nullptr && ::GetLastError() == ERROR_SHARING_VIOLATION;
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

} // namespace

ReplacementResult Replacement::Replace(const RestoreStep& step)
{
    WritableScope writable(step);
    const bool wasInUse = step.replaces && IsInUse(step.target.path);
    ReplacementResult result = wasInUse ? ReplaceAtReboot(step) : ReplaceNow(step);
    const bool failed = result.outcome == Outcome::kFailed;
    if (failed && !wasInUse && step.replaces && IsInUse(step.target.path)) {
        result = ReplaceAtReboot(step); // it was opened meanwhile
    }
    if (result.outcome != Outcome::kFailed) {
        writable.KeepWritable(); // a move at the reboot does not replace a read-only file
        RestoreSecurity(step, result);
    }
    return result;
}

// The last step, because the process may have no access afterwards.
void Replacement::RestoreSecurity(const RestoreStep& step, ReplacementResult& result) const
{
    if (!m_withSecurity || step.file.security.empty()) {
        return;
    }
    if (const auto reason = WriteSecurity(result.written, step.file.security)) {
        result.failure = {step.target.path, *reason};
    }
}

ReplacementResult Replacement::ReplaceNow(const RestoreStep& step)
{
    const std::wstring& target = step.target.path;
    if (!IsConfined(target, step.target.bound)) {
        return Failed({target, L"it would leave " + step.target.bound});
    }
    StagedFile staged(m_record.StagingPath(step.stagingDirectory));
    if (auto failure = WriteVerified(step.source, staged.Path(), step.file, target)) {
        return Failed(std::move(*failure));
    }
    const auto lost = step.replaces ? KeepProperties(target, staged.Path()) : std::nullopt;
    if (lost) {
        return Failed({target, *lost});
    }
    const FileTime created = step.file.created != 0 ? step.file.created : step.present.created;
    if (!SetInformation(staged.Path(), created, step.file.modified, AttributesFor(step)) ||
        !staged.TakePlace(target, step.replaces)) {
        return Failed({target, LastReason()});
    }
    ReplacementResult result{Outcome::kNow, std::nullopt, target};
    if (const auto reason = m_reboot.TakeBackEarlier(target)) {
        result.failure = {target, *reason};
    }
    return result;
}

ReplacementResult Replacement::ReplaceAtReboot(const RestoreStep& step)
{
    auto registered = m_reboot.Register(step, AttributesFor(step));
    if (registered.failure && registered.cacheFile.empty()) {
        return Failed(std::move(*registered.failure));
    }
    return {Outcome::kAtReboot, std::move(registered.failure), registered.cacheFile};
}

} // namespace agent
