// What a restore would do.

#include "agent/restore/DryRun.h"

#include "agent/console/Output.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/platform/Volumes.h"

#include <algorithm>
#include <map>

namespace agent {

namespace {

// The bytes that a volume has to take.
struct Demand {
    std::int64_t growth = 0;  // of all files
    std::int64_t largest = 0; // the old file is there until its new content has been written
};

class DryRun {
public:
    DryRun(const RestorePlan& plan, Report& report) : m_plan(plan), m_report(report) {}

    void Show()
    {
        m_report.Set("overwritten", 0);
        for (const RestoreStep& step : m_plan.steps) {
            if (IsCopyThere(step)) {
                ShowStep(step);
            }
        }
        for (const auto& [volume, demand] : m_demands) {
            CheckSpace(volume, demand.growth + demand.largest);
        }
    }

private:
    bool IsCopyThere(const RestoreStep& step)
    {
        const auto copy = ReadInformation(step.source);
        if (!copy) {
            m_report.Fail(step.source, L"the copy in the backup is missing: " + LastReason());
        } else if (copy->size != step.file.digest.size) {
            m_report.Fail(step.source, L"the copy in the backup is damaged: its size differs from the manifest");
        }
        AddDemand(step);
        return copy && copy->size == step.file.digest.size;
    }

    void ShowStep(const RestoreStep& step)
    {
        const std::wstring& target = step.target.path;
        m_report.CountAchieved();
        m_report.Count("restored");
        m_report.Count("mapped", step.target.mapped ? 1 : 0);
        m_report.Count("bytes", step.file.digest.size);
        m_report.Count("overwritten", step.replaces ? 1 : 0);
        m_report.AddItem("plan", {{"source", step.source}, {"target", target}, {"overwrites", step.replaces}});
        WriteResult(step.source + L" -> " + target + (step.replaces ? L" (overwritten)\n" : L"\n"));
    }

    void AddDemand(const RestoreStep& step)
    {
        Demand& demand = m_demands[VolumeOf(step.target.directory)];
        demand.growth += step.file.digest.size - (step.replaces ? step.present.size : 0);
        demand.largest = std::max(demand.largest, step.file.digest.size);
    }

    // Most steps are in the directory of the step before.
    const std::wstring& VolumeOf(const std::wstring& directory)
    {
        if (directory != m_directory) {
            m_directory = directory;
            m_volume = VolumePath(directory);
        }
        return m_volume;
    }

    void CheckSpace(const std::wstring& volume, std::int64_t needed)
    {
        ULARGE_INTEGER available = {};
        if (!::GetDiskFreeSpaceExW(volume.c_str(), &available, nullptr, nullptr)) {
            m_report.Note(volume + L": its free space is not known: " + LastReason());
        } else if (needed > static_cast<std::int64_t>(available.QuadPart)) {
            m_report.Fail(volume,
                          L"the files do not fit: " + std::to_wstring(needed) + L" bytes are needed, and " +
                              std::to_wstring(available.QuadPart) + L" are free",
                          0);
        }
    }

    const RestorePlan& m_plan;
    Report& m_report;
    std::map<std::wstring, Demand> m_demands; // by volume
    std::wstring m_directory;
    std::wstring m_volume;
};

} // namespace

void ShowPlan(const RestorePlan& plan, Report& report)
{
    DryRun(plan, report).Show();
}

} // namespace agent
