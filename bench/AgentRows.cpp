// The agent's backup and restore beside a plain program that copies a tree and hashes each file once.

#include "bench/Rows.h"

#include "bench/PlainBackup.h"

#include <windows.h>

#include <filesystem>

namespace bench {

namespace {

namespace fs = std::filesystem;

const std::wstring kSource = kRoot + LR"(\agent)";
const std::wstring kBackup = kRoot + LR"(\agent-backup)";
const std::wstring kRestored = kRoot + LR"(\agent-restored)";
const std::wstring kPlain = kRoot + LR"(\agent-plain)";

std::wstring ProgramDirectory()
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    return fs::path(path).parent_path().wstring();
}

void Run(const std::wstring& arguments)
{
    std::wstring command = L"\"" + ProgramDirectory() + LR"(\kestrovane-agent.exe" --quiet )" + arguments;
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    if (::CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, 0, nullptr, nullptr, &startup, &process)) {
        ::WaitForSingleObject(process.hProcess, INFINITE);
        ::CloseHandle(process.hThread);
        ::CloseHandle(process.hProcess);
    }
}

void Clear()
{
    for (const std::wstring& directory : {kRestored, kPlain}) {
        fs::remove_all(directory);
    }
}

void Backup()
{
    Run(L"backup \"" + kSource + L"\" \"" + kBackup + L"\"");
}

} // namespace

std::vector<Row> AgentRows()
{
    return {{"agent",
             "backup of 2,000 files",
             &Backup,
             [] { PlainBackup(kSource, kPlain); },
             {},
             {},
             [] {
                 Clear();
                 fs::remove_all(kBackup);
             },
             kFewRounds},
            {"agent",
             "second backup, nothing changed",
             &Backup,
             [] { PlainBackup(kSource, kPlain); },
             {},
             {},
             &Clear,
             kFewRounds},
            {"agent",
             "restore of 2,000 files",
             [] { Run(L"restore \"" + kBackup + L"\" --to \"" + kRestored + L"\""); },
             [] { PlainBackup(kSource, kPlain); },
             {},
             {},
             &Clear,
             kFewRounds}};
}

} // namespace bench
