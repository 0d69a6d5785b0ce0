// How far long work has come: a bar on a terminal, a line for each stage elsewhere, nothing beside a JSON object.

#pragma once

#include <windows.h>

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <string>
#include <thread>

namespace agent {

class Progress {
public:
    // Announces a stage of so many files and bytes.
    Progress(const std::wstring& stage, std::int64_t files, std::int64_t bytes);

    // Announces a stage whose size is not known yet: a scan.
    explicit Progress(const std::wstring& stage);

    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    // A file is being written at `path`. Until it is done, its size counts as progress.
    void Watch(const std::wstring& path);

    void AddBytes(std::int64_t bytes); // of the file that is being worked on
    void FileDone(std::int64_t bytes); // those that neither AddBytes nor an earlier call has counted

private:
    void Draw();
    std::wstring Line();
    [[nodiscard]] std::wstring Bar(std::int64_t bytes) const;
    [[nodiscard]] std::int64_t BytesSoFar() const;

    const std::wstring m_stage;
    const std::int64_t m_files;
    const std::int64_t m_totalBytes;
    const bool m_isScan;
    std::mutex m_mutex; // of what follows
    std::condition_variable m_ended;
    bool m_hasEnded = false;
    std::wstring m_watched;
    std::int64_t m_done = 0;
    std::int64_t m_bytes = 0;
    const ULONGLONG m_start = ::GetTickCount64(); // milliseconds
    std::thread m_drawing;                        // only on a terminal
};

} // namespace agent
