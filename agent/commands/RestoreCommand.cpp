// restore: puts the files of a backup back, in their own places or in alternate ones.

#include "agent/commands/Commands.h"

#include "agent/backup/Manifest.h"
#include "agent/backup/Versions.h"
#include "agent/console/CommandOptions.h"
#include "agent/console/Interrupt.h"
#include "agent/console/Output.h"
#include "agent/console/Progress.h"
#include "agent/console/Report.h"
#include "agent/console/Stopwatch.h"
#include "agent/platform/Directories.h"
#include "agent/platform/Errors.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/restore/LiveProtection.h"
#include "agent/restore/Ownership.h"
#include "agent/restore/Replacement.h"
#include "agent/restore/RestoreJournal.h"
#include "agent/restore/RestorePlan.h"

#include <Kestrovane.h>

#include <algorithm>
#include <optional>

#include <memory>

namespace agent {

namespace {

class Restore {
public:
    Restore(const RestoreOptions& options) : m_options(options), m_backup(Absolute(options.backup)), m_journal(m_backup)
    {
    }

    int Run()
    {
        const Stopwatch watch;
        m_report.Set("backup", m_backup);
        for (const char* row : {"restored", "mapped", "replacedAtRestart", "skipped", "failed", "bytes"}) {
            m_report.Set(row, 0);
        }
        VersionError error;
        if (const auto found = FindVersion(m_backup, L"", error)) {
            m_report.Set("version", found->version.name);
            m_folder = found->version.folder;
            RestoreAll(found->read);
        } else {
            Fail(error.subject, error.reason);
        }
        m_report.SetSeconds("seconds", watch.Seconds());
        return m_report.Finish();
    }

private:
    void RestoreAll(const ReadManifest& loaded)
    {
        if (!loaded.manifest.complete) {
            m_report.Note(L"the backup is not complete");
        }
        ReadJournal();
        const RestorePlan plan = PlanRestore(m_options, m_folder, loaded, m_unfinished, m_report);
        if (m_options.dryRun) {
            ShowPlan(plan);
            return;
        }
        BeginJournal();
        if (m_options.protectLive) {
            ProtectLiveFiles(plan);
        }
        MakeDirectories(plan);
        RestoreFiles(plan);
        GiveOwners();
        EndJournal();
    }

    // An earlier restore that was killed has left its journal: one file may be half-written, and some cache files may wait
    // for nothing.
    void ReadJournal()
    {
        const auto entry = m_journal.Read();
        if (!entry) {
            return;
        }
        m_unfinished = entry->target;
        if (!m_unfinished.empty()) {
            m_report.Add("unfinished", m_unfinished);
            m_report.Note(m_unfinished + L" was left unfinished by an earlier restore");
        }
        for (const CacheSite& site : entry->sites) {
            for (const std::wstring& leftover : FindLeftovers(site)) {
                m_leftovers.push_back(leftover);
            }
        }
    }

    void BeginJournal()
    {
        std::vector<CacheSite> sites;
        if (m_options.protectLive) {
            m_protection.emplace();
            sites.push_back(m_protection->Site());
        }
        // What the killed restore left stays named until this one is through.
        if (!m_journal.Write({m_unfinished, sites})) {
            m_report.Note(L"no journal can be kept in the backup, so a killed restore would not be noticed: " +
                          LastReason());
        }
        m_replacement.emplace(m_journal, m_options.temporaryCache, std::move(sites));
    }

    void EndJournal()
    {
        DeleteCacheFileList(m_leftovers);
        if (m_protection) {
            if (const std::size_t kept = m_protection->DropCopies(); kept > 0) {
                m_report.Note(std::to_wstring(kept) + L" copies of live files stay in the temporary directory");
            }
        }
        if (m_unfinished.empty()) {
            m_journal.Remove();
        } else {
            m_journal.Write({m_unfinished, {}}); // still half-written
        }
    }

    // A file that is replaced at the restart is not overwritten now, so it needs no protection.
    void ProtectLiveFiles(const RestorePlan& plan)
    {
        Progress progress(L"Protecting live files", static_cast<std::int64_t>(plan.steps.size()), 0);
        for (const RestoreStep& step : plan.steps) {
            std::wstring target = step.target;
            if (!step.replaces || IsInterrupted() || !IsCanReplaceFile(target)) {
                progress.FileDone(0);
                continue;
            }
            if (const std::wstring reason = m_protection->Protect(step.target); !reason.empty()) {
                m_unprotected.push_back(step.target);
                Fail(step.target, L"it is left alone, because no copy of it could be kept: " + reason);
            }
            progress.FileDone(step.file.digest.size);
        }
    }

    // Only what was restored: a directory with everything below it where it was not there before.
    void GiveOwners()
    {
        if (m_options.owner.empty()) {
            return;
        }
        Progress progress(L"Giving the owner", static_cast<std::int64_t>(m_created.size() + m_replaced.size()), 0);
        for (const std::wstring& directory : m_created) {
            GiveOwner(directory, m_options.owner, m_report);
            progress.FileDone(0);
        }
        for (const std::wstring& file : m_replaced) {
            GiveOwner(file, m_options.owner, m_report);
            progress.FileDone(0);
        }
    }

    bool IsInCreated(const std::wstring& path) const
    {
        return std::any_of(m_created.begin(), m_created.end(),
                           [&](const std::wstring& directory) { return IsSameOrBelow(path, directory); });
    }

