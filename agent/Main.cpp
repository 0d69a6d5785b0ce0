// Entry of the agent.

#include "agent/console/CommandLine.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

#include <windows.h>

#include <shellapi.h>

#include <exception>
#include <stdexcept>
#include <string>
#include <vector>

namespace {

std::vector<std::wstring> Arguments()
{
    int count = 0;
    const agent::UniqueLocal<wchar_t*> strings(::CommandLineToArgvW(::GetCommandLineW(), &count));
    if (strings == nullptr) {
        throw std::runtime_error("Windows cannot split the command line");
    }
    return {strings.get() + 1, strings.get() + count};
}

int Fail(const std::wstring& reason)
{
    agent::Report report("agent");
    report.Fail(L"kestrovane-agent", reason);
    return report.FinishObject(agent::kNothingDone);
}

} // namespace

int main()
{
    try {
        return agent::RunCommandLine(Arguments());
    } catch (const CAtlException& error) {
        return Fail(agent::SystemReason(static_cast<DWORD>(error.m_hr)));
    } catch (const std::exception& error) {
        return Fail(agent::Wide(error.what()));
    }
}
