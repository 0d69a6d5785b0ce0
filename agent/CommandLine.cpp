// From the command line to a command's function.

#include "agent/CommandLine.h"

#include "agent/Commands.h"
#include "agent/Host.h"
#include "agent/Interrupt.h"
#include "agent/Output.h"
#include "agent/Report.h"
#include "agent/Text.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>
#include <iterator>
#include <map>

namespace agent {

namespace {

// An option or argument that takes Windows' text; CLI11 itself sees UTF-8.
CLI::Option* AddText(CLI::App& app, const std::string& name, std::wstring& value, const std::string& help)
{
    return app.add_option_function<std::string>(
        name, [&value](const std::string& text) { value = Wide(text); }, help);
}

// The same for an option that may be given more than once.
CLI::Option* AddTexts(CLI::App& app, const std::string& name, std::vector<std::wstring>& values,
                      const std::string& help)
{
    return app
        .add_option_function<std::vector<std::string>>(
            name,
            [&values](const std::vector<std::string>& texts) {
                std::transform(texts.begin(), texts.end(), std::back_inserter(values), &Wide);
            },
            help)
        ->take_all()
        ->allow_extra_args(false);
}

void AddMappings(CLI::App& app, Mappings& mappings)
{
    app.add_option_function<std::vector<std::string>>(
           "--map",
           [&mappings](const std::vector<std::string>& texts) {
               for (const std::string& text : texts) {
                   const auto mapping = ParseMapping(Wide(text));
                   if (!mapping) {
                       throw CLI::ValidationError("--map", text + " is not FROM=TO[;SPEC[;recursive]]");
                   }
                   mappings.push_back(*mapping);
               }
           },
           "Alternate location; the first that covers a file decides")
        ->type_name("FROM=TO[;SPEC[;recursive]]")
        ->take_all()
        ->allow_extra_args(false);
}

class CommandLine {
public:
    CommandLine()
    {
        m_app.require_subcommand(1);
        m_app.fallthrough();
        m_app.add_flag("--json", m_common.json, "One JSON object on standard output, nothing else");
        m_app.add_flag("--verbose", m_common.verbose, "The library's log on standard error");
        AddList();
        AddBackup();
        AddMap();
        AddRestore();
        AddDelete();
        AddVolumeCommands();
        AddOwn();
        AddCommand("platform", "Shows what the library says of the Windows release",
                   [this] { return RunPlatform(m_common); });
        AddCommand("pending", "Lists what is registered for the next restart", [this] { return RunPending(m_common); });
    }

    int Run(const std::vector<std::wstring>& arguments)
    {
        std::vector<std::string> reversed(arguments.size()); // as CLI11 wants them
        std::transform(arguments.rbegin(), arguments.rend(), reversed.begin(), &Utf8);
        try {
            m_app.parse(reversed);
        } catch (const CLI::Success& help) {
            OpenOutput(false);
            WriteResult(Wide(m_app.help("", CLI::AppFormatMode::All)));
            return kAllDone;
        } catch (const CLI::ParseError& error) {
            WriteMessage(Wide(error.what()));
            WriteMessage(L"run kestrovane-agent --help for the commands");
            return kWrongUsage;
        }
        OpenOutput(m_common.verbose);
        RegisterHost(m_common.verbose);
        WatchForInterrupt();
        return m_command();
    }

private:
    CLI::App& AddCommand(const std::string& name, const std::string& help, std::function<int()> run)
    {
        CLI::App* command = m_app.add_subcommand(name, help);
        command->parse_complete_callback([this, run = std::move(run)] { m_command = run; });
        return *command;
    }

    void AddList()
    {
        CLI::App& app =
            AddCommand("list", "Lists the files of a directory", [this] { return RunList(m_list, m_common); });
        AddText(app, "DIR", m_list.directory, "The directory")->required();
        AddText(app, "--filter", m_list.filter, "Which names, with * and ?");
        app.add_flag("--recursive", m_list.recursive, "The whole tree");
        app.add_flag("--full-paths", m_list.fullPaths, "Full paths instead of names");
    }

