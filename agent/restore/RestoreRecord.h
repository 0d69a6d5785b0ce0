// The record of a running restore: under which names it writes, and where. It lies on the machine that restores, below
// the user's local application data, so that the next restore finds what a killed one has left.

#pragma once

#include "agent/platform/Handles.h"
#include "agent/platform/IgnoringCase.h"

#include <optional>
#include <set>
#include <string>
#include <vector>

namespace agent {

using DirectorySet = std::set<std::wstring, LessIgnoringCase>;

constexpr const wchar_t* kCacheFilePrefix = L"kvr"; // of the cache files that wait for a reboot

// Whether a file name has the form of this agent's cache files.
bool IsCacheFileName(const std::wstring& name);

// The directory in which new content for `path` is written: its own, or, where the staging name is too long there, the
// nearest one above that still lies below `bound`. Empty when there is none.
std::wstring StagingDirectoryFor(const std::wstring& path, const std::wstring& bound);

class RestoreRecord {
public:
    // Writes the record; `directories` are those of StagingDirectoryFor.
    explicit RestoreRecord(const DirectorySet& directories);

    // The restore has come to its end and has left nothing.
    ~RestoreRecord();
    RestoreRecord(const RestoreRecord&) = delete;
    RestoreRecord& operator=(const RestoreRecord&) = delete;

    // Why no record could be written. A killed restore would then leave its unfinished file.
    [[nodiscard]] const std::wstring& Problem() const { return m_problem; }

    // A file in `directory` that takes new content. No other program and no other restore uses the name; this one uses
    // it again after kMostStagedFiles further calls.
    std::wstring NextStagingPath(const std::wstring& directory);

    // A cache file is about to be created in a directory; it has been created.
    void NoteCacheDirectory(const std::wstring& directory);
    void NoteCacheFile(const std::wstring& path);

private:
    void Append(wchar_t kind, const std::wstring& path);

    std::wstring m_token;
    std::size_t m_staged = 0; // calls of NextStagingPath
    std::wstring m_path;
    UniqueHandle m_file; // open as long as the restore runs: that is how others see that it does
    std::wstring m_problem;
};

// Deletes what killed restores have left in `directories` and is not registered for the reboot. Records of restores
// that are still running are left alone. @return how many files were deleted.
std::int64_t DeleteLeftovers(const DirectorySet& directories);

} // namespace agent
