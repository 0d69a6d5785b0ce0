// The table of times: each operation of the library beside a bare loop of the same platform calls.

#include "bench/Output.h"
#include "bench/Rows.h"

#include <Kestrovane.h>

#include <CLI/CLI.hpp>

#include <algorithm>
#include <chrono>

namespace {

int __cdecl SilentLog(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

int __cdecl SilentKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

std::vector<bench::Row> AllRows()
{
    std::vector<bench::Row> rows;
    for (const auto& part : {bench::MatchRows(), bench::PathRows(), bench::ListingRows(), bench::FileRows(),
                             bench::ServiceRows(), bench::AgentRows()}) {
        rows.insert(rows.end(), part.begin(), part.end());
    }
    return rows;
}

struct Options {
    bool json = false;
    std::string chart;
    std::vector<std::string> groups;

    [[nodiscard]] bool Includes(const bench::Row& row) const
    {
        return groups.empty() || std::find(groups.begin(), groups.end(), row.group) != groups.end();
    }
};

int Run(const Options& options)
{
    SetVssFileManagerLogger(&SilentLog, &SilentKeepAlive, &SilentLog);
    const auto start = std::chrono::steady_clock::now();
    std::vector<bench::Result> results;
    if (!options.json) {
        bench::PrintHeading();
    }
    for (const bench::Row& row : AllRows()) {
        if (!options.Includes(row)) {
            continue;
        }
        results.push_back(bench::Measure(row));
        if (!options.json) {
            bench::PrintLine(results.back());
        }
    }
    const std::chrono::duration<double> seconds = std::chrono::steady_clock::now() - start;
    if (options.json) {
        bench::PrintJson(results, seconds.count());
    } else {
        bench::PrintGrowth(results);
        std::printf("\n%.0f seconds\n", seconds.count());
    }
    return options.chart.empty() || bench::WriteChart(options.chart, results) ? 0 : 1;
}

} // namespace

int main(int count, char** arguments)
{
    Options options;
    CLI::App app("Measures the library beside bare loops of the same platform calls", "kestrovane-bench");
    app.add_flag("--json", options.json, "One JSON object on standard output");
    app.add_option("--svg", options.chart, "Writes a bar chart of the ratios")->type_name("FILE");
    app.add_option("GROUPS", options.groups, "Only these groups of rows");
    CLI11_PARSE(app, count, arguments);
    return Run(options);
}
