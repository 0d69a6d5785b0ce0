// The agent's backup and restore beside a plain program that copies a tree and hashes each file once.

#include "bench/Rows.h"

#include "bench/PlainBackup.h"

#include <windows.h>

#include <filesystem>

namespace bench {

namespace {

namespace fs = std::filesystem;

const std::wstring kBackup = kRoot + LR"(\agent-backup)";
const std::wstring kFirst = kRoot + LR"(\agent-first)";
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
    for (const std::wstring& directory : {kRestored, kPlain, kFirst}) {
        fs::remove_all(directory);
    }
}

void Backup(const std::wstring& source, const std::wstring& target)
{
    Run(L"backup \"" + source + L"\" \"" + target + L"\"");
}

void Restore()
{
    Run(L"restore \"" + kBackup + L"\" --to \"" + kRestored + L"\"");
}

// A first backup, a second one of the same files beside another first one, and a restore.
std::vector<Row> RowsOf(const std::string& group, const std::string& what, const std::wstring& source)
{
    const auto backup = [source] { Backup(source, kBackup); };
    const auto first = [source] { Backup(source, kFirst); };
    const auto plain = [source] { PlainBackup(source, kPlain); };
    const auto clearAll = [] {
        Clear();
        fs::remove_all(kBackup);
    };
    const auto clearAllButOne = [source] {
        Clear();
        if (!fs::exists(kBackup)) {
            Backup(source, kBackup);
        }
    };
    return {{group, "backup of " + what, backup, plain, {}, {}, clearAll, kFewRounds},
            {group, "second backup of " + what + ", beside a first", backup, first, {}, {}, clearAllButOne, kFewRounds},
            {group, "restore of " + what, &Restore, plain, {}, {}, &Clear, kFewRounds}};
}

} // namespace

// Trees that tools/bench.sh creates only when their group is named take minutes.
std::vector<Row> AgentRows()
{
    std::vector<Row> rows = RowsOf("agent", "2,000 files", kRoot + LR"(\agent)");
    const std::wstring many = kRoot + LR"(\agent-many)";
    const std::wstring large = kRoot + LR"(\agent-large)";
    for (const auto& [what, source] : {std::pair("20,000 files", many), std::pair("1 GiB", large)}) {
        if (fs::exists(source)) {
            const std::vector<Row> more = RowsOf("agent-large", what, source);
            rows.insert(rows.end(), more.begin(), more.end());
        }
    }
    return rows;
}

} // namespace bench
