// restore: puts the files of a backup back, in their own places or in alternate ones.

#include "agent/Commands.h"

#include "agent/FileFacts.h"
#include "agent/Interrupt.h"
#include "agent/Manifest.h"
#include "agent/Output.h"
#include "agent/Progress.h"
#include "agent/Report.h"
#include "agent/Stopwatch.h"
#include "agent/Text.h"

#include <Kestrovane.h>

namespace agent {

namespace {

class Restore {
public:
    Restore(const RestoreOptions& options, const CommonOptions& common)
        : m_backup(Absolute(options.backup)),
          m_mappings(options.mappings),
          m_overwrite(options.overwrite),
          m_dryRun(options.dryRun),
          m_json(common.json)
    {
    }

    int Run()
    {
        const Stopwatch watch;
        m_report.Set("backup", m_backup);
        for (const char* row : {"restored", "mapped", "skipped", "failed", "bytes"}) {
            m_report.Set(row, 0);
        }
        std::wstring error;
        if (const auto loaded = LoadManifest(m_backup, error)) {
            RestoreAll(*loaded);
        } else {
            Fail(Join(m_backup, kManifestName), error);
        }
        m_report.SetSeconds("seconds", watch.Seconds());
        return m_report.Finish(m_json);
    }

private:
    void RestoreAll(const ReadManifest& loaded)
    {
        const Manifest& manifest = loaded.manifest;
        for (const auto& [name, reason] : loaded.refused) {
            Fail(name, reason);
        }
        if (!manifest.complete) {
            m_report.Note(L"the backup is not complete");
        }
        for (const std::wstring& directory : manifest.directories) {
            const Place place = FindPlaceOfDirectory(Join(manifest.original, directory), m_mappings);
            if (!m_dryRun && !IsInterrupted()) {
                MakeDirectory(place.directory);
            }
        }
        Progress progress(m_dryRun ? L"Would restore" : L"Restoring", static_cast<std::int64_t>(manifest.files.size()),
                          m_json);
        for (const ManifestFile& file : manifest.files) {
            if (IsInterrupted()) {
                m_report.SetInterrupted();
                return;
            }
            RestoreFile(manifest.original, file);
            progress.Advance(file.digest.size);
        }
    }

    void RestoreFile(const std::wstring& original, const ManifestFile& file)
    {
        const std::wstring path = Join(original, file.name);
        const std::size_t backslash = path.rfind(L'\\');
        const std::wstring name = path.substr(backslash + 1);
        const Place place = FindPlace(path.substr(0, backslash), name, m_mappings);
        const std::wstring target = Join(place.directory, name);
        const std::wstring source = Join(m_backup, file.name);
        if (IsTooLong(source) || IsTooLong(target)) {
            Fail(target, L"the path, or that of its copy in the backup, has more than 259 characters");
            return;
        }
        if (!MayReplace(target, file)) {
            m_report.Count("skipped");
            return;
        }
        if (m_dryRun) {
            ShowPlan(source, target);
        } else if (!BackupIsWhole(source, file) || !MakeDirectory(place.directory) || !Copy(source, target, file)) {
            return;
        }
        m_report.CountAchieved();
        m_report.Count("restored");
        m_report.Count("mapped", place.mapped ? 1 : 0);
        m_report.Count("bytes", file.digest.size);
    }

    bool MayReplace(const std::wstring& target, const ManifestFile& file) const
    {
        const auto facts = ReadFacts(target);
        if (!facts || m_overwrite == Overwrite::kAlways) {
            return true;
        }
        return m_overwrite == Overwrite::kIfNewer && file.modified > facts->modified;
    }

    void ShowPlan(const std::wstring& source, const std::wstring& target)
    {
        m_report.Add("plan", source + L" -> " + target);
        if (!m_json) {
            WriteResult(source + L" -> " + target + L"\n");
        }
    }

    // A damaged copy must not take the place of a live file.
    bool BackupIsWhole(const std::wstring& source, const ManifestFile& file)
    {
        const auto digest = DigestFile(source);
        if (!digest) {
            Fail(source, SystemReason(::GetLastError()));
        } else if (*digest != file.digest) {
            Fail(source, L"the copy in the backup is damaged: it differs from the manifest");
        }
        return digest && *digest == file.digest;
    }

    bool Copy(const std::wstring& source, const std::wstring& target, const ManifestFile& file)
    {
        const bool existed = ReadFacts(target).has_value();
        if (DoCopyComponentFile(source, target) == 0) {
            const DWORD error = ::GetLastError();
            // A copy that failed after the target was opened has already cut it.
            const auto left = ReadFacts(target);
            const bool touched = left && error != ERROR_SHARING_VIOLATION && error != ERROR_ACCESS_DENIED;
            Fail(target, SystemReason(error) + (touched ? L"; the file is incomplete" : L""));
            return false;
        }
        // The copy ends with success also when a read error cuts it short.
        const auto copied = DigestFile(target);
        if (!copied || *copied != file.digest) {
            Fail(target, existed ? L"the file was replaced, but it is incomplete" : L"the file is incomplete");
            return false;
        }
        SetModified(target, file.modified);
        return true;
    }

    bool MakeDirectory(const std::wstring& directory)
    {
        // Its result says only that the path is well formed.
        RecursivelyCreateDirectory(directory);
        if (!isDirectoryExists(directory)) {
            Fail(directory, L"the directory cannot be made: " + SystemReason(::GetLastError()));
            return false;
        }
        return true;
    }

    void Fail(const std::wstring& subject, const std::wstring& reason)
    {
        m_report.Count("failed");
        m_report.Fail(subject, reason);
    }

    std::wstring m_backup;
    Mappings m_mappings;
    Overwrite m_overwrite;
    bool m_dryRun;
    bool m_json;
    Report m_report{"restore"};
};

} // namespace

int RunRestore(const RestoreOptions& options, const CommonOptions& common)
{
    return Restore(options, common).Run();
}

} // namespace agent
