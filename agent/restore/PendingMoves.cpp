// What is registered for the next restart.

#include "agent/restore/PendingMoves.h"

#include <windows.h>

namespace agent {

namespace {

constexpr const wchar_t* kSessionManager = LR"(SYSTEM\CurrentControlSet\Control\Session Manager)";

std::wstring_view TakeText(std::wstring_view& list)
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

// "*1" and the like in front of a path count the restarts that the entry has waited for.
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

} // namespace

std::vector<PendingMove> ParsePendingMoves(std::wstring_view list)
{
    std::vector<PendingMove> moves;
    while (!list.empty()) {
        std::wstring_view source = TakeText(list);
        std::wstring_view target = TakeText(list);
        if (source.empty()) {
            break; // the end of the list
        }
        TakeWaitMark(source);
        TakeWaitMark(target);
        PendingMove move;
        move.replaces = TakePrefix(target, L"!");
        move.source = ReadPath(source);
        move.target = ReadPath(target);
        moves.push_back(std::move(move));
    }
    return moves;
}

std::optional<std::vector<PendingMove>> ReadPendingMoves()
{
    std::vector<PendingMove> moves;
    for (const wchar_t* name : {L"PendingFileRenameOperations", L"PendingFileRenameOperations2"}) {
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

} // namespace agent
