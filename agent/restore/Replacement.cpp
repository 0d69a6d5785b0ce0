// Restoring one file.

#include "agent/restore/Replacement.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

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
            ::DeleteFileW(m_path.c_str());
        }
    }
    StagedFile(const StagedFile&) = delete;
    StagedFile& operator=(const StagedFile&) = delete;

    const std::wstring& Path() const { return m_path; }

    // Takes the place of a file. On failure the last error tells why, and the target is as it was.
    bool Exchange(const std::wstring& target)
    {
        m_isPlaced = ::ReplaceFileW(target.c_str(), m_path.c_str(), nullptr, 0, nullptr, nullptr) != FALSE;
        if (!m_isPlaced && ::GetLastError() == ERROR_UNABLE_TO_MOVE_REPLACEMENT) {
            return Insert(target); // the old file is gone by then
        }
        return m_isPlaced;
    }

    // Takes a place where no file is.
    bool Insert(const std::wstring& target)
    {
        m_isPlaced = ::MoveFileExW(m_path.c_str(), target.c_str(), MOVEFILE_WRITE_THROUGH) != FALSE;
        return m_isPlaced;
    }

private:
    std::wstring m_path;
    bool m_isPlaced = false;
};

// Makes a read-only file writable for one scope. Whatever the scope's outcome, the attribute is set again on the file that is
// there at the end, unless it was replaced by one with attributes of its own.
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
    }
    return result;
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
    const DWORD attributes = AttributesFor(step);
    const DWORD readOnly =
        attributes & FILE_ATTRIBUTE_READONLY; // set last, because it would keep the file from its place
    SetInformation(staged.Path(), step.file.created, step.file.modified, attributes & ~readOnly);
    if (!(step.replaces ? staged.Exchange(target) : staged.Insert(target))) {
        return Failed({target, LastReason()});
    }
    ReplacementResult result{Outcome::kNow, std::nullopt, target};
    // A file that was replaced has passed its creation time and attributes on.
    if ((step.replaces || readOnly != 0) &&
        !SetInformation(target, step.file.created, step.file.modified, attributes)) {
        result.failure = {target, L"its times and attributes could not be restored: " + LastReason()};
    } else if (const auto reason = m_reboot.TakeBackEarlier(target)) {
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
