// Threads that finish files while the first thread, the only one that calls the library, copies the next ones. Most of
// the time they wait for the disk to flush; disks flush several files as fast as one.

#pragma once

#include <condition_variable>
#include <functional>
#include <mutex>
#include <queue>
#include <thread>
#include <vector>

namespace agent {

class WorkerThreads {
public:
    explicit WorkerThreads(std::size_t count);
    ~WorkerThreads(); // what was added is done first
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    void Add(std::function<void()> task);

private:
    void Run();

    std::mutex m_mutex; // of the next three
    std::condition_variable m_changed;
    std::queue<std::function<void()>> m_tasks;
    bool m_ends = false;
    std::vector<std::thread> m_threads;
};

} // namespace agent
