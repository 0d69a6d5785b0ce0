// A backup: a new version of a tree.

#include "agent/backup/Backup.h"

#include "agent/backup/BackupTarget.h"
#include "agent/backup/ManifestNames.h"
#include "agent/console/Interrupt.h"
#include "agent/console/Progress.h"
#include "agent/console/Stopwatch.h"
#include "agent/platform/Directories.h"
#include "agent/platform/Errors.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Security.h"
#include "agent/platform/Times.h"
#include "agent/platform/Volumes.h"

#include <algorithm>
#include <unordered_set>

namespace agent {

namespace {

// The longest name, relative to both roots, whose path fits on both sides.
std::size_t LongestName(const std::wstring& root, const std::wstring& target)
{
    constexpr std::size_t kLongestPath = MAX_PATH - 1;
    const std::size_t before = std::max(root.size(), target.size() + 1 + kLongestVersionName) + 1;
    return kLongestPath - std::min(kLongestPath, before);
}

} // namespace

Backup::Backup(const BackupOptions& options)
    : m_options(options),
      m_source(WithoutLongPrefix(Absolute(options.directory))),
      m_target(WithoutLongPrefix(Absolute(options.target)))
{
    m_manifest.original = m_source;
    m_manifest.filters = options.selection.filters;
    m_manifest.excludes = options.selection.excludes;
    m_manifest.selection = options.selection.IsPartial();
}

int Backup::Run()
{
    const Stopwatch watch;
    SetRows();
    if (CanStart()) {
        Execute();
    }
    m_report.SetSeconds("seconds", watch.Seconds());
    return m_report.Finish();
}

void Backup::SetRows()
{
    m_report.Set("source", m_source);
    m_report.Set("target", m_target);
    for (const char* row : {"files", "bytes", "new", "changed", "unchanged", "removed", "copiedInUse", "failed"}) {
        m_report.Set(row, 0);
    }
}

bool Backup::CanStart()
{
    if (const auto reason = WhyOriginalIsInvalid(m_source)) {
        m_report.Fail(m_source, *reason);
    } else if (const auto unreadable = m_paths.Open(m_source, m_options.snapshots)) {
        m_report.Fail(m_source, *unreadable);
    } else if (IsSameOrBelow(m_target, m_source)) {
        m_report.Fail(m_target, L"the target lies in the directory that is to be backed up");
    } else if (const auto rejected = WhyTargetIsRejected(m_target)) {
        m_report.Fail(m_target, *rejected);
    } else {
        m_former = FormerVersion(ListVersions(m_target));
        if (IsOtherDirectory()) {
            m_report.Fail(m_target, L"it holds the backup of " + m_former.Original() +
                                        L"; each directory needs a target of its own");
        }
    }
    return !m_report.HasFailures();
}

bool Backup::IsOtherDirectory() const
{
    return !m_former.Original().empty() && !EqualIgnoringCase(m_former.Original(), m_source);
}

void Backup::Execute()
{
    m_manifest.started = FormatUtc(Now());
    const SourceTree tree = ReadSourceTree(m_paths.Root(), m_options.selection, LongestName(m_paths.Root(), m_target));
    for (const TreeEntry& directory : tree.directories) {
        if (!m_paths.Covers(directory.name)) { // another volume is mounted there
            m_report.Fail(m_paths.Live(directory.name), kNoSnapshot);
            return;
        }
    }
    ReportTree(tree);
    if (!IsInterrupted() && IsWorthAVersion(tree) && BeginVersion()) {
        CopyTree(tree);
        CountRemoved(tree);
        FinishVersion();
    } else if (IsInterrupted()) {
        m_report.SetInterrupted();
    }
}

// An empty version must not take the place of one that holds files.
bool Backup::IsWorthAVersion(const SourceTree& tree)
{
    if (tree.files.empty() && tree.leftOut > 0) {
        m_report.Note(L"no file matches; no version is written");
        m_report.SetInPart();
        return false;
    }
    const bool isReadable = !tree.files.empty() || !tree.directories.empty() || tree.failures.empty();
    return isReadable;
}

bool Backup::BeginVersion()
{
    if (const auto reason = EnsureDirectory(m_target)) {
        m_report.Fail(m_target, *reason);
        return false;
    }
    const auto version = CreateVersion(m_target);
    if (!version) {
        m_report.Fail(m_target, L"no folder for a version can be created in it: " + LastReason());
        return false;
    }
    m_version = *version;
    m_report.Set("version", m_version.name);
    return true;
}

void Backup::ReportTree(const SourceTree& tree)
{
    for (const SourceFailure& failure : tree.failures) {
        m_report.Fail(failure.path, failure.reason, failure.files);
    }
    for (const std::wstring& link : tree.links) {
        m_manifest.notBackedUp.push_back(link);
        m_report.Add("notBackedUp", m_paths.Live(link));
        m_report.Note(m_paths.Live(link) + L" is a link; what it leads to is not backed up");
    }
    if (m_manifest.selection) {
        m_report.Set("leftOut", tree.leftOut);
    }
}

void Backup::CopyTree(const SourceTree& tree)
{
    StoredNames names;
    const std::vector<TreeEntry> files = CreateDirectories(tree, names);
    DescribeRoot();
    Progress progress(L"Backing up", static_cast<std::int64_t>(files.size()), tree.bytes);
    CopyRun(m_version.folder, m_former, m_options.copy, m_manifest, m_report).Copy(files, names, progress);
}

// Returns the files whose directories exist now.
std::vector<TreeEntry> Backup::CreateDirectories(const SourceTree& tree, StoredNames& names)
{
    std::vector<TreeEntry> files = tree.files;
    std::wstring failed; // the last directory that could not be created; those below it follow
    for (const TreeEntry& directory : tree.directories) {
        const std::wstring path = Join(m_version.folder, names.Add(directory.name));
        if (!failed.empty() && directory.name.starts_with(Join(failed, L""))) {
            continue;
        }
        if (::CreateDirectoryW(path.c_str(), nullptr)) {
            m_manifest.directories.push_back(Describe(directory));
        } else {
            FailDirectory(path, directory.name, files);
            failed = directory.name;
        }
    }
    return files;
}

// One message for all files in it and below.
void Backup::FailDirectory(const std::wstring& path, const std::wstring& name, std::vector<TreeEntry>& files)
{
    const std::wstring reason = L"the directory cannot be created: " + LastReason();
    const auto count = static_cast<std::int64_t>(
        std::erase_if(files, [&](const TreeEntry& file) { return file.name.starts_with(Join(name, L"")); }));
    m_report.Fail(path, reason + L"; not backed up: " + Counted(count, L"file"), count);
}

ManifestDirectory Backup::Describe(const TreeEntry& directory)
{
    const FileInformation& information = directory.information;
    ManifestDirectory entry{directory.name, information.created, information.modified, information.attributes, {}};
    if (m_options.copy.security) {
        const auto security = ReadSecurity(directory.path);
        if (!security) {
            m_report.Fail(directory.path, L"its security descriptor cannot be read: " + LastReason());
        }
        entry.security = security.value_or(L"");
    }
    return entry;
}

// The root of a volume has attributes that no other directory is to get.
void Backup::DescribeRoot()
{
    const auto root = ReadInformation(Join(m_paths.Root(), L""));
    if (root && !IsVolumeRoot(m_source)) {
        m_manifest.root = Describe({L"", L"", m_paths.Root(), *root, 0});
    }
}

// Files of the former version that the tree no longer has. Those that the selection does not take do not count.
void Backup::CountRemoved(const SourceTree& tree)
{
    std::unordered_set<std::wstring> present;
    for (const TreeEntry& file : tree.files) {
        present.insert(file.name);
    }
    const auto isRemoved = [&](const ManifestFile& file) {
        return !present.contains(file.name) && m_options.selection.TakesFile(NameOf(file.name)) &&
               !ReadInformation(Join(m_paths.Root(), file.name));
    };
    const std::vector<ManifestFile> former = m_former.Files();
    m_report.Set("removed", std::count_if(former.begin(), former.end(), isRemoved));
}

void Backup::FinishVersion()
{
    if (IsInterrupted()) {
        m_report.SetInterrupted();
    }
    m_manifest.complete = !m_report.HasFailures() && !IsInterrupted();
    m_manifest.finished = FormatUtc(Now());
    std::sort(m_manifest.files.begin(), m_manifest.files.end(),
              [](const ManifestFile& a, const ManifestFile& b) { return a.name < b.name; });
    if (const auto reason = WriteManifest(m_version.folder, m_manifest)) {
        m_report.Fail(Join(m_version.folder, kManifestName),
                      L"the manifest cannot be written, so the version cannot be "
                      L"restored: " +
                          *reason);
        m_report.SetUseless();
    } else if (m_options.keep > 0 && m_manifest.complete) {
        RemoveOldVersions(m_target, static_cast<std::size_t>(m_options.keep), m_report);
    }
}

} // namespace agent
