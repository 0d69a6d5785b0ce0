// What a command that works through a tree would touch.

#include "agent/platform/TreeSurvey.h"

#include "agent/platform/FileInformation.h"

#include <Kestrovane.h>

namespace agent {

namespace {

class Surveyor {
public:
    explicit Surveyor(bool followLinks) : m_followLinks(followLinks) {}

    void TakeFiles(const std::wstring& directory, const std::wstring& filter)
    {
        for (const std::wstring& file : ListFilesFilter(directory, filter, true)) {
            const auto information = ReadInformation(file);
            m_survey.files.push_back(file);
            m_survey.bytes += information ? information->size : 0;
            if (information && information->IsReadOnly()) {
                m_survey.readOnly.push_back(file);
            }
        }
    }

    void TakeTree(const std::wstring& directory, int level)
    {
        if (level > kDeepestSurvey) {
            m_survey.tooDeep = true;
            return;
        }
        ++m_survey.directories;
        TakeFiles(directory, L"*");
        for (const std::wstring& subdirectory : ListDirecoriesRecursive(directory)) {
            const auto information = ReadInformation(subdirectory);
            const bool isLink = information && information->IsLink();
            if (isLink) {
                m_survey.links.push_back(subdirectory);
            }
            if ((!isLink || m_followLinks) && !m_survey.tooDeep) {
                TakeTree(subdirectory, level + 1);
            }
        }
    }

    TreeSurvey Result() { return std::move(m_survey); }

private:
    bool m_followLinks;
    TreeSurvey m_survey;
};

} // namespace

TreeSurvey SurveyTree(const std::wstring& directory, const std::wstring& filter, bool followLinks)
{
    Surveyor surveyor(followLinks);
    if (filter.empty()) {
        surveyor.TakeTree(directory, 1);
    } else {
        surveyor.TakeFiles(directory, filter);
    }
    return surveyor.Result();
}

} // namespace agent
