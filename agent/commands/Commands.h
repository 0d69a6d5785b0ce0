// The agent's commands. Each adds itself to the command line: its name, its options and the function that runs it.

#pragma once

#include <functional>
#include <string>

namespace agent {

class CommandOptions;

// What a command adds itself to.
class CommandSet {
public:
    virtual ~CommandSet() = default;

    // `run` returns the exit code. It is called after all options have their values.
    virtual CommandOptions Add(const std::string& name, const std::string& help, std::function<int()> run) = 0;

    // The script of all commands that were added.
    [[nodiscard]] virtual std::string PowerShellCompletion() const = 0;
};

void AddBackupCommand(CommandSet& commands);
void AddCompletionCommand(CommandSet& commands);
void AddDeleteCommand(CommandSet& commands);
void AddListCommand(CommandSet& commands);
void AddMapCommand(CommandSet& commands);
void AddOwnCommand(CommandSet& commands);
void AddPendingCommand(CommandSet& commands);
void AddPlatformCommand(CommandSet& commands);
void AddResolveCommand(CommandSet& commands);
void AddRestoreCommand(CommandSet& commands);
void AddShowCommand(CommandSet& commands);
void AddVerifyCommand(CommandSet& commands);
void AddVersionsCommand(CommandSet& commands);
void AddVolumesCommand(CommandSet& commands);

} // namespace agent
