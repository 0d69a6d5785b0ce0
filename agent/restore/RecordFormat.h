// How a restore's record is written: a file named after the restore's token, one path a line.

#pragma once

#include "agent/platform/Paths.h"

#include <windows.h>

#include <string>

namespace agent {

constexpr std::size_t kTokenLength = 12; // hexadecimal digits
constexpr const wchar_t* kRecordExtension = L".restore";

// What a line begins with.
constexpr wchar_t kDirectoryLine = L'D';      // new content is written here
constexpr wchar_t kCacheDirectoryLine = L'S'; // a cache file is about to be created here
constexpr wchar_t kCacheFileLine = L'C';      // a cache file

// Below the user's local application data; empty when there is none.
inline std::wstring RecordFolder()
{
    wchar_t folder[MAX_PATH] = {};
    const DWORD length = ::GetEnvironmentVariableW(L"LOCALAPPDATA", folder, MAX_PATH);
    return length == 0 || length >= MAX_PATH ? std::wstring() : Join(folder, L"Kestrovane\\Restores");
}

// How many files a restore is writing or verifying at the same time: as many as keep the disk busy.
constexpr std::size_t kMostStagedFiles = 32;

// The names under which a restore writes new content.
inline std::wstring StagingName(const std::wstring& token, std::size_t number)
{
    return L"kv" + token + L"." + std::to_wstring(number);
}

} // namespace agent
