// Entry of the agent.

#include "agent/CommandLine.h"
#include "agent/Output.h"
#include "agent/Report.h"
#include "agent/Text.h"

#include <Kestrovane.h>

#include <windows.h>

#include <shellapi.h>

#include <exception>

namespace {

std::vector<std::wstring> Arguments()
{
    int count = 0;
    wchar_t** const texts = ::CommandLineToArgvW(::GetCommandLineW(), &count);
    std::vector<std::wstring> arguments(texts + 1, texts + count);
    ::LocalFree(texts);
    return arguments;
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
