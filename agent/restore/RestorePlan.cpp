// What a restore is to do, file by file.

#include "agent/restore/RestorePlan.h"

#include "agent/platform/FileInformation.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/platform/Paths.h"

#include <set>

namespace agent {

namespace {

class Planner {
public:
    Planner(const RestoreOptions& options, const std::wstring& backup, const std::wstring& unfinished, Report& report)
        : m_options(options), m_mappings(options.mappings), m_backup(backup), m_unfinished(unfinished), m_report(report)
    {
    }

    RestorePlan Plan(const ReadManifest& loaded)
    {
        const Manifest& manifest = loaded.manifest;
        for (const auto& [name, reason] : loaded.rejected) {
            Fail(name, reason);
        }
        RestorePlan plan;
        for (const ManifestDirectory& directory : manifest.directories) {
            const std::wstring path = Join(manifest.original, directory.name);
            plan.directories.push_back(FindPlaceOfDirectory(path, m_mappings).directory);
        }
        for (const ManifestFile& file : manifest.files) {
            RestoreStep step = PlaceFile(manifest.original, file);
            if (IsWanted(step)) {
                plan.steps.push_back(std::move(step));
            }
        }
        return plan;
    }

private:
    RestoreStep PlaceFile(const std::wstring& original, const ManifestFile& file)
    {
        const std::wstring path = Join(original, file.name);
        const std::wstring name = NameOf(path);
        const Place place = FindPlace(ParentOf(path), name, m_mappings);
        return {Join(m_backup, file.stored), place.directory, Join(place.directory, name), place.mapped, false, file};
    }

    bool IsWanted(RestoreStep& step)
    {
        if (IsTooLong(step.source) || IsTooLong(step.target)) {
            Fail(step.target, L"the path, or that of its copy in the backup, has more than 259 characters");
            return false;
        }
        if (!m_targets.insert(step.target).second) {
            Fail(step.source, L"another file of the backup goes to " + step.target + L", too");
            return false;
        }
        const auto present = ReadInformation(step.target);
        step.replaces = present.has_value();
        if (present && present->IsDirectory()) {
            Fail(step.target, L"a directory is in its place");
            return false;
        }
        if (present && !MayReplace(step, *present)) {
            m_report.Count("skipped");
            return false;
        }
        return true;
    }

    bool MayReplace(const RestoreStep& step, const FileInformation& present) const
    {
        if (m_options.overwrite == Overwrite::kAlways || EqualIgnoringCase(step.target, m_unfinished)) {
            return true;
        }
        return m_options.overwrite == Overwrite::kIfNewer && step.file.modified > present.modified;
    }

    void Fail(const std::wstring& subject, const std::wstring& reason) { m_report.Fail(subject, reason); }

    const RestoreOptions& m_options;
    Mappings m_mappings;
    const std::wstring& m_backup;
    const std::wstring& m_unfinished;
    Report& m_report;
    std::set<std::wstring, LessIgnoringCase> m_targets;
};

} // namespace

RestorePlan PlanRestore(const RestoreOptions& options, const std::wstring& backup, const ReadManifest& loaded,
                        const std::wstring& unfinished, Report& report)
{
    return Planner(options, backup, unfinished, report).Plan(loaded);
}

} // namespace agent
