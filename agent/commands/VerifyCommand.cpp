// verify: compares a version of a backup with its manifest.

#include "agent/commands/Commands.h"

#include "agent/backup/Versions.h"
#include "agent/console/CommandOptions.h"
#include "agent/console/Interrupt.h"
#include "agent/console/Progress.h"
#include "agent/console/Report.h"
#include "agent/console/Stopwatch.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"

#include <memory>

namespace agent {

namespace {

struct VerifyOptions {
    std::wstring backup;
    std::wstring at;
};

// Returns why a copy is damaged; nothing for a whole one.
std::optional<std::wstring> WhyDamaged(const std::wstring& copy, const FileDigest& expected, const OnBytes& onBytes)
{
    const auto digest = DigestFile(copy, onBytes);
    if (!digest) {
        return LastReason();
    }
    if (digest->size != expected.size) {
        return L"the copy is damaged: it has " + std::to_wstring(digest->size) + L" bytes, not " +
               std::to_wstring(expected.size);
    }
    if (digest->sha256 != expected.sha256) {
        return L"the copy is damaged: its content differs from the manifest";
    }
    return std::nullopt;
}

std::int64_t TotalBytes(const Manifest& manifest)
{
    std::int64_t bytes = 0;
    for (const ManifestFile& file : manifest.files) {
        bytes += file.digest.size;
    }
    return bytes;
}

void VerifyFiles(const LoadedVersion& found, Report& report)
{
    const Manifest& manifest = found.read.manifest;
    Progress progress(L"Verifying", static_cast<std::int64_t>(manifest.files.size()), TotalBytes(manifest));
    for (const ManifestFile& file : manifest.files) {
        if (IsInterrupted()) {
            report.SetInterrupted();
            return;
        }
        const std::wstring copy = Join(found.version.folder, file.stored);
        if (const auto reason = WhyDamaged(copy, file.digest, [&](std::int64_t bytes) { progress.AddBytes(bytes); })) {
            report.Fail(copy, *reason);
        } else {
            report.Count("verified");
            report.Count("bytes", file.digest.size);
        }
        progress.FileDone(0);
    }
}

void VerifyManifest(const LoadedVersion& found, Report& report)
{
    if (!found.read.manifest.complete) {
        report.Note(L"the version is not complete: its backup failed in part or was interrupted");
    }
    for (const auto& [name, reason] : found.read.rejected) {
        report.Fail(name, reason);
    }
    if (!found.read.isIntact) {
        report.Fail(Join(found.version.folder, kManifestName), kManifestChanged);
    }
}

int RunVerify(const VerifyOptions& options)
{
    const Stopwatch watch;
    Report report("verify");
    const std::wstring backup = Absolute(options.backup);
    report.Set("backup", backup);
    for (const char* row : {"verified", "bytes", "failed"}) {
        report.Set(row, 0);
    }
    VersionError error;
    if (const auto found = FindVersion(backup, options.at, error)) {
        report.Set("version", found->version.name);
        report.CountAchieved(); // the comparison itself: damage is a part of its result
        VerifyManifest(*found, report);
        VerifyFiles(*found, report);
    } else {
        report.Fail(error.subject, error.reason);
    }
    report.SetSeconds("seconds", watch.Seconds());
    return report.Finish();
}

} // namespace

void AddVerifyCommand(CommandSet& commands)
{
    auto options = std::make_shared<VerifyOptions>();
    CommandOptions command = commands.Add("verify", "Reads a version of a backup and compares it with its manifest",
                                          [options] { return RunVerify(*options); });
    command.Required("BACKUP", options->backup, "The directory that holds the versions");
    command.String("--at", options->at, "NAME", "Another version than the newest complete one");
    command.Example(R"(kestrovane-agent verify D:\Backup)");
}

} // namespace agent
