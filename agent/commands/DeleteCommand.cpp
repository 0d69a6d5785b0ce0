// delete: files that match a filter, or a whole tree.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/HostFunctions.h"
#include "agent/console/Report.h"
#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/Paths.h"
#include "agent/platform/ProtectedDirectories.h"
#include "agent/platform/TreeSurvey.h"

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
    explicit Deletion(const DeleteOptions& options)
        : m_options(options), m_directory(WithoutLongPrefix(Absolute(options.directory)))
    {
    }

    int Run()
    {
        if (const std::wstring reason = WhyRejected(); !reason.empty()) {
            m_report.Fail(m_options.directory, reason);
            return m_report.Finish();
        }
        const TreeSurvey survey = SurveyTree(m_directory, {m_options.filter, m_options.followLinks});
        Show(survey);
        if (IsPossible(survey) && m_options.yes) {
            Delete(survey);
        }
        return m_report.Finish();
    }

private:
    [[nodiscard]] std::wstring WhyRejected() const
    {
        constexpr std::size_t kLongest = 257; // characters: the library appends a search pattern
        if (m_directory.size() > kLongest) {
            return L"a path of more than 257 characters is rejected: the library's clean-up would end the process";
        }
        const auto information = ReadInformation(m_directory);
        if (!information) {
            return LastReason();
        }
        if (!information->IsDirectory()) {
            return L"it is a file, not a directory";
        }
        if (auto reason = WhyProtected(m_directory)) {
            return *reason;
        }
        if (information->IsLink() && !m_options.followLinks) {
            return L"it is a link, which is followed only with --follow-links";
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

    // A link that is followed may lead into a protected directory.
    bool IsPossible(const TreeSurvey& survey)
    {
        for (const auto& [directory, reason] : survey.failures) {
            m_report.Fail(directory, reason);
        }
        if (survey.tooDeep) {
            m_report.Fail(m_directory, L"it has more than " + std::to_wstring(kDeepestSurvey) +
                                           L" levels of directories; a link may lead back into it");
        }
        for (const std::wstring& link : survey.links) {
            if (const auto reason = m_options.followLinks ? WhyProtected(link) : std::nullopt) {
                m_report.Fail(link, *reason);
            }
        }
        if (!m_options.filter.empty() && survey.files.empty()) {
            m_report.Note(L"no file matches " + m_options.filter);
            m_report.SetInPart();
            return false;
        }
        return !m_report.HasFailures();
    }

    void Delete(const TreeSurvey& survey)
    {
        if (!RemoveLinks(survey)) {
            return;
        }
        ClearReadOnly(survey);
        DWORD error = ERROR_SUCCESS;
        const LogListener listener([this](int /*level*/, const std::wstring& line) { TakeCulprit(line); });
        const bool ended = CallInterruptibly([&] {
            const bool deleted = m_options.filter.empty() ? CleanupDirectory(m_directory)
                                                          : DeleteFilesFilter(m_directory, m_options.filter);
            error = deleted ? ERROR_SUCCESS : ::GetLastError();
        });
        if (!ended) {
            m_report.SetInterrupted();
        }
        CountWhatStays(survey);
        if (error != ERROR_SUCCESS) {
            m_report.Fail(FirstThatStays(survey), L"the deletion stopped here: " + SystemReason(error));
        }
    }

    // The library follows every link that it meets.
    bool RemoveLinks(const TreeSurvey& survey)
    {
        if (m_options.followLinks) {
            return true;
        }
        for (const std::wstring& link : survey.links) {
            if (!::RemoveDirectoryW(link.c_str())) {
                m_report.Fail(link, L"the link cannot be removed, so nothing is deleted: " + LastReason());
                return false;
            }
        }
        return true;
    }

    // The library never changes an attribute.
    void ClearReadOnly(const TreeSurvey& survey) const
    {
        if (m_options.clearReadOnly) {
            for (const std::wstring& file : survey.readOnly) {
                ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            }
        }
    }

    // The library reports neither what it has deleted before a failure nor, of a missing directory, that it was
    // missing.
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

    // The library logs what stopped it, the innermost first.
    void TakeCulprit(const std::wstring& line)
    {
        constexpr std::wstring_view kUndeleted = L" couldn't be deleted: ";
        const auto found = line.find(kUndeleted);
        if (found != std::wstring::npos && m_culprit.empty()) {
            m_culprit = line.substr(found + kUndeleted.size());
        }
    }

    // Where the library logs nothing, it works in the order of the names.
    [[nodiscard]] std::wstring FirstThatStays(const TreeSurvey& survey) const
    {
        if (!m_culprit.empty()) {
            return m_culprit;
        }
        for (const std::wstring& file : survey.files) {
            if (ReadInformation(file)) {
                return file;
            }
        }
        return m_directory;
    }

    const DeleteOptions& m_options;
    std::wstring m_directory;
    std::wstring m_culprit;
    Report m_report{"delete"};
};

} // namespace

void AddDeleteCommand(CommandSet& commands)
{
    auto options = std::make_shared<DeleteOptions>();
    CommandOptions command = commands.Add("delete", "Deletes a tree, or files of a directory",
                                          [options] { return Deletion(*options).Run(); });
    command.Required("DIR", options->directory, "The directory");
    command.Pattern("--filter", options->filter, "Only the files of the directory with such names");
    command.Flag("--yes", options->yes, "Does it; without, what would be deleted is shown");
    command.Flag("--clear-readonly", options->clearReadOnly, "Read-only files, too");
    command.Flag("--follow-links", options->followLinks, "Also what links to directories lead to");
    command.Example(R"(kestrovane-agent delete D:\Old)");
    command.Example(R"(kestrovane-agent delete C:\Data --filter *.tmp --yes)");
}

} // namespace agent
