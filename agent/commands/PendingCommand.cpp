// pending: what is registered for the next restart.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/restore/PendingMoves.h"

#include <windows.h>

namespace agent {

namespace {

std::wstring Describe(const PendingMove& move)
{
    if (move.IsDeletion()) {
        return L"delete   " + move.source;
    }
    return (move.replaces ? L"replace  " : L"move     ") + move.target + L"  by  " + move.source;
}

int RunPending()
{
    Report report("pending");
    const auto moves = ReadPendingMoves();
    if (!moves) {
        report.Fail(L"the list of pending moves", LastReason());
        return report.Finish();
    }
    for (const PendingMove& move : *moves) {
        report.AddItem("pending", {{"operation", std::wstring(move.IsDeletion() ? L"delete" : L"move")},
                                   {"source", move.source},
                                   {"target", move.target},
                                   {"replaces", move.replaces}});
        if (!IsJson()) {
            WriteResult(Describe(move) + L"\n");
        }
    }
    report.Set("count", static_cast<std::int64_t>(moves->size()));
    return report.Finish();
}

} // namespace

void AddPendingCommand(CommandSet& commands)
{
    commands.Add("pending", "Lists what is registered for the next reboot", &RunPending);
}

} // namespace agent
