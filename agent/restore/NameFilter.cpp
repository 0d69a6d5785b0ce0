// Which files of a backup are restored.

#include "agent/restore/NameFilter.h"

#include "agent/platform/Paths.h"
#include "agent/platform/Patterns.h"

namespace agent {

NameFilter::NameFilter(const std::vector<std::wstring>& patterns) : m_patterns(patterns), m_used(patterns.size()) {}

bool NameFilter::Takes(const std::wstring& path)
{
    bool takes = m_patterns.empty();
    for (std::size_t i = 0; i < m_patterns.size(); ++i) {
        if (MatchesPattern(NameOf(path), m_patterns[i])) {
            m_used[i] = true;
            takes = true;
        }
    }
    return takes;
}

void NameFilter::ReportUnused(Report& report) const
{
    for (std::size_t i = 0; i < m_patterns.size(); ++i) {
        if (!m_used[i]) {
            report.Note(L"no file of the backup fits " + m_patterns[i]);
            report.SetInPart();
        }
    }
}

} // namespace agent
