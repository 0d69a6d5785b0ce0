// delete: files that match a filter, or a whole tree.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"
#include "agent/platform/TreeSurvey.h"
#include "agent/platform/Volumes.h"

#include <Kestrovane.h>

#include <memory>

namespace agent {

namespace {

struct DeleteOptions {
    std::wstring directory;
    std::wstring filter; // empty: the whole tree
    bool yes = false;
    bool clearReadOnly = false;
    bool followLinks = false;
};

class Deletion {
public:
    Deletion(const DeleteOptions& options)
        : m_options(options), m_directory(options.directory.empty() ? L"" : Absolute(options.directory))
    {
    }

    int Run()
    {
        if (const std::wstring reason = Refusal(); !reason.empty()) {
            m_report.Fail(m_options.directory, reason);
            return m_report.Finish();
        }
        const bool wholeTree = m_options.filter.empty();
        const TreeSurvey survey = SurveyTree(m_directory, {m_options.filter, m_options.followLinks});
        Show(survey);
        if (survey.tooDeep) {
            m_report.Fail(m_directory, L"it has more than " + std::to_wstring(kDeepestSurvey) +
                                           L" levels of directories; a link may lead back into it");
        } else if (m_options.yes) {
            Prepare(survey);
            if (!m_report.HasFailures()) {
                wholeTree ? DeleteTree() : DeleteMatching();
            }
            CountWhatStays(survey);
        }
        return m_report.Finish();
    }

private:
    std::wstring Refusal() const
    {
        constexpr std::size_t kLongest = 257; // characters: the library needs room for a search pattern behind it
        if (m_directory.empty()) {
            return L"an empty path is refused";
        }
        if (m_directory.size() > kLongest) {
            return L"a path of more than 257 characters is refused: the library's clean-up would end the process";
        }
        const auto information = ReadInformation(m_directory);
        if (!information) {
            return LastReason();
        }
        if (!information->IsDirectory()) {
            return L"it is not a directory";
        }
        if (IsVolumeRoot(m_directory)) {
            return L"the root of a volume is refused";
        }
        if (information->IsLink() && !m_options.followLinks) {
            return L"it is a link, which is followed only with --follow-links";
        }
        wchar_t windows[MAX_PATH] = {};
        ::GetWindowsDirectoryW(windows, MAX_PATH);
        if (IsSameOrBelow(m_directory, windows) || IsSameOrBelow(windows, m_directory)) {
            return L"the Windows directory is refused";
        }
        return {};
    }

    void Show(const TreeSurvey& survey)
    {
        m_report.Set("directory", m_directory);
        m_report.Set("files", static_cast<std::int64_t>(survey.files.size()));
        m_report.Set("directories", survey.directories);
        m_report.Set("bytes", survey.bytes);
        m_report.Set("links", static_cast<std::int64_t>(survey.links.size()));
        for (const std::wstring& link : survey.links) {
            m_report.Add("linkPaths", link);
            m_report.Note(link + (m_options.followLinks ? L" is a link; what it leads to is deleted, too"
                                                        : L" is a link; it is not followed"));
        }
        if (!m_options.yes) {
            m_report.Note(L"nothing is deleted without --yes");
        }
        m_report.Set("deleted", 0);
    }

    // The library never changes an attribute, and it follows every link that it meets.
    void Prepare(const TreeSurvey& survey)
    {
        if (m_options.clearReadOnly) {
            for (const std::wstring& file : survey.readOnly) {
                ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            }
        }
        if (m_options.followLinks || !m_options.filter.empty()) {
            return;
        }
        for (const std::wstring& link : survey.links) {
            if (!::RemoveDirectoryW(link.c_str())) {
                m_report.Fail(link, L"the link cannot be removed, so nothing is deleted: " + LastReason());
            }
        }
    }

    void DeleteTree()
    {
        if (!CleanupDirectory(m_directory)) {
            m_report.Fail(m_directory, L"the deletion stopped: " + LastReason());
        }
    }

    void DeleteMatching()
    {
        if (!DeleteFilesFilter(m_directory, m_options.filter)) {
            m_report.Fail(m_directory, L"the deletion stopped: " + LastReason());
        }
    }

    // The library says neither what it has deleted before a failure nor, of a missing directory, that there was nothing.
    void CountWhatStays(const TreeSurvey& survey)
    {
        for (const std::wstring& file : survey.files) {
            if (!ReadInformation(file)) {
                m_report.CountAchieved();
                m_report.Count("deleted");
            } else {
                m_report.Add("left", file);
            }
        }
    }

    const DeleteOptions& m_options;
    std::wstring m_directory;
    Report m_report{"delete"};
};

int RunDelete(const DeleteOptions& options)
{
    return Deletion(options).Run();
}

} // namespace

void AddDeleteCommand(CommandSet& commands)
{
    auto options = std::make_shared<DeleteOptions>();
    CommandOptions command =
        commands.Add("delete", "Deletes a tree, or files of a directory", [options] { return RunDelete(*options); });
    command.Required("DIR", options->directory, "The directory");
    command.Pattern("--filter", options->filter, "Only the files of the directory with such names");
    command.Flag("--yes", options->yes, "Does it; without, what would be deleted is shown");
    command.Flag("--clear-readonly", options->clearReadOnly, "Read-only files, too");
    command.Flag("--follow-links", options->followLinks, "Also what links to directories lead to");
}

} // namespace agent
