// How far long work has come.

#include "agent/Progress.h"

#include "agent/Output.h"

#include <algorithm>

namespace agent {

namespace {

constexpr ULONGLONG kRedrawInterval = 100; // milliseconds
constexpr std::int64_t kBarWidth = 30;     // characters
constexpr std::int64_t kMebibyte = 1LL << 20U;

} // namespace

Progress::Progress(const std::wstring& stage, std::int64_t files, bool silent)
    : m_stage(stage), m_files(files), m_bar(!silent && IsResultTerminal())
{
    if (!silent && !m_bar) {
        WriteResult(stage + L": " + std::to_wstring(files) + L" files\n");
    }
}

Progress::~Progress()
{
    if (m_bar) {
        Draw();
        WriteResult(L"\n");
    }
}

void Progress::Advance(std::int64_t bytes)
{
    ++m_done;
    m_bytes += bytes;
    const ULONGLONG now = ::GetTickCount64();
    if (m_bar && now - m_drawn >= kRedrawInterval) {
        m_drawn = now;
        Draw();
    }
}

void Progress::Draw() const
{
    const std::int64_t filled = m_files == 0 ? kBarWidth : kBarWidth * m_done / m_files;
    const auto elapsed = static_cast<std::int64_t>(std::max<ULONGLONG>(::GetTickCount64() - m_start, 1));
    constexpr std::int64_t kMillisecondsPerSecond = 1000;
    WriteResult(L"\r" + m_stage + L" [" + std::wstring(static_cast<std::size_t>(filled), L'#') +
                std::wstring(static_cast<std::size_t>(kBarWidth - filled), L'.') + L"] " + std::to_wstring(m_done) +
                L"/" + std::to_wstring(m_files) + L" files, " + std::to_wstring(m_bytes / kMebibyte) + L" MiB, " +
                std::to_wstring(m_bytes * kMillisecondsPerSecond / elapsed / kMebibyte) + L" MiB/s ");
}

} // namespace agent
