// resolve: the volume and the parts of a path.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Report.h"

#include <Kestrovane.h>

#include <memory>

namespace agent {

namespace {

struct ResolveOptions {
    std::wstring path;
};

// A result may consist of zeros.
std::wstring UpToTerminator(const std::wstring& string)
{
    return string.substr(0, string.find(L'\0'));
}

int RunResolve(const ResolveOptions& options)
{
    Report report("resolve");
    const std::wstring unique = UpToTerminator(GetUniqueVolumeNameForPath(options.path));
    std::wstring mountPath;
    if (!GetDisplayNameForVolumeNoThrow(unique, mountPath)) {
        mountPath.clear(); // a share, or a volume that Windows does not know
    }
    report.Set("path", options.path);
    report.SetFlag("volumeRoot", IsVolume(options.path));
    report.Set("uniqueName", unique);
    report.Set("notQualifiedName", UpToTerminator(GetNQUniqueVolumeNameForPath(options.path)));
    report.Set("mountPath", mountPath);
    report.Set("drive", GetVolume(options.path));
    report.Set("directory", GetPathFileName(options.path));
    report.Set("name", GetFileName(options.path));
    report.Set("withoutDrive", GetPathFileNameNoVolume(options.path));
    report.Set("translated", GetPathFileTranslate(options.path));
    if (unique.empty()) {
        report.Fail(options.path, L"Windows finds no volume for it; the drive or share may not exist");
    }
    return report.Finish();
}

} // namespace

void AddResolveCommand(CommandSet& commands)
{
    auto options = std::make_shared<ResolveOptions>();
    CommandOptions command = commands.Add("resolve", "Shows the volume and the components of a path",
                                          [options] { return RunResolve(*options); });
    command.Required("PATH", options->path, "The path");
    command.Example(R"(kestrovane-agent resolve C:\Data\a.txt)");
}

} // namespace agent
