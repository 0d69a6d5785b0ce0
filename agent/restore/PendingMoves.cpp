// What is registered for the next reboot.

#include "agent/restore/PendingMoves.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/restore/RestoreRecord.h"

#include <windows.h>

#include <algorithm>
#include <array>

namespace agent {

namespace {

constexpr const wchar_t* kSessionManager = LR"(SYSTEM\CurrentControlSet\Control\Session Manager)";
constexpr std::array kLists = {L"PendingFileRenameOperations", L"PendingFileRenameOperations2"};

std::wstring_view TakeString(std::wstring_view& list)
{
    const std::wstring_view text = list.substr(0, list.find(L'\0'));
    list.remove_prefix(std::min(text.size() + 1, list.size()));
    return text;
}

bool TakePrefix(std::wstring_view& text, std::wstring_view prefix)
{
    if (!text.starts_with(prefix)) {
        return false;
    }
    text.remove_prefix(prefix.size());
    return true;
}

// "*1" and the like before a path count the reboots that the entry has waited for.
void TakeWaitMark(std::wstring_view& text)
{
    if (text.size() > 2 && text[0] == L'*' && text[1] >= L'0' && text[1] <= L'9') {
        text.remove_prefix(1);
        text.remove_prefix(std::min(text.find_first_not_of(L"0123456789"), text.size()));
    }
}

// From the kernel's form of a path to that of Windows.
std::wstring ReadPath(std::wstring_view text)
{
    TakePrefix(text, LR"(\??\)");
    if (TakePrefix(text, LR"(UNC\)")) {
        return LR"(\\)" + std::wstring(text);
    }
    return std::wstring(text);
}

std::optional<std::wstring> ReadList(const wchar_t* name)
{
    DWORD size = 0; // bytes
    LSTATUS status =
        ::RegGetValueW(HKEY_LOCAL_MACHINE, kSessionManager, name, RRF_RT_REG_MULTI_SZ, nullptr, nullptr, &size);
    std::wstring list;
    if (status == ERROR_SUCCESS) {
        list.resize(size / sizeof(wchar_t));
        status =
            ::RegGetValueW(HKEY_LOCAL_MACHINE, kSessionManager, name, RRF_RT_REG_MULTI_SZ, nullptr, list.data(), &size);
    }
    if (status == ERROR_FILE_NOT_FOUND) {
        return std::wstring();
    }
    if (status != ERROR_SUCCESS) {
        ::SetLastError(static_cast<DWORD>(status));
        return std::nullopt;
    }
    list.resize(size / sizeof(wchar_t));
    return list;
}

LSTATUS WriteList(const wchar_t* name, const std::wstring& list)
{
    if (list.empty()) {
        return ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kSessionManager, name);
    }
    const std::wstring terminated = list + L'\0';
    return ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, kSessionManager, name, REG_MULTI_SZ, terminated.data(),
                             static_cast<DWORD>(terminated.size() * sizeof(wchar_t)));
}

// An entry as the registry holds it, without the terminators, and what it means.
struct Entry {
    std::wstring_view source;
    std::wstring_view target;
    PendingMove move;
};

std::vector<Entry> ParseEntries(std::wstring_view list)
{
    std::vector<Entry> entries;
    while (!list.empty()) {
        std::wstring_view source = TakeString(list);
        std::wstring_view target = TakeString(list);
        if (source.empty()) {
            break; // the end of the list
        }
        Entry entry{source, target, {}};
        TakeWaitMark(source);
        TakeWaitMark(target);
        entry.move.replaces = TakePrefix(target, L"!");
        entry.move.source = ReadPath(source);
        entry.move.target = ReadPath(target);
        entries.push_back(std::move(entry));
    }
    return entries;
}

// The list without some moves, or nothing when it holds none of them.
std::optional<std::wstring> Without(const std::wstring& list, const std::vector<PendingMove>& moves)
{
    std::wstring rest;
    bool found = false;
    for (const Entry& entry : ParseEntries(list)) {
        if (std::find(moves.begin(), moves.end(), entry.move) != moves.end()) {
            found = true;
        } else {
            rest.append(entry.source).append(1, L'\0').append(entry.target).append(1, L'\0');
        }
    }
    return found ? std::optional(rest) : std::nullopt;
}

void DeleteCacheFile(const std::wstring& path)
{
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL); // a read-only file cannot be deleted
    ::DeleteFileW(path.c_str());
}

} // namespace

std::vector<PendingMove> ParsePendingMoves(std::wstring_view list)
{
    std::vector<PendingMove> moves;
    for (Entry& entry : ParseEntries(list)) {
        moves.push_back(std::move(entry.move));
    }
    return moves;
}

std::optional<std::vector<PendingMove>> ReadPendingMoves()
{
    std::vector<PendingMove> moves;
    for (const wchar_t* name : kLists) {
        const auto list = ReadList(name);
        if (!list) {
            return std::nullopt;
        }
        for (PendingMove& move : ParsePendingMoves(*list)) {
            moves.push_back(std::move(move));
        }
    }
    return moves;
}

bool IsOwn(const PendingMove& move)
{
    return move.replaces && IsCacheFileName(NameOf(move.source));
}

std::optional<std::wstring> TakeBack(const std::vector<PendingMove>& moves)
{
    for (const wchar_t* name : kLists) {
        const auto list = ReadList(name);
        if (!list) {
            return LastReason();
        }
        const auto rest = Without(*list, moves);
        const LSTATUS status = rest ? WriteList(name, *rest) : ERROR_SUCCESS;
        if (status != ERROR_SUCCESS) {
            return SystemReason(static_cast<DWORD>(status));
        }
    }
    for (const PendingMove& move : moves) {
        DeleteCacheFile(move.source);
    }
    return std::nullopt;
}

} // namespace agent
