// A restore.

#include "agent/restore/Restore.h"

#include "agent/console/Interrupt.h"
#include "agent/console/Progress.h"
#include "agent/console/Stopwatch.h"
#include "agent/platform/Paths.h"
#include "agent/restore/DryRun.h"
#include "agent/restore/Ownership.h"

#include <algorithm>

namespace agent {

namespace {

DirectorySet StagingDirectories(const RestorePlan& plan)
{
    DirectorySet directories;
    for (const RestoreStep& step : plan.steps) {
        directories.insert(step.stagingDirectory);
        directories.insert(step.target.directory);
    }
    return directories;
}

} // namespace

int Restore::Run()
{
    const Stopwatch watch;
    const std::wstring backup = Absolute(m_options.backup);
    m_report.Set("backup", backup);
    for (const char* row : {"restored", "mapped", "replacedAtRestart", "skipped", "failed", "bytes"}) {
        m_report.Set(row, 0);
    }
    VersionError error;
    if (CanStart()) {
        if (const auto version = FindVersion(backup, m_options.at, error)) {
            m_report.Set("version", version->version.name);
            RestoreVersion(*version);
        } else {
            m_report.Fail(error.subject, error.reason);
        }
    }
    m_report.SetSeconds("seconds", watch.Seconds());
    return m_report.Finish();
}

bool Restore::CanStart()
{
    if (m_options.owner.empty()) {
        return true;
    }
    const auto reason = WhyAccountIsUnknown(m_options.owner);
    if (reason) {
        m_report.Fail(m_options.owner, *reason + L"; nothing was restored");
    }
    return !reason;
}

void Restore::RestoreVersion(const LoadedVersion& version)
{
    const RestorePlan plan = PlanRestore(m_options, version, m_report);
    if (plan.isRejected) {
        return;
    }
    if (!version.read.manifest.complete) {
        m_report.Note(version.version.folder + L": the backup is not complete; what it holds is restored");
        m_report.SetInPart();
    }
    if (!version.read.isIntact) {
        m_report.Note(Join(version.version.folder, kManifestName) + L": " + kManifestChanged);
        m_report.SetInPart();
    }
    if (m_options.dryRun) {
        ShowPlan(plan, m_report);
    } else {
        Execute(plan);
    }
}

void Restore::Execute(const RestorePlan& plan)
{
    const DirectorySet directories = StagingDirectories(plan);
    if (const std::int64_t deleted = DeleteLeftovers(directories); deleted > 0) {
        m_report.Set("leftovers", deleted);
        m_report.Note(L"deleted what an earlier restore has not finished: " + Counted(deleted, L"file"));
    }
    RestoreRecord record(directories);
    if (!record.Problem().empty()) {
        m_report.Note(L"no record of this restore can be written, so what it leaves when it is killed would stay: " +
                      record.Problem());
    }
    RebootReplacement reboot(record, m_options.temporaryCache);
    if (!reboot.Problem().empty()) {
        m_report.Note(L"what is registered for the reboot is not known: " + reboot.Problem());
    }
    CreateDirectories(plan, directories);
    RestoreFiles(plan, record, reboot);
    GiveOwners();
    m_directories.Finish(plan.directories, m_options, m_report);
    ReportMissingSecurity(plan);
}

void Restore::ReportMissingSecurity(const RestorePlan& plan)
{
    const auto missing = std::count_if(plan.steps.begin(), plan.steps.end(),
                                       [](const RestoreStep& step) { return step.file.security.empty(); });
    if (m_options.security && missing > 0) {
        m_report.Set("withoutSecurity", missing);
        m_report.Note(L"the backup holds no security descriptor for " + Counted(missing, L"file") +
                      L"; `backup --security` stores them");
        m_report.SetInPart();
    }
}

void Restore::CreateDirectories(const RestorePlan& plan, const DirectorySet& withFiles)
{
    for (const DirectoryStep& step : plan.directories) {
        if (IsInterrupted()) {
            return;
        }
        const auto reason = m_directories.Prepare(step.target.path, step.target.bound);
        if (reason && !withFiles.contains(step.target.path)) { // a directory with files is counted with them
            m_report.Fail(step.target.path, *reason);
        }
    }
}

void Restore::RestoreFiles(const RestorePlan& plan, RestoreRecord& record, RebootReplacement& reboot)
{
    Progress progress(L"Restoring", static_cast<std::int64_t>(plan.steps.size()), plan.bytes);
    Replacement replacement(record, reboot, m_options.security,
                            [&](const RestoreStep& step, const ReplacementResult& result) {
                                CountFile(step, result);
                                progress.FileDone(step.file.digest.size);
                            });
    for (const RestoreStep& step : plan.steps) {
        if (IsInterrupted()) {
            m_report.SetInterrupted();
            break;
        }
        if (Prepare(plan, step)) {
            replacement.Add(step);
        }
    }
    replacement.Finish();
}

// A directory that fails is one message, with the number of its files.
bool Restore::Prepare(const RestorePlan& plan, const RestoreStep& step)
{
    const std::wstring& directory = step.target.directory;
    const auto reason = m_directories.Prepare(directory, step.target.bound);
    if (reason && m_failedDirectories.insert(directory).second) {
        const auto files = std::count_if(plan.steps.begin(), plan.steps.end(), [&](const RestoreStep& other) {
            return EqualIgnoringCase(other.target.directory, directory);
        });
        m_report.Fail(directory, *reason, files);
    }
    return !reason;
}

void Restore::CountFile(const RestoreStep& step, const ReplacementResult& result)
{
    if (result.failure) {
        m_report.Fail(result.failure->subject, result.failure->reason);
    }
    if (result.outcome == ReplacementResult::Outcome::kFailed) {
        return;
    }
    if (result.outcome == ReplacementResult::Outcome::kAtReboot) {
        m_report.SetAtRestart();
        m_report.Count("replacedAtRestart");
        m_report.Add("atRestart", step.target.path);
        m_report.Note(step.target.path + L" is in use and will be replaced at the next reboot");
    } else {
        m_report.Count("restored");
    }
    if (!m_options.owner.empty() && !m_directories.IsInCreated(result.written)) {
        m_written.push_back(result.written);
    }
    m_report.CountAchieved();
    m_report.Count("mapped", step.target.mapped ? 1 : 0);
    m_report.Count("bytes", step.file.digest.size);
}

// Only what was restored: a directory with everything below it where it was not there before.
void Restore::GiveOwners()
{
    if (m_options.owner.empty()) {
        return;
    }
    const std::vector<std::wstring>& created = m_directories.Created();
    Progress progress(L"Giving the owner", static_cast<std::int64_t>(created.size() + m_written.size()), 0);
    for (const std::wstring& directory : created) {
        GiveOwner(directory, m_options.owner, m_report);
        progress.FileDone(0);
    }
    for (const std::wstring& file : m_written) {
        GiveOwner(file, m_options.owner, m_report);
        progress.FileDone(0);
    }
}

} // namespace agent
