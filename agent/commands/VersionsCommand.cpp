// versions: the versions of a backup.

#include "agent/commands/Commands.h"

#include "agent/backup/Versions.h"
#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"

#include <memory>

namespace agent {

namespace {

struct VersionRow {
    std::wstring name;
    std::wstring state;
    std::int64_t files = 0;
    std::int64_t bytes = 0;
};

// A version without a manifest is one whose backup is still running or was killed.
VersionRow Describe(const Version& version)
{
    std::wstring error;
    const auto read = LoadManifest(version.folder, error);
    if (!read) {
        return {version.name, ReadInformation(Join(version.folder, kManifestName)) ? L"damaged" : L"unfinished"};
    }
    VersionRow row{version.name, read->manifest.complete ? L"complete" : L"incomplete"};
    if (read->manifest.selection) {
        row.state += L", a selection";
    }
    row.files = static_cast<std::int64_t>(read->manifest.files.size());
    for (const ManifestFile& file : read->manifest.files) {
        row.bytes += file.digest.size;
    }
    return row;
}

void Show(const Version& version, Report& report)
{
    const VersionRow row = Describe(version);
    report.CountAchieved();
    report.AddItem("versions", {{"name", row.name},
                                {"folder", version.folder},
                                {"state", row.state},
                                {"files", row.files},
                                {"bytes", row.bytes}});
    WriteResult((row.name.empty() ? L"(format 1)" : row.name) + L"  " + Counted(row.files, L"file") + L", " +
                Counted(row.bytes, L"byte") + L", " + row.state + L"\n");
}

int RunVersions(const std::wstring& path)
{
    Report report("versions");
    const std::wstring target = Absolute(path);
    report.Set("target", target);
    report.Set("count", 0);
    const auto information = ReadInformation(target);
    if (!information || !information->IsDirectory()) {
        report.Fail(target, information ? L"it is a file, not a directory" : LastReason());
        return report.Finish();
    }
    std::vector<Version> versions = ListVersions(target);
    if (versions.empty() && ReadInformation(Join(target, kManifestName))) {
        versions.push_back({L"", target}); // a backup of format 1
    }
    for (const Version& version : versions) {
        Show(version, report);
    }
    report.Set("count", static_cast<std::int64_t>(versions.size()));
    return report.Finish();
}

} // namespace

void AddVersionsCommand(CommandSet& commands)
{
    auto target = std::make_shared<std::wstring>();
    CommandOptions command = commands.Add("versions", "Lists the versions of a backup, the oldest first",
                                          [target] { return RunVersions(*target); });
    command.Required("TARGET", *target, "The directory that holds the versions");
    command.Example(R"(kestrovane-agent versions D:\Backup)");
}

} // namespace agent
