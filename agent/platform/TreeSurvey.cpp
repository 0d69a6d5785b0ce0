// What a command that works through a tree would touch.

#include "agent/platform/TreeSurvey.h"

#include "agent/platform/FileInformation.h"
#include "agent/platform/TreeWalk.h"

#include <Kestrovane.h>

namespace agent {

namespace {

class Surveyor : public TreeVisitor {
public:
    explicit Surveyor(const SurveyOptions& options) : m_options(options) {}

    void OnFile(const TreeEntry& file) override { Take(file.path, file.information); }

    bool OnDirectory(const TreeEntry& directory) override
    {
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

    void Take(const std::wstring& path, const FileInformation& information)
    {
        m_survey.files.push_back(path);
        m_survey.bytes += information.size;
        if (information.IsReadOnly()) {
            m_survey.readOnly.push_back(path);
        }
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
    if (!options.filter.empty()) {
        // The library's deletion takes the same files.
        for (const std::wstring& file : ListFilesFilter(directory, options.filter, true)) {
            surveyor.Take(file, ReadInformation(file).value_or(FileInformation()));
        }
        return surveyor.Result();
    }
    WalkTree(directory, surveyor);
    TreeSurvey survey = surveyor.Result();
    ++survey.directories; // the directory itself
    return survey;
}

} // namespace agent
