// The list of moves and deletions that is registered for the next restart.

#include "tests/support/PendingList.h"

#include <gtest/gtest.h>

#include <algorithm>

namespace {

constexpr const wchar_t* kKey = LR"(SYSTEM\CurrentControlSet\Control\Session Manager)";
constexpr const wchar_t* kValue = L"PendingFileRenameOperations";

void DeleteList()
{
    ::RegDeleteKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue);
}

bool SamePath(const std::wstring& registered, const std::wstring& path)
{
    return ::CompareStringOrdinal(registered.c_str(), -1, path.c_str(), -1, TRUE) == CSTR_EQUAL;
}

} // namespace

PendingList::PendingList()
{
    DeleteList();
}

PendingList::~PendingList()
{
    DeleteList();
}

std::vector<PendingEntry> ReadPendingList()
{
    HKEY key = nullptr;
    EXPECT_EQ(ERROR_SUCCESS, ::RegOpenKeyExW(HKEY_LOCAL_MACHINE, kKey, 0, KEY_READ, &key));
    const UniqueKey owner(key);
    DWORD size = 0; // bytes
    std::wstring list;
    if (::RegQueryValueExW(key, kValue, nullptr, nullptr, nullptr, &size) == ERROR_SUCCESS) {
        list.resize(size / sizeof(wchar_t));
        ::RegQueryValueExW(key, kValue, nullptr, nullptr, reinterpret_cast<BYTE*>(list.data()), &size);
    }
    StringList texts;
    for (std::size_t start = 0; start < list.size();) {
        const std::size_t end = std::min(list.find(L'\0', start), list.size());
        texts.push_back(list.substr(start, end - start));
        start = end + 1;
    }
    std::vector<PendingEntry> entries;
    for (std::size_t i = 0; i + 1 < texts.size() && !texts[i].empty(); i += 2) {
        entries.emplace_back(texts[i], texts[i + 1]);
    }
    return entries;
}

bool PendingList::DeletesAtRestart(const std::wstring& path) const
{
    const auto entries = Entries();
    return std::any_of(entries.begin(), entries.end(), [&](const PendingEntry& entry) {
        return SamePath(entry.first, LR"(\??\)" + path) && entry.second.empty();
    });
}

bool PendingList::ReplacesAtRestart(const std::wstring& source, const std::wstring& target) const
{
    const auto entries = Entries();
    return std::any_of(entries.begin(), entries.end(), [&](const PendingEntry& entry) {
        return SamePath(entry.first, LR"(\??\)" + source) && SamePath(entry.second, LR"(!\??\)" + target);
    });
}

void PendingList::Write(const std::vector<PendingEntry>& entries) const
{
    std::wstring list;
    for (const auto& [source, target] : entries) {
        list += source + L'\0' + target + L'\0';
    }
    list += L'\0';
    EXPECT_EQ(ERROR_SUCCESS, ::RegSetKeyValueW(HKEY_LOCAL_MACHINE, kKey, kValue, REG_MULTI_SZ, list.data(),
                                               static_cast<DWORD>(list.size() * sizeof(wchar_t))));
}