    void MakeDirectories(const RestorePlan& plan)
    {
        for (const std::wstring& directory : plan.directories) {
            if (!IsInterrupted()) {
                Make(directory);
            }
        }
    }

    void RestoreFiles(const RestorePlan& plan)
    {
        Progress progress(L"Restoring", static_cast<std::int64_t>(plan.steps.size()), 0);
        for (const RestoreStep& step : plan.steps) {
            if (IsInterrupted()) {
                m_report.SetInterrupted();
                return;
            }
            if (std::find(m_unprotected.begin(), m_unprotected.end(), step.target) == m_unprotected.end()) {
                RestoreFile(step);
            }
            progress.FileDone(step.file.digest.size);
        }
    }

    void RestoreFile(const RestoreStep& step)
    {
        if (!BackupIsWhole(step) || !Make(step.directory)) {
            return;
        }
        const ReplacementResult result = m_replacement->Replace(step.source, step.target, step.file);
        if (result.outcome == ReplacementResult::Outcome::kFailed) {
            Fail(step.target, result.reason);
            PutBack(step.target);
            return;
        }
        if (result.outcome == ReplacementResult::Outcome::kAtRestart) {
            m_report.SetAtRestart();
            m_report.Count("replacedAtRestart");
            m_report.Add("atRestart", step.target);
            m_report.Note(step.target + L" is in use and will be replaced at the next restart");
        } else {
            m_report.Count("restored");
        }
        if (!IsInCreated(result.written)) {
            m_replaced.push_back(result.written);
        }
        if (EqualIgnoringCase(step.target, m_unfinished)) {
            m_unfinished.clear();
        }
        m_report.CountAchieved();
        m_report.Count("mapped", step.mapped ? 1 : 0);
        m_report.Count("bytes", step.file.digest.size);
    }

    void PutBack(const std::wstring& target)
    {
        if (!m_protection || !m_protection->Holds(target)) {
            return;
        }
        switch (m_protection->PutBack(target)) {
        case LiveProtection::Outcome::kNow:
            m_report.Note(target + L" has its former content again");
            break;
        case LiveProtection::Outcome::kAtRestart:
            m_report.Note(target + L" gets its former content back at the next restart");
            m_report.SetAtRestart();
            break;
        case LiveProtection::Outcome::kFailed:
            Fail(target, L"its former content could not be put back");
            break;
        }
    }

    void ShowPlan(const RestorePlan& plan)
    {
        for (const RestoreStep& step : plan.steps) {
            m_report.CountAchieved();
            m_report.Count("restored");
            m_report.Count("mapped", step.mapped ? 1 : 0);
            m_report.Count("bytes", step.file.digest.size);
            m_report.AddItem("plan", {{"source", step.source}, {"target", step.target}});
            if (!IsJson()) {
                WriteResult(step.source + L" -> " + step.target + L"\n");
            }
        }
    }

    // A damaged copy must not take the place of a live file.
    bool BackupIsWhole(const RestoreStep& step)
    {
        const auto digest = DigestFile(step.source);
        if (!digest) {
            Fail(step.source, LastReason());
        } else if (*digest != step.file.digest) {
            Fail(step.source, L"the copy in the backup is damaged: it differs from the manifest");
        }
        return digest && *digest == step.file.digest;
    }

    bool Make(const std::wstring& directory)
    {
        const std::wstring topmost = TopmostMissing(directory);
        const auto reason = EnsureDirectory(directory);
        if (!reason && !topmost.empty()) {
            m_created.push_back(topmost);
        }
        if (reason) {
            Fail(directory, *reason);
        }
        return !reason;
    }

    void Fail(const std::wstring& subject, const std::wstring& reason) { m_report.Fail(subject, reason); }

    const RestoreOptions& m_options;
    std::wstring m_backup;
    std::wstring m_folder; // of the version
    RestoreJournal m_journal;
    Report m_report{"restore"};
    std::wstring m_unfinished;
    std::vector<std::wstring> m_leftovers;
    std::vector<std::wstring> m_unprotected;
    std::vector<std::wstring> m_created;  // directories that were not there before, without those below them
    std::vector<std::wstring> m_replaced; // restored files that are in none of them
    std::optional<LiveProtection> m_protection;
    std::optional<Replacement> m_replacement;
};

int RunRestore(const RestoreOptions& options)
{
    return Restore(options).Run();
}

} // namespace

void AddRestoreCommand(CommandSet& commands)
{
    auto options = std::make_shared<RestoreOptions>();
    CommandOptions command =
        commands.Add("restore", "Restores the files of a backup", [options] { return RunRestore(*options); });
    command.Required("BACKUP", options->backup, "The directory that takes the versions of the backup");
    AddMappings(command, options->mappings);
    command.Choice<Overwrite>(
        "--overwrite", options->overwrite,
        {{"always", Overwrite::kAlways}, {"if-newer", Overwrite::kIfNewer}, {"never", Overwrite::kNever}},
        "When a file that exists is replaced");
    command.Flag("--dry-run", options->dryRun, "Shows what would be done and changes nothing");
    command.String("--owner", options->owner, "ACCOUNT", "Gives what was restored to this account afterwards");
    command.Flag("--temp-cache", options->temporaryCache,
                 "Cache files of files in use go to the temporary directory, where it is on the same volume");
    command.Flag("--protect-live", options->protectLive,
                 "Keeps copies of the live files meanwhile, and restores them where the restore fails");
}

} // namespace agent
