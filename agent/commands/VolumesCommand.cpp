// volumes: the mount paths of all volumes, with names and space.

#include "agent/commands/Commands.h"

#include "agent/console/CommandOptions.h"
#include "agent/console/Output.h"
#include "agent/console/Report.h"

#include <Kestrovane.h>

#include <algorithm>

namespace agent {

namespace {

struct VolumeRow {
    std::wstring mountPath;
    std::wstring uniqueName;
    std::wstring displayName;
    double total = 0; // 10^9 bytes
    double free = 0;  // 10^9 bytes
    bool hasMostFree = false;
};

VolumeRow Describe(const std::wstring& mountPath, const std::wstring& mostFree)
{
    VolumeRow row{mountPath,
                  GetUniqueVolumeNameForPath(mountPath),
                  {},
                  GetTotalVolumeSpace(mountPath),
                  GetAvailableVolumeSpace(mountPath),
                  mountPath == mostFree};
    if (!GetDisplayNameForVolumeNoThrow(row.uniqueName, row.displayName)) {
        row.displayName = mountPath;
    }
    return row;
}

std::wstring Gigabytes(double value)
{
    const std::wstring digits = std::to_wstring(value);
    return digits.substr(0, digits.find(L'.') + 2);
}

void WriteColumns(const std::vector<std::wstring>& columns)
{
    constexpr std::size_t kWidths[] = {12, 52, 14, 12, 12, 0};
    std::wstring line;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const std::size_t padding = kWidths[i] - std::min(kWidths[i], columns[i].size());
        line += columns[i] + std::wstring(padding, L' ');
    }
    line.erase(line.find_last_not_of(L' ') + 1);
    WriteResult(line + L"\n");
}

int RunVolumes()
{
    Report report("volumes");
    const std::wstring mostFree = GetVolumeMaxFreeSpace();
    const std::vector<std::wstring> mountPaths = EnumVolumes();
    if (mountPaths.empty()) {
        report.Fail(L"volumes", L"Windows names none");
        return report.Finish();
    }
    if (!IsJson()) {
        WriteColumns({L"mount path", L"unique name", L"display name", L"total GB", L"free GB"});
    }
    for (const std::wstring& mountPath : mountPaths) {
        const VolumeRow row = Describe(mountPath, mostFree);
        report.CountAchieved();
        report.AddItem("volumes", {{"mountPath", row.mountPath},
                                   {"uniqueName", row.uniqueName},
                                   {"displayName", row.displayName},
                                   {"totalGigabytes", row.total},
                                   {"freeGigabytes", row.free},
                                   {"mostFreeSpace", row.hasMostFree}});
        if (!IsJson()) {
            WriteColumns({row.mountPath, row.uniqueName, row.displayName, Gigabytes(row.total), Gigabytes(row.free),
                          row.hasMostFree ? L"most free space" : L""});
        }
    }
    return report.Finish();
}

} // namespace

void AddVolumesCommand(CommandSet& commands)
{
    commands.Add("volumes", "Lists the mount paths of all volumes", &RunVolumes);
}

} // namespace agent
