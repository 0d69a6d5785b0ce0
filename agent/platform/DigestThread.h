// Digests on a second thread, while the first one copies the next file.

#pragma once

#include "agent/platform/Digest.h"

#include <windows.h>

#include <condition_variable>
#include <future>
#include <mutex>
#include <queue>
#include <string>
#include <thread>

namespace agent {

struct DigestResult {
    std::optional<FileDigest> digest;
    DWORD error = ERROR_SUCCESS; // why there is no digest
};

class DigestThread {
public:
    DigestThread();
    ~DigestThread(); // what was started is finished first
    DigestThread(const DigestThread&) = delete;
    DigestThread& operator=(const DigestThread&) = delete;

    std::future<DigestResult> Start(const std::wstring& path);

private:
    using Task = std::packaged_task<DigestResult()>;

    void Run();
    Task Next();

    std::mutex m_mutex; // of the next three
    std::condition_variable m_changed;
    std::queue<Task> m_tasks;
    bool m_ends = false;
    std::thread m_thread;
};

} // namespace agent
