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

std::wstring RightAligned(const std::wstring& number)
{
    constexpr std::size_t kWidth = 10;
    return std::wstring(kWidth - std::min(kWidth, number.size()), L' ') + number;
}

// Names come last, so that wide characters in them move no column.
void WriteRow(const std::wstring& total, const std::wstring& free, const std::wstring& name)
{
    WriteResult(RightAligned(total) + RightAligned(free) + L"  " + name + L"\n");
}

void WriteVolume(const VolumeRow& row)
{
    WriteRow(Gigabytes(row.total), Gigabytes(row.free),
             row.mountPath + (row.hasMostFree ? L"  (most free space)" : L""));
    WriteRow(L"", L"", row.uniqueName);
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
        WriteRow(L"total GB", L"free GB", L"mount path and unique name");
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
            WriteVolume(row);
        }
    }
    return report.Finish();
}

} // namespace

void AddVolumesCommand(CommandSet& commands)
{
    CommandOptions command = commands.Add("volumes", "Lists the mount paths of all volumes", &RunVolumes);
    command.Example(R"(kestrovane-agent volumes)");
}

} // namespace agent
