// From the command line to a command's function.

#include "agent/console/CommandLine.h"

#include "agent/commands/Commands.h"
#include "agent/console/CommandOptions.h"
#include "agent/console/Completion.h"
#include "agent/console/HelpText.h"
#include "agent/console/HostFunctions.h"
#include "agent/console/Interrupt.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"

#include <CLI/CLI.hpp>

#include <algorithm>
#include <functional>

namespace agent {

namespace {

constexpr const char* kDescription = "Backs up and restores directory trees with the Kestrovane library.\n"
                                     "Exit codes: 0 all done, 1 nothing could be done or nothing could be written to\n"
                                     "standard output, 2 wrong usage, 3 done in part, 4 done, some of it at the next\n"
                                     "reboot, 130 interrupted.";

class CommandLine : public CommandSet {
public:
    CommandLine()
    {
        m_app.require_subcommand(1);
        m_app.fallthrough();
        m_app.set_version_flag("--version", "kestrovane-agent " KESTROVANE_AGENT_VERSION);
        m_app.add_flag("--json", m_output.json, "One JSON object on standard output, nothing else");
        m_app.add_flag("--verbose", m_output.verbose, "The library's log on standard error");
        m_app.add_flag("--quiet", m_output.quiet, "No progress, notes or summary: only results and failures");
        CommandOptions(m_app).String("--log", m_output.log, "FILE", "Appends every message to this file");
        for (const auto add :
             {&AddBackupCommand, &AddVersionsCommand, &AddShowCommand, &AddVerifyCommand, &AddRestoreCommand,
              &AddMapCommand, &AddListCommand, &AddDeleteCommand, &AddVolumesCommand, &AddResolveCommand,
              &AddOwnCommand, &AddPlatformCommand, &AddPendingCommand, &AddCompletionCommand}) {
            add(*this);
        }
    }

    CommandOptions Add(const std::string& name, const std::string& help, std::function<int()> run) override
    {
        CLI::App* command = m_app.add_subcommand(name, help);
        command->parse_complete_callback([this, run = std::move(run)] { m_command = run; });
        return CommandOptions(*command);
    }

    [[nodiscard]] std::string PowerShellCompletion() const override { return agent::PowerShellCompletion(m_app); }

    int Run(const std::vector<std::wstring>& arguments)
    {
        std::vector<std::string> reversed(arguments.size()); // the order that the parser takes
        std::transform(arguments.rbegin(), arguments.rend(), reversed.begin(), &Utf8);
        const bool json = std::find(arguments.begin(), arguments.end(), L"--json") != arguments.end();
        try {
            m_app.parse(reversed);
        } catch (const CLI::CallForVersion& version) {
            return Inform("version", version.what(), json);
        } catch (const CLI::Success& /*help*/) {
            return Inform("help", FitToTerminal(m_app.help("", CLI::AppFormatMode::All)), json);
        } catch (const CLI::ParseError& error) {
            return RejectUsage(m_app.get_subcommands().empty() ? WhyNoCommand() : error.what(), json);
        }
        if (const auto reason = OpenOutput(m_output)) {
            return RejectUsage("the log file " + Utf8(m_output.log) + " cannot be opened: " + Utf8(*reason), json);
        }
        RegisterHost(m_output.verbose);
        WatchForInterrupt();
        return m_command();
    }

private:
    [[nodiscard]] std::string WhyNoCommand() const
    {
        const std::vector<std::string> unknown = m_app.remaining();
        return unknown.empty() ? "a command is missing" : unknown.front() + " is neither a command nor an option";
    }

    static int Inform(const std::string& subject, const std::string& content, bool json)
    {
        OpenOutput({json, false, false, {}});
        WriteResult(Wide(content) + L"\n");
        Report report(subject);
        report.Set(subject, Wide(content));
        return report.FinishObject(kAllDone);
    }

    static int RejectUsage(const std::string& reason, bool json)
    {
        OpenOutput({json, false, false, {}});
        Report report("usage");
        report.Fail(L"the command line", Wide(reason));
        WriteMessage(L"run kestrovane-agent --help for the commands");
        return report.FinishObject(kWrongUsage);
    }

    CLI::App m_app{kDescription, "kestrovane-agent"};
    std::function<int()> m_command;
    OutputOptions m_output;
};

} // namespace

int RunCommandLine(const std::vector<std::wstring>& arguments)
{
    return CommandLine().Run(arguments);
}

} // namespace agent
