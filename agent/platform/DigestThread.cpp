// Digests on a second thread.

#include "agent/platform/DigestThread.h"

namespace agent {

namespace {

DigestResult Digest(const std::wstring& path)
{
    DigestResult result;
    result.digest = DigestFile(path);
    result.error = result.digest ? ERROR_SUCCESS : ::GetLastError();
    return result;
}

} // namespace

DigestThread::DigestThread() : m_thread([this] { Run(); }) {}

DigestThread::~DigestThread()
{
    {
        const std::lock_guard lock(m_mutex);
        m_ends = true;
    }
    m_changed.notify_one();
    m_thread.join();
}

std::future<DigestResult> DigestThread::Start(const std::wstring& path)
{
    Task task([path] { return Digest(path); });
    std::future<DigestResult> result = task.get_future();
    {
        const std::lock_guard lock(m_mutex);
        m_tasks.push(std::move(task));
    }
    m_changed.notify_one();
    return result;
}

void DigestThread::Run()
{
    for (Task task = Next(); task.valid(); task = Next()) {
        task();
    }
}

// An invalid task means the end.
DigestThread::Task DigestThread::Next()
{
    std::unique_lock lock(m_mutex);
    m_changed.wait(lock, [this] { return m_ends || !m_tasks.empty(); });
    if (m_tasks.empty()) {
        return {};
    }
    Task task = std::move(m_tasks.front());
    m_tasks.pop();
    return task;
}

} // namespace agent
