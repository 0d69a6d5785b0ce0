// Entry of the agent.

#include "agent/console/CommandLine.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <Kestrovane.h>

#include <windows.h>

#include <shellapi.h>

#include <exception>
#include <string>
#include <vector>

namespace {

std::vector<std::wstring> Arguments()
{
    int count = 0;
    const agent::UniqueLocal<wchar_t*> strings(::CommandLineToArgvW(::GetCommandLineW(), &count));
    return {strings.get() + 1, strings.get() + count};
}

} // namespace

int main()
{
    try {
        return agent::RunCommandLine(Arguments());
    } catch (const CAtlException& error) {
        agent::WriteMessage(agent::SystemReason(static_cast<DWORD>(error.m_hr)));
    } catch (const std::exception& error) {
        agent::WriteMessage(agent::Wide(error.what()));
    }
    return agent::kNothingDone;
}
