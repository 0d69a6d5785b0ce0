// Which files of a backup are restored.

#pragma once

#include "agent/console/Report.h"

#include <string>
#include <vector>

namespace agent {

class NameFilter {
public:
    // File patterns; no pattern selects everything.
    explicit NameFilter(const std::vector<std::wstring>& patterns);

    [[nodiscard]] bool IsEverything() const { return m_patterns.empty(); }

    // Whether the name of a file, without its directory, fits some pattern.
    bool Takes(const std::wstring& path);

    // Names the patterns that fitted no file.
    void ReportUnused(Report& report) const;

private:
    std::vector<std::wstring> m_patterns;
    std::vector<bool> m_used;
};

} // namespace agent
