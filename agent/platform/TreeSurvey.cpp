// What a command that works through a tree would touch.

#include "agent/platform/TreeSurvey.h"

#include "agent/platform/Patterns.h"
#include "agent/platform/TreeWalk.h"

namespace agent {

namespace {

class Surveyor : public TreeVisitor {
public:
    explicit Surveyor(const SurveyOptions& options) : m_options(options) {}

    void OnFile(const TreeEntry& file) override
    {
        if (!m_options.filter.empty() && !MatchesPattern(file.component, m_options.filter)) {
            return;
        }
        m_survey.files.push_back(file.path);
        m_survey.bytes += file.information.size;
        if (file.information.IsReadOnly()) {
            m_survey.readOnly.push_back(file.path);
        }
    }

    bool OnDirectory(const TreeEntry& directory) override
    {
        if (!m_options.filter.empty()) {
            return false; // a filter speaks of the directory itself
        }
        const bool isLink = directory.information.IsLink();
        if (isLink) {
            m_survey.links.push_back(directory.path);
        }
        if (isLink && !m_options.followLinks) {
            return false;
        }
        m_survey.tooDeep = m_survey.tooDeep || directory.level >= kDeepestSurvey;
        ++m_survey.directories;
        return !m_survey.tooDeep;
    }

    void OnFailure(const std::wstring& directory, const std::wstring& reason) override
    {
        m_survey.failures.emplace_back(directory, reason);
    }

    TreeSurvey Result() { return std::move(m_survey); }

private:
    const SurveyOptions& m_options;
    TreeSurvey m_survey;
};

} // namespace

TreeSurvey SurveyTree(const std::wstring& directory, const SurveyOptions& options)
{
    Surveyor surveyor(options);
    WalkTree(directory, surveyor);
    TreeSurvey survey = surveyor.Result();
    survey.directories += options.filter.empty() ? 1 : 0; // the directory itself
    return survey;
}

} // namespace agent
