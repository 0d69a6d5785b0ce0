// The files of one backup.

#include "agent/backup/CopyRun.h"

#include "agent/console/Interrupt.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Security.h"
#include "agent/platform/Streams.h"

#include <algorithm>
#include <array>
#include <atomic>
#include <future>
#include <utility>

namespace agent {

namespace {

constexpr std::int64_t kWatchedSize = 8LL << 20U; // bytes: the copy of a smaller file takes no time to watch
constexpr std::size_t kBatch = 1024;              // files whose links are made together
constexpr std::size_t kLinkThreads = 4;           // with more, links are made no faster
constexpr DWORD kPollInterval = 100;              // milliseconds
constexpr DWORD kPollsPerSecond = 1000 / kPollInterval;

bool IsInUse(DWORD error)
{
    return error == ERROR_SHARING_VIOLATION || error == ERROR_LOCK_VIOLATION;
}

bool IsFull(DWORD error)
{
    return error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL;
}

} // namespace

CopyRun::CopyRun(const std::wstring& folder, const FormerVersion& former, const CopyOptions& options,
                 Manifest& manifest, Report& report)
    : m_folder(folder),
      m_former(former),
      m_options(options),
      m_manifest(manifest),
      m_report(report),
      m_retriesLeft(options.retries)
{
}

void CopyRun::Copy(const std::vector<TreeEntry>& files, StoredNames& names, Progress& progress)
{
    std::size_t taken = 0;
    for (std::size_t first = 0; first < files.size() && !MustEnd(); first += kBatch) {
        const std::size_t count = std::min(kBatch, files.size() - first);
        std::vector<Step> steps = StepsFor({files.data() + first, count}, names);
        LinkUnchanged(steps);
        for (Step& step : steps) {
            if (step.isLinked || !MustEnd()) {
                Take(std::move(step), progress);
                ++taken;
            }
        }
    }
    while (m_retriesLeft > 0 && !m_inUse.empty() && !IsInterrupted()) {
        Retry(progress);
    }
    const auto left = static_cast<std::int64_t>(files.size() - taken);
    if (m_isFull && left > 0) {
        m_report.Fail(m_folder, L"the volume is full; not backed up: " + Counted(left, L"file"), left);
    }
}

bool CopyRun::MustEnd() const
{
    return m_isFull || IsInterrupted();
}

std::vector<CopyRun::Step> CopyRun::StepsFor(std::span<const TreeEntry> files, StoredNames& names) const
{
    std::vector<Step> steps;
    steps.reserve(files.size());
    for (const TreeEntry& file : files) {
        const std::wstring stored = names.Add(file.name);
        steps.push_back({&file, stored, Join(m_folder, stored), m_former.Find(file.name), {}, false, false});
    }
    return steps;
}

// On several threads: nearly all of the time of a link is Windows' own. None of them calls the library.
void CopyRun::LinkUnchanged(std::vector<Step>& steps) const
{
    if (std::none_of(steps.begin(), steps.end(), [](const Step& step) { return step.former != nullptr; })) {
        return;
    }
    std::atomic<std::size_t> next = 0;
    const auto link = [&] {
        for (std::size_t i = next++; i < steps.size() && !IsInterrupted(); i = next++) {
            LinkIfUnchanged(steps[i]);
        }
    };
    std::array<std::future<void>, kLinkThreads> threads;
    for (std::future<void>& thread : threads) {
        thread = std::async(std::launch::async, link);
    }
    for (std::future<void>& thread : threads) {
        thread.get();
    }
}

// Links may fail: the volume has none, or the file too many. The file is copied then.
void CopyRun::LinkIfUnchanged(Step& step) const
{
    if (step.former == nullptr || IsTooLong(step.target)) {
        return;
    }
    step.before = ReadInformation(step.source->path).value_or(FileInformation());
    step.isLinked = m_former.HoldsUnchanged(*step.former, step.before) &&
                    ::CreateHardLinkW(step.target.c_str(), m_former.CopyOf(*step.former).c_str(), nullptr);
}

void CopyRun::Take(Step step, Progress& progress)
{
    const std::int64_t size = step.source->information.size;
    if (step.isLinked) {
        Record(step, step.former->digest);
    } else {
        if (size >= kWatchedSize) {
            progress.Watch(step.target);
        }
        Begin(std::move(step));
    }
    progress.FileDone(size);
}

void CopyRun::Begin(Step step)
{
    const auto information = ReadInformation(step.source->path);
    if (!information) {
        m_report.Fail(step.source->path, LastReason());
        return;
    }
    step.before = *information;
    if (IsTooLong(step.target)) {
        m_report.Fail(step.source->path, L"the path of its copy has more than 259 characters");
    } else {
        CopyStep(std::move(step));
    }
}

void CopyRun::CopyStep(Step step)
{
    const CopyResult result = CopyAndDigest(step.source->path, step.target);
    step.isShared = result.isShared;
    if (result.digest) {
        Record(step, *result.digest);
    } else if (result.isSourceError && IsInUse(result.error) && m_retriesLeft > 0) {
        m_inUse.push_back(std::move(step));
    } else {
        FailCopy(step, result);
    }
}

void CopyRun::Retry(Progress& progress)
{
    if (!WaitForRetry()) {
        return;
    }
    --m_retriesLeft;
    for (Step& step : std::exchange(m_inUse, {})) {
        m_report.Count("retried");
        progress.Watch(step.target);
        Begin(std::move(step));
    }
}

// Returns whether the time has passed without an interrupt.
bool CopyRun::WaitForRetry() const
{
    for (DWORD poll = 0; poll < static_cast<DWORD>(m_options.waitSeconds) * kPollsPerSecond; ++poll) {
        if (IsInterrupted()) {
            return false;
        }
        ::Sleep(kPollInterval);
    }
    return !IsInterrupted();
}

void CopyRun::Record(const Step& step, const FileDigest& digest)
{
    const FileInformation& before = step.before;
    ManifestFile file{step.source->name, step.stored, digest, before.created, before.modified, before.attributes, {}};
    if (m_options.security) {
        const auto security = ReadSecurity(step.source->path);
        if (!security) {
            m_report.Fail(step.source->path, L"its security descriptor cannot be read: " + LastReason());
        }
        file.security = security.value_or(L"");
    }
    const bool isSame = step.former != nullptr && step.former->digest == digest;
    m_report.Count(step.former == nullptr ? "new" : isSame ? "unchanged" : "changed");
    m_report.Count("copiedInUse", step.isShared ? 1 : 0);
    m_report.Count("files");
    m_report.Count("bytes", digest.size);
    m_report.CountAchieved();
    m_manifest.files.push_back(std::move(file));
    NoteStreams(*step.source);
}

void CopyRun::NoteStreams(const TreeEntry& source)
{
    for (const std::wstring& stream : ListNamedStreams(source.path)) {
        m_manifest.notBackedUp.push_back(source.name + stream);
        m_report.Add("notBackedUp", source.path + stream);
        m_report.Note(source.path + stream + L" is a named stream, which is not backed up");
    }
}

void CopyRun::FailCopy(const Step& step, const CopyResult& result)
{
    std::wstring reason = SystemReason(result.error);
    if (!result.isSourceError) {
        m_isFull = m_isFull || IsFull(result.error);
        reason = L"its copy cannot be written: " + reason;
    } else if (IsInUse(result.error)) {
        reason += L"; it is in use: --retry N --wait S tries again, --snapshot reads past it";
    }
    m_report.Fail(step.source->path, reason);
}

} // namespace agent
