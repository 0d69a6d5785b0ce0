// Running the console agent as a user does.

#pragma once

#include <windows.h>

#include <string>
#include <vector>

struct AgentResult {
    DWORD exitCode = 0;
    std::string output;   // standard output, line ends as "\n"
    std::string messages; // standard error, the same
};

std::wstring AgentProgram(); // its path

// The path of another file in the directory of the agent and of the tests.
std::wstring BesideTheAgent(const std::wstring& name);

// Runs the agent with the arguments to its end.
AgentResult RunAgent(const std::vector<std::wstring>& arguments);

// An agent that is still running, for tests that interrupt or kill it.
class AgentProcess {
public:
    explicit AgentProcess(const std::vector<std::wstring>& arguments);

    // With another standard output: an inheritable handle, or null for a closed one.
    AgentProcess(const std::vector<std::wstring>& arguments, HANDLE output);

    // With a library that is loaded into the process before its first instruction.
    AgentProcess(const std::vector<std::wstring>& arguments, const std::wstring& library);
    ~AgentProcess();
    AgentProcess(const AgentProcess&) = delete;
    AgentProcess& operator=(const AgentProcess&) = delete;

    void Kill();
    AgentResult Wait();

private:
    void Start(const std::vector<std::wstring>& arguments, HANDLE output, DWORD flags = 0);
    void Load(const std::wstring& library);

    HANDLE m_output = nullptr;
    HANDLE m_messages = nullptr;
    PROCESS_INFORMATION m_process = {};
};
