// Threads that finish files while the first thread copies the next ones.

#include "agent/restore/WorkerThreads.h"

#include <utility>

namespace agent {

WorkerThreads::WorkerThreads(std::size_t count)
{
    for (std::size_t i = 0; i < count; ++i) {
        m_threads.emplace_back([this] { Run(); });
    }
}

WorkerThreads::~WorkerThreads()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_all();
    for (std::thread& thread : m_threads) {
        thread.join();
    }
}

void WorkerThreads::Add(std::function<void()> task)
{
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push(std::move(task));
    }
    m_changed.notify_one();
}

void WorkerThreads::Run()
{
    std::unique_lock lock(m_mutex);
    while (true) {
        m_changed.wait(lock, [this] { return m_ends || !m_tasks.empty(); });
        if (m_tasks.empty()) {
            return;
        }
        const std::function<void()> task = std::move(m_tasks.front());
        m_tasks.pop();
        lock.unlock();
        task();
        lock.lock();
    }
}

} // namespace agent
