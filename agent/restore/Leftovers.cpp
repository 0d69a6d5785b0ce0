// What killed restores have left: found through their records, and deleted.

#include "agent/platform/Encoding.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"
#include "agent/platform/WholeFile.h"
#include "agent/restore/PendingMoves.h"
#include "agent/restore/RecordFormat.h"
#include "agent/restore/RestoreRecord.h"

#include <Kestrovane.h>

#include <algorithm>
#include <sstream>
#include <utility>

namespace agent {

namespace {

// The record of a restore that has ended without removing it.
struct DeadRecord {
    std::wstring path;
    std::wstring token;
    FileTime written = 0; // the last line
    std::vector<std::wstring> lines;
};

class Leftovers {
public:
    explicit Leftovers(DirectorySet directories) : m_directories(std::move(directories))
    {
        m_directories.insert(TemporaryDirectory()); // some cache files are there
    }

    std::int64_t Delete()
    {
        const std::wstring folder = RecordFolder();
        if (folder.empty() || !ReadInformation(folder)) {
            return 0;
        }
        for (const std::wstring& path : ListFilesFilter(folder, std::wstring(L"*") + kRecordExtension, true)) {
            if (const auto record = ReadDead(path)) {
                DeleteOf(*record);
            }
        }
        return m_deleted;
    }

private:
    // A running restore keeps its record open for writing, which makes this fail.
    static std::optional<DeadRecord> ReadDead(const std::wstring& path)
    {
        const std::wstring name = NameOf(path);
        const std::wstring token = name.substr(0, name.find(L'.'));
        const auto information = ReadInformation(path);
        const auto content = ReadWholeFile(path);
        if (token.size() != kTokenLength || !information || !content) {
            return std::nullopt;
        }
        DeadRecord record{path, token, information->modified, {}};
        std::istringstream stream(*content);
        for (std::string line; std::getline(stream, line);) {
            record.lines.push_back(Wide(line));
        }
        return record;
    }

    // The record stays as long as it names a directory that no restore has come to since.
    void DeleteOf(const DeadRecord& record)
    {
        bool isDone = true;
        for (const std::wstring& line : record.lines) {
            const std::wstring path = line.substr(std::min<std::size_t>(1, line.size()));
            const bool isFile = line.starts_with(kCacheFileLine);
            if (!m_directories.contains(isFile ? ParentOf(path) : path)) {
                isDone = false;
            } else if (isFile) {
                DeleteCacheFile(path);
            } else if (line.starts_with(kDirectoryLine)) {
                DeleteStagedFiles(path, record.token);
            } else if (&line == &record.lines.back()) {
                DeleteEmptyCacheFiles(path, record.written);
            }
        }
        if (isDone) {
            ::DeleteFileW(record.path.c_str());
        }
    }

    void DeleteStagedFiles(const std::wstring& directory, const std::wstring& token)
    {
        for (std::size_t i = 0; i < kMostStagedFiles; ++i) {
            Remove(Join(directory, StagingName(token, i)));
        }
    }

    // The restore was killed before it could note the name of a cache file: it is still empty then.
    void DeleteEmptyCacheFiles(const std::wstring& directory, FileTime since)
    {
        for (const std::wstring& path : ListFilesFilter(directory, std::wstring(kCacheFilePrefix) + L"*.tmp", true)) {
            const auto information = ReadInformation(path);
            if (information && information->size == 0 && information->modified >= since) {
                DeleteCacheFile(path);
            }
        }
    }

    void DeleteCacheFile(const std::wstring& path)
    {
        if (IsCacheFileName(NameOf(path)) && !IsRegistered(path)) {
            Remove(path);
        }
    }

    void Remove(const std::wstring& path)
    {
        if (ReadInformation(path) && ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL) &&
            ::DeleteFileW(path.c_str())) {
            ++m_deleted;
        }
    }

    static bool IsRegistered(const std::wstring& path)
    {
        const auto moves = ReadPendingMoves();
        // Nothing is deleted where the list cannot be read.
        return !moves || std::any_of(moves->begin(), moves->end(),
                                     [&](const PendingMove& move) { return EqualIgnoringCase(move.source, path); });
    }

    DirectorySet m_directories;
    std::int64_t m_deleted = 0;
};

} // namespace

std::int64_t DeleteLeftovers(const DirectorySet& directories)
{
    return Leftovers(directories).Delete();
}

} // namespace agent
