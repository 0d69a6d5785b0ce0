// A backup: a new version of a tree.

#include "agent/backup/Backup.h"

#include "agent/console/Interrupt.h"
#include "agent/console/Progress.h"
#include "agent/console/Stopwatch.h"
#include "agent/platform/Directories.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/FileInformation.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"

#include <Kestrovane.h>

namespace agent {

namespace {

constexpr const wchar_t* kNoSnapshot = L"no --snapshot is given for its volume";

const wchar_t* WhyRejected(const std::wstring& name, const std::wstring& source, const std::wstring& target)
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

} // namespace

Backup::Backup(const BackupOptions& options)
    : m_source(Absolute(options.directory)), m_target(Absolute(options.target)), m_options(options)
{
    m_manifest.original = m_source;
}

int Backup::Run()
{
    const Stopwatch watch;
    if (CanStart()) {
        m_manifest.started = UtcNow();
        CopyTree();
        m_manifest.finished = UtcNow();
        if (const auto reason = WriteManifest(m_version.folder, m_manifest)) {
            m_report.Fail(Join(m_version.folder, kManifestName), *reason);
        }
    }
    m_report.SetSeconds("seconds", watch.Seconds());
    return m_report.Finish();
}

bool Backup::CanStart()
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
        m_report.Fail(m_source, LastReason());
    } else if (IsSameOrBelow(m_target, m_source)) {
        m_report.Fail(m_target, L"the target lies in the directory that is to be backed up");
    } else if (Ensure(m_target)) {
        if (const auto version = CreateVersion(m_target)) {
            m_version = *version;
            m_report.Set("version", m_version.name);
            return true;
        }
        m_report.Fail(m_target, LastReason());
    }
    return false;
}

void Backup::CopyTree()
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
        if (Ensure(Join(m_version.folder, directory))) {
            m_manifest.directories.push_back({directory, 0, 0, 0, {}});
        }
    }
    CopyFiles(tree.files);
}

void Backup::CopyFiles(const std::vector<std::wstring>& files)
{
    Progress progress(L"Backing up", static_cast<std::int64_t>(files.size()), 0);
    for (const std::wstring& name : files) {
        if (IsInterrupted()) {
            m_report.SetInterrupted();
            m_manifest.complete = false;
            return;
        }
        progress.FileDone(CopyFile(name));
    }
}

// Returns the number of bytes copied.
std::int64_t Backup::CopyFile(const std::wstring& name)
{
    const std::wstring source = SourceOf(Join(m_source, name));
    const std::wstring target = Join(m_version.folder, name);
    if (const wchar_t* reason = WhyRejected(name, source, target)) {
        Fail(source, reason);
        return 0;
    }
    const auto information = ReadInformation(source);
    if (!information || DoCopyComponentFile(source, target) == 0) {
        Fail(source, LastReason());
        return 0;
    }
    // The copy ends with success also when a read error cuts it short.
    const auto copied = DigestFile(target);
    const auto original = DigestFile(source);
    if (!copied || !original || *copied != *original) {
        Fail(source, L"the copy differs from the file: it could not be read to its end, or it has changed meanwhile");
        return 0;
    }
    m_manifest.files.push_back(
        {name, name, *copied, information->created, information->modified, information->attributes, {}});
    m_report.CountAchieved();
    m_report.Count("files");
    m_report.Count("bytes", copied->size);
    return copied->size;
}

// Whether a path can be read from a snapshot, where snapshots are used.
bool Backup::IsCovered(const std::wstring& live) const
{
    return m_snapshots.IsEmpty() || m_snapshots.Covers(live);
}

// Where a live path is read from.
std::wstring Backup::SourceOf(const std::wstring& live) const
{
    return m_snapshots.IsEmpty() ? live : m_snapshots.PathOf(live);
}

bool Backup::Ensure(const std::wstring& directory)
{
    const auto reason = EnsureDirectory(directory);
    if (reason) {
        Fail(directory, *reason);
    }
    return !reason;
}

void Backup::Fail(const std::wstring& subject, const std::wstring& reason)
{
    m_manifest.complete = false;
    m_report.Fail(subject, reason);
}

} // namespace agent
