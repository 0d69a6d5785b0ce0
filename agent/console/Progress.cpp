// How far long work has come.

#include "agent/console/Progress.h"

#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/FileInformation.h"

#include <algorithm>
#include <chrono>

namespace agent {

namespace {

constexpr std::chrono::milliseconds kRedrawInterval(200);
constexpr std::int64_t kBarWidth = 24; // characters: with the numbers, the line fits a terminal of 80
constexpr std::int64_t kMebibyte = 1LL << 20U;
constexpr std::int64_t kMillisecondsPerSecond = 1000;
constexpr std::int64_t kSecondsPerMinute = 60;

std::wstring Mebibytes(std::int64_t bytes)
{
    return std::to_wstring(bytes / kMebibyte) + L" MiB";
}

std::wstring Duration(std::int64_t seconds)
{
    const std::wstring rest = std::to_wstring(seconds % kSecondsPerMinute);
    return std::to_wstring(seconds / kSecondsPerMinute) + (rest.size() == 1 ? L":0" : L":") + rest;
}

} // namespace

Progress::Progress(const std::wstring& stage, std::int64_t files, std::int64_t bytes)
    : m_stage(stage), m_files(files), m_totalBytes(bytes), m_isScan(false)
{
    if (HasStatusLine()) {
        m_drawing = std::thread([this] { Draw(); });
    } else if (!IsQuiet()) {
        WriteResult(stage + L": " + Counted(files, L"file") + L", " + Mebibytes(bytes) + L"\n");
    }
}

Progress::Progress(const std::wstring& stage) : m_stage(stage), m_files(0), m_totalBytes(0), m_isScan(true)
{
    if (HasStatusLine()) {
        m_drawing = std::thread([this] { Draw(); });
    } else if (!IsQuiet()) {
        WriteResult(stage + L"\n");
    }
}

Progress::~Progress()
{
    {
        const std::lock_guard lock(m_mutex);
        m_hasEnded = true;
    }
    m_ended.notify_all();
    if (m_drawing.joinable()) {
        m_drawing.join();
        const std::wstring last = Line();
        ShowStatus(L"");
        WriteResult(last + L"\n");
    }
}

void Progress::Watch(const std::wstring& path)
{
    const std::lock_guard lock(m_mutex);
    m_watched = path;
}

void Progress::AddBytes(std::int64_t bytes)
{
    const std::lock_guard lock(m_mutex);
    m_bytes += bytes;
}

void Progress::FileDone(std::int64_t bytes)
{
    const std::lock_guard lock(m_mutex);
    m_watched.clear();
    ++m_done;
    m_bytes += bytes;
}

void Progress::Draw()
{
    std::unique_lock lock(m_mutex);
    while (!m_ended.wait_for(lock, kRedrawInterval, [this] { return m_hasEnded; })) {
        ShowStatus(Line());
    }
}

std::int64_t Progress::BytesSoFar() const
{
    const auto growing = m_watched.empty() ? std::nullopt : ReadInformation(m_watched);
    return m_bytes + (growing ? growing->size : 0);
}

std::wstring Progress::Line()
{
    if (m_isScan) {
        return m_stage + L": " + Counted(m_done, L"file");
    }
    return m_stage + L" " + Bar(BytesSoFar());
}

std::wstring Progress::Bar(std::int64_t bytes) const
{
    const std::int64_t filled = m_totalBytes == 0 ? kBarWidth : std::min(kBarWidth * bytes / m_totalBytes, kBarWidth);
    const auto elapsed = static_cast<std::int64_t>(std::max<ULONGLONG>(::GetTickCount64() - m_start, 1));
    const std::int64_t rate = bytes * kMillisecondsPerSecond / elapsed; // bytes in a second
    const std::int64_t left = rate == 0 ? 0 : std::max<std::int64_t>(m_totalBytes - bytes, 0) / rate;
    const std::wstring speed = Mebibytes(rate) + L"/s, " + Duration(left) + L" left";
    return L"[" + std::wstring(static_cast<std::size_t>(filled), L'#') +
           std::wstring(static_cast<std::size_t>(kBarWidth - filled), L'.') + L"] " + std::to_wstring(m_done) + L"/" +
           std::to_wstring(m_files) + L", " + std::to_wstring(bytes / kMebibyte) + L"/" + Mebibytes(m_totalBytes) +
           L", " + speed;
}

} // namespace agent
