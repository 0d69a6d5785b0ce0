// completion: a script that completes the command line in a shell.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"

#include <memory>

namespace agent {

namespace {

enum class Shell { kPowerShell };

int RunCompletion(const CommandSet& commands)
{
    const std::wstring script = Wide(commands.PowerShellCompletion());
    Report report("completion");
    WriteResult(script);
    if (IsJson()) {
        report.Set("script", script);
    }
    return report.Finish();
}

} // namespace

void AddCompletionCommand(CommandSet& commands)
{
    auto shell = std::make_shared<Shell>(Shell::kPowerShell);
    CommandOptions command = commands.Add("completion", "Prints a script that completes commands and options",
                                          [&commands, shell] { return RunCompletion(commands); });
    command.Choice<Shell>("SHELL", *shell, {{"powershell", Shell::kPowerShell}}, "The shell");
    command.Example("kestrovane-agent completion powershell | Out-String | Invoke-Expression");
}

} // namespace agent
