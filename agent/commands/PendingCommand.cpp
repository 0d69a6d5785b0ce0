// pending: what is registered for the next reboot, and taking it back.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/restore/PendingMoves.h"

#include <windows.h>

#include <algorithm>
#include <memory>

namespace agent {

namespace {

struct PendingOptions {
    bool cancel = false;
    bool all = false;
    std::wstring target;
};

using Moves = std::vector<PendingMove>;

std::wstring Describe(const PendingMove& move)
{
    if (move.IsDeletion()) {
        return L"delete   " + move.source;
    }
    return (move.replaces ? L"replace  " : L"move     ") + move.target + L"  by  " + move.source;
}

void List(const Moves& moves, Report& report)
{
    for (const PendingMove& move : moves) {
        report.AddItem("pending", {{"operation", std::wstring(move.IsDeletion() ? L"delete" : L"move")},
                                   {"source", move.source},
                                   {"target", move.target},
                                   {"replaces", move.replaces}});
        WriteResult(Describe(move) + L"\n");
    }
    report.Set("count", static_cast<std::int64_t>(moves.size()));
}

// What other programs have registered is not this agent's to take back.
void Cancel(const PendingOptions& options, const Moves& moves, Report& report)
{
    const std::wstring target = options.all ? L"" : Absolute(options.target);
    const auto isMeant = [&](const PendingMove& move) { return options.all || EqualIgnoringCase(move.target, target); };
    Moves own;
    std::copy_if(moves.begin(), moves.end(), std::back_inserter(own),
                 [&](const PendingMove& move) { return IsOwn(move) && isMeant(move); });
    report.Set("cancelled", 0);
    if (own.empty() && !options.all) {
        const bool isForeign = std::any_of(moves.begin(), moves.end(), isMeant);
        report.Fail(target, isForeign ? L"its replacement was registered by another program"
                                      : L"no replacement is registered for it; `pending` lists what is");
    } else if (const auto reason = TakeBack(own)) {
        report.Fail(L"the list of pending moves", *reason);
    } else {
        List(own, report);
        report.Set("cancelled", static_cast<std::int64_t>(own.size()));
    }
}

bool IsUsageRight(const PendingOptions& options)
{
    return options.cancel ? options.all == options.target.empty() : !options.all && options.target.empty();
}

int RunPending(const PendingOptions& options)
{
    Report report("pending");
    if (!IsUsageRight(options)) {
        report.Fail(L"the command line", L"--cancel takes a TARGET or --all, and neither comes without it");
        return report.FinishObject(kWrongUsage);
    }
    const auto moves = ReadPendingMoves();
    if (!moves) {
        report.Fail(L"the list of pending moves", LastReason());
    } else if (options.cancel) {
        Cancel(options, *moves, report);
    } else {
        List(*moves, report);
    }
    return report.Finish();
}

} // namespace

void AddPendingCommand(CommandSet& commands)
{
    auto options = std::make_shared<PendingOptions>();
    CommandOptions command = commands.Add("pending", "Lists what is registered for the next reboot",
                                          [options] { return RunPending(*options); });
    command.Optional("TARGET", options->target, "With --cancel: the file whose replacement is taken back");
    command.Flag("--cancel", options->cancel, "Takes this agent's registrations back and deletes their cache files");
    command.Flag("--all", options->all, "With --cancel: all of them");
    command.Example(R"(kestrovane-agent pending)");
    command.Example(R"(kestrovane-agent pending --cancel C:\Data\a.txt)");
}

} // namespace agent
