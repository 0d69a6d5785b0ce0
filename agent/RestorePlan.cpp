// What a restore is to do, file by file.

#include "agent/RestorePlan.h"

#include "agent/FileFacts.h"
#include "agent/Text.h"

#include <set>

namespace agent {

namespace {

struct IgnoringCase {
    bool operator()(const std::wstring& first, const std::wstring& second) const
    {
        return ::CompareStringOrdinal(first.c_str(), static_cast<int>(first.size()), second.c_str(),
                                      static_cast<int>(second.size()), TRUE) == CSTR_LESS_THAN;
    }
};

class Planner {
public:
    Planner(const RestoreOptions& options, const std::wstring& backup, const std::wstring& unfinished, Report& report)
        : m_options(options), m_mappings(options.mappings), m_backup(backup), m_unfinished(unfinished), m_report(report)
    {
    }

    RestorePlan Plan(const ReadManifest& loaded)
    {
        const Manifest& manifest = loaded.manifest;
        for (const auto& [name, reason] : loaded.refused) {
            Fail(name, reason);
        }
        RestorePlan plan;
        for (const std::wstring& name : manifest.directories) {
            plan.directories.push_back(FindPlaceOfDirectory(Join(manifest.original, name), m_mappings).directory);
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
        const std::size_t backslash = path.rfind(L'\\');
        const std::wstring name = path.substr(backslash + 1);
        const Place place = FindPlace(path.substr(0, backslash), name, m_mappings);
        return {Join(m_backup, file.name), place.directory, Join(place.directory, name), place.mapped, false, file};
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
        const auto facts = ReadFacts(step.target);
        step.replaces = facts.has_value();
        if (facts && facts->IsDirectory()) {
            Fail(step.target, L"a directory is in its place");
            return false;
        }
        if (facts && !MayReplace(step, *facts)) {
            m_report.Count("skipped");
            return false;
        }
        return true;
    }

    bool MayReplace(const RestoreStep& step, const FileFacts& facts) const
    {
        if (m_options.overwrite == Overwrite::kAlways || EqualIgnoringCase(step.target, m_unfinished)) {
            return true;
        }
        return m_options.overwrite == Overwrite::kIfNewer && step.file.modified > facts.modified;
    }

    void Fail(const std::wstring& subject, const std::wstring& reason)
    {
        m_report.Count("failed");
        m_report.Fail(subject, reason);
    }

    const RestoreOptions& m_options;
    Mappings m_mappings;
    const std::wstring& m_backup;
    const std::wstring& m_unfinished;
    Report& m_report;
    std::set<std::wstring, IgnoringCase> m_targets;
};

} // namespace

RestorePlan PlanRestore(const RestoreOptions& options, const std::wstring& backup, const ReadManifest& loaded,
                        const std::wstring& unfinished, Report& report)
{
    return Planner(options, backup, unfinished, report).Plan(loaded);
}

} // namespace agent
