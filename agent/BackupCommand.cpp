// backup: copies a tree and writes a manifest of it.

#include "agent/Commands.h"

#include "agent/FileFacts.h"
#include "agent/Interrupt.h"
#include "agent/Manifest.h"
#include "agent/Progress.h"
#include "agent/Report.h"
#include "agent/Snapshots.h"
#include "agent/SourceTree.h"
#include "agent/Stopwatch.h"
#include "agent/Text.h"

#include <Kestrovane.h>

namespace agent {

namespace {

constexpr const wchar_t* kNoSnapshot = L"no --snapshot is given for its volume";

class Backup {
public:
    Backup(const BackupOptions& options, const CommonOptions& common)
        : m_source(Absolute(options.directory)),
          m_target(Absolute(options.target)),
          m_options(options),
          m_json(common.json)
    {
        m_manifest.original = m_source;
    }

    int Run()
    {
        const Stopwatch watch;
        if (CanStart()) {
            CopyTree();
            if (const auto reason = WriteManifest(m_target, m_manifest)) {
                m_report.Fail(Join(m_target, kManifestName), *reason);
            }
        }
        m_report.SetSeconds("seconds", watch.Seconds());
        return m_report.Finish(m_json);
    }

private:
    bool CanStart()
    {
        m_report.Set("source", m_source);
        m_report.Set("target", m_target);
        m_report.Set("files", 0);
        m_report.Set("bytes", 0);
        if (const auto reason = m_snapshots.Add(m_options.snapshots)) {
            m_report.Fail(m_source, *reason);
        } else if (!IsCovered(m_source)) {
            m_report.Fail(m_source, kNoSnapshot);
        } else if (!IsDirectoryOnDevice(SourceOf(m_source))) {
            m_report.Fail(m_source, SystemReason(::GetLastError()));
        } else if (IsSameOrBelow(m_target, m_source)) {
            m_report.Fail(m_target, L"the target lies in the directory that is to be backed up");
        } else {
            Make(m_target);
        }
        return !m_report.HasFailures();
    }

    void CopyTree()
    {
        const SourceTree tree = ReadSourceTree(SourceOf(m_source), m_options.filter);
        for (const std::wstring& directory : tree.directories) {
            if (!IsCovered(Join(m_source, directory))) { // another volume is mounted there
                Fail(Join(m_source, directory), kNoSnapshot);
                return;
            }
        }
        for (const auto& [directory, reason] : tree.failures) {
            Fail(directory, reason);
        }
        for (const std::wstring& link : tree.links) {
            m_report.Note(Join(m_source, link) + L" is a link; what it leads to is not backed up");
        }
        for (const std::wstring& directory : tree.directories) {
            if (Make(Join(m_target, directory))) {
                m_manifest.directories.push_back(directory);
            }
        }
        CopyFiles(tree.files);
    }

    void CopyFiles(const std::vector<std::wstring>& files)
    {
        Progress progress(L"Backing up", static_cast<std::int64_t>(files.size()), m_json);
        for (const std::wstring& name : files) {
            if (IsInterrupted()) {
                m_report.SetInterrupted();
                m_manifest.complete = false;
                return;
            }
            progress.Advance(CopyFile(name));
        }
    }

    // Gives the number of bytes copied.
    std::int64_t CopyFile(const std::wstring& name)
    {
        const std::wstring source = SourceOf(Join(m_source, name));
        const std::wstring target = Join(m_target, name);
        if (const wchar_t* reason = Refusal(name, source, target)) {
            Fail(source, reason);
            return 0;
        }
        const auto facts = ReadFacts(source);
        if (!facts || DoCopyComponentFile(source, target) == 0) {
            Fail(source, SystemReason(::GetLastError()));
            return 0;
        }
        // The copy ends with success also when a read error cuts it short.
        const auto copied = DigestFile(target);
        const auto original = DigestFile(source);
        if (!copied || !original || *copied != *original) {
            Fail(source,
                 L"the copy differs from the file: it could not be read to its end, or it has changed meanwhile");
            return 0;
        }
        m_manifest.files.push_back({name, *copied, facts->modified});
        m_report.CountAchieved();
        m_report.Count("files");
        m_report.Count("bytes", copied->size);
        return copied->size;
    }

    static const wchar_t* Refusal(const std::wstring& name, const std::wstring& source, const std::wstring& target)
    {
        if (IsTooLong(source) || IsTooLong(target)) {
            return L"the path, or that of its copy, has more than 259 characters";
        }
        if (!IsWellFormed(name)) {
            return L"the name is not valid Unicode, so no manifest can hold it";
        }
        if (EqualIgnoringCase(name, kManifestName)) {
            return L"the name is that of the manifest";
        }
        return nullptr;
    }

    // Whether a path can be read from a snapshot, where snapshots are used.
    bool IsCovered(const std::wstring& live) const { return m_snapshots.IsEmpty() || m_snapshots.Covers(live); }

    // Where a live path is read from.
    std::wstring SourceOf(const std::wstring& live) const
    {
        return m_snapshots.IsEmpty() ? live : m_snapshots.PathOf(live);
    }

    bool Make(const std::wstring& directory)
    {
        const auto reason = MakeDirectory(directory);
        if (reason) {
            Fail(directory, *reason);
        }
        return !reason;
    }

    void Fail(const std::wstring& subject, const std::wstring& reason)
    {
        m_manifest.complete = false;
        m_report.Fail(subject, reason);
    }

    std::wstring m_source;
    std::wstring m_target;
    const BackupOptions& m_options;
    Snapshots m_snapshots;
    bool m_json;
    Manifest m_manifest;
    Report m_report{"backup"};
};

} // namespace

int RunBackup(const BackupOptions& options, const CommonOptions& common)
{
    return Backup(options, common).Run();
}

} // namespace agent
