// pending: what is registered for the next restart.

#include "agent/Commands.h"

#include "agent/Output.h"
#include "agent/PendingMoves.h"
#include "agent/Report.h"
#include "agent/Text.h"

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

} // namespace

int RunPending(const CommonOptions& common)
{
    Report report("pending");
    const auto moves = ReadPendingMoves();
    if (!moves) {
        report.Fail(L"the list of pending moves", SystemReason(::GetLastError()));
        return report.Finish(common.json);
    }
    for (const PendingMove& move : *moves) {
        report.AddItem("pending", {{"operation", std::wstring(move.IsDeletion() ? L"delete" : L"move")},
                                   {"source", move.source},
                                   {"target", move.target},
                                   {"replaces", move.replaces}});
        if (!common.json) {
            WriteResult(Describe(move) + L"\n");
        }
    }
    report.Set("count", static_cast<std::int64_t>(moves->size()));
    return report.Finish(common.json);
}

} // namespace agent
