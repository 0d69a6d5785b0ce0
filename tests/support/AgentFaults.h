// Runs of the agent in which one call of Windows fails. Simulations: the imports of the running agent are replaced.

#pragma once

#include "tests/support/AgentProcess.h"

#include <span>
#include <string>
#include <vector>

struct FailingAgentCall {
    const char* name;
    std::uintptr_t result; // that reports the failure
    DWORD lastError;       // 0: unchanged
};

// The imports of the agent that may fail, and those that cannot or whose failure is not simulated.
std::span<const FailingAgentCall> FailingAgentCalls();
std::span<const char* const> SoundAgentCalls();

struct PlannedAgentFailure {
    std::size_t import; // its index in FailingAgentCalls()
    int first;          // of its calls, from 1
    int last;
};

struct AgentFaultRun {
    AgentResult result;
    std::vector<int> calls;          // by import; -1 where the agent does not import it
    std::vector<std::string> others; // imports from Windows that are not in FailingAgentCalls()
};

AgentFaultRun RunAgentWithout(const PlannedAgentFailure* failure, const std::vector<std::wstring>& arguments);
