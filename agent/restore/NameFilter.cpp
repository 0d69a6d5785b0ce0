// Which files of a backup are restored.

#include "agent/restore/NameFilter.h"

#include "agent/platform/Paths.h"

#include <Kestrovane.h>

namespace agent {

namespace {

bool Fits(std::wstring name, std::wstring pattern)
{
    if (pattern == L"*.*") {
        return true; // as Windows' own listings have it: names without a dot, too
    }
    std::wstring directory = L"\\";
    return IsFileDescMatch(directory, pattern, false, directory, name, false);
}

} // namespace

NameFilter::NameFilter(const std::vector<std::wstring>& patterns) : m_patterns(patterns), m_used(patterns.size()) {}

bool NameFilter::Takes(const std::wstring& path)
{
    bool takes = m_patterns.empty();
    for (std::size_t i = 0; i < m_patterns.size(); ++i) {
        if (Fits(NameOf(path), m_patterns[i])) {
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
