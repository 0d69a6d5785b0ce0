// show: what a version of a backup holds.

#include "agent/commands/Commands.h"

#include "agent/backup/Versions.h"
#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Times.h"

#include <algorithm>
#include <memory>

namespace agent {

namespace {

struct ShowOptions {
    std::wstring backup;
    std::wstring at;
};

void WriteEntry(const std::wstring& size, FileTime modified, const std::wstring& name)
{
    constexpr std::size_t kSizeWidth = 14;
    constexpr std::size_t kTimeWidth = 20;
    std::wstring time = FormatUtc(modified);
    time.resize(std::max(time.size(), kTimeWidth), L' ');
    WriteResult(std::wstring(kSizeWidth - std::min(kSizeWidth, size.size()), L' ') + size + L"  " + time + L"  " +
                name + L"\n");
}

void ShowEntries(const Manifest& manifest, Report& report)
{
    for (const ManifestDirectory& directory : manifest.directories) {
        report.AddItem("directories", {{"name", directory.name}, {"modified", FormatUtc(directory.modified)}});
        WriteEntry(L"<directory>", directory.modified, directory.name);
    }
    std::int64_t bytes = 0;
    for (const ManifestFile& file : manifest.files) {
        bytes += file.digest.size;
        report.AddItem("files", {{"name", file.name},
                                 {"size", file.digest.size},
                                 {"modified", FormatUtc(file.modified)},
                                 {"sha256", Wide(file.digest.sha256)}});
        WriteEntry(std::to_wstring(file.digest.size), file.modified, file.name);
    }
    report.Set("fileCount", static_cast<std::int64_t>(manifest.files.size()));
    report.Set("bytes", bytes);
}

void ShowManifest(const LoadedVersion& found, Report& report)
{
    const Manifest& manifest = found.read.manifest;
    report.Set("version", found.version.name);
    report.Set("original", manifest.original);
    report.Set("started", manifest.started);
    report.Set("finished", manifest.finished);
    report.SetFlag("complete", manifest.complete);
    report.SetFlag("selection", manifest.selection);
    for (const std::wstring& filter : manifest.filters) {
        report.Add("filters", filter);
    }
    for (const std::wstring& exclude : manifest.excludes) {
        report.Add("excludes", exclude);
    }
    for (const std::wstring& name : manifest.notBackedUp) {
        report.Add("notBackedUp", name);
    }
    ShowEntries(manifest, report);
    report.CountAchieved();
    for (const auto& [name, reason] : found.read.rejected) {
        report.Fail(name, reason);
    }
}

int RunShow(const ShowOptions& options)
{
    Report report("show");
    const std::wstring backup = Absolute(options.backup);
    report.Set("backup", backup);
    VersionError error;
    if (const auto found = FindVersion(backup, options.at, error)) {
        ShowManifest(*found, report);
    } else {
        report.Fail(error.subject, error.reason);
    }
    return report.Finish();
}

} // namespace

void AddShowCommand(CommandSet& commands)
{
    auto options = std::make_shared<ShowOptions>();
    CommandOptions command =
        commands.Add("show", "Shows what a version of a backup holds", [options] { return RunShow(*options); });
    command.Required("BACKUP", options->backup, "The directory that holds the versions");
    command.String("--at", options->at, "NAME", "Another version than the newest complete one");
    command.Example(R"(kestrovane-agent show D:\Backup --at 2026-11-21T15-04-05Z)");
}

} // namespace agent
