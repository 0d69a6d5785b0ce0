// How far long work has come: a bar on a terminal, a line for each stage elsewhere, nothing beside a JSON object.

#pragma once

#include <windows.h>

#include <cstdint>
#include <string>

namespace agent {

class Progress {
public:
    // Announces a stage of so many files.
    Progress(const std::wstring& stage, std::int64_t files, bool silent);
    ~Progress();
    Progress(const Progress&) = delete;
    Progress& operator=(const Progress&) = delete;

    void Advance(std::int64_t bytes); // one file more

private:
    void Draw() const;

    std::wstring m_stage;
    std::int64_t m_files;
    bool m_bar;
    std::int64_t m_done = 0;
    std::int64_t m_bytes = 0;
    ULONGLONG m_start = ::GetTickCount64(); // milliseconds
    ULONGLONG m_drawn = 0;
};

} // namespace agent