    void AddBackup()
    {
        CLI::App& app = AddCommand("backup", "Copies a tree and writes a manifest of it",
                                   [this] { return RunBackup(m_backup, m_common); });
        AddText(app, "DIR", m_backup.directory, "The directory to back up")->required();
        AddText(app, "TARGET", m_backup.target, "The directory that takes the backup")->required();
        AddText(app, "--filter", m_backup.filter, "Which names, with * and ?");
        AddTexts(app, "--snapshot", m_backup.snapshots, "Reads the files of a volume from its snapshot device")
            ->type_name("VOLUME=DEVICE");
    }

    void AddMap()
    {
        CLI::App& app =
            AddCommand("map", "Shows where a file would be restored", [this] { return RunMap(m_map, m_common); });
        AddText(app, "PATH", m_map.path, "The file, or its directory when NAME is given")->required();
        AddText(app, "NAME", m_map.name, "The file's name or specification");
        AddMappings(app, m_map.mappings);
        app.add_flag("--explain", m_map.explain, "Which mappings cover it, and why");
    }

    void AddRestore()
    {
        CLI::App& app = AddCommand("restore", "Puts the files of a backup back",
                                   [this] { return RunRestore(m_restore, m_common); });
        AddText(app, "BACKUP", m_restore.backup, "The directory that a backup was made into")->required();
        AddMappings(app, m_restore.mappings);
        const std::map<std::string, Overwrite> policies = {
            {"always", Overwrite::kAlways}, {"if-newer", Overwrite::kIfNewer}, {"never", Overwrite::kNever}};
        app.add_option("--overwrite", m_restore.overwrite,
                       "When a file that is there is replaced: always, if-newer, never")
            ->transform(CLI::CheckedTransformer(policies))
            ->type_name("WHEN");
        app.add_flag("--dry-run", m_restore.dryRun, "Shows what would be done and changes nothing");
        AddText(app, "--owner", m_restore.owner, "Gives what was restored to this account afterwards");
        app.add_flag("--temp-cache", m_restore.temporaryCache,
                     "Cache files of files in use go to the temporary directory, where it is on the same volume");
        app.add_flag("--protect-live", m_restore.protectLive,
                     "Keeps copies of the live files meanwhile, and puts them back where the restore fails");
    }

    void AddVolumeCommands()
    {
        AddCommand("volumes", "Lists the mount paths of all volumes", [this] { return RunVolumes(m_common); });
        CLI::App& app = AddCommand("resolve", "Shows the volume and the parts of a path",
                                   [this] { return RunResolve(m_resolve, m_common); });
        AddText(app, "PATH", m_resolve.path, "The path")->required();
    }

    void AddOwn()
    {
        CLI::App& app = AddCommand("own", "Gives a file or a whole tree its owner, with full access",
                                   [this] { return RunOwn(m_own, m_common); });
        AddText(app, "PATH", m_own.path, "The file or directory")->required();
        AddText(app, "ACCOUNT", m_own.account, "A user or group: NAME, DOMAIN\\NAME, .\\NAME, LocalSystem")->required();
        app.add_flag("--yes", m_own.yes, "Does it; without, what would change is shown");
    }

    void AddDelete()
    {
        CLI::App& app = AddCommand("delete", "Deletes a tree, or files of a directory",
                                   [this] { return RunDelete(m_delete, m_common); });
        AddText(app, "DIR", m_delete.directory, "The directory")->required();
        AddText(app, "--filter", m_delete.filter, "Only the files of the directory with such names");
        app.add_flag("--yes", m_delete.yes, "Does it; without, what would go is shown");
        app.add_flag("--clear-readonly", m_delete.clearReadOnly, "Read-only files, too");
        app.add_flag("--follow-links", m_delete.followLinks, "Also what links to directories lead to");
    }

    CLI::App m_app{"Backs up and restores directory trees with the Kestrovane library.\n"
                   "Exit codes: 0 all done, 1 nothing could be done, 2 wrong usage, 3 done in part,\n"
                   "4 done, some of it at the next restart, 130 interrupted.",
                   "kestrovane-agent"};
    std::function<int()> m_command;
    CommonOptions m_common;
    ListOptions m_list;
    BackupOptions m_backup;
    MapOptions m_map;
    RestoreOptions m_restore;
    DeleteOptions m_delete;
    ResolveOptions m_resolve;
    OwnOptions m_own;
};

} // namespace

int RunCommandLine(const std::vector<std::wstring>& arguments)
{
    return CommandLine().Run(arguments);
}

} // namespace agent
