// The results as a table, as JSON and as a bar chart.

#include "bench/Output.h"

#include <nlohmann/json.hpp>

#include <algorithm>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iterator>
#include <sstream>

namespace bench {

namespace {

std::string FormatTime(double microseconds)
{
    constexpr double kMilli = 1000;
    std::ostringstream time;
    time << std::fixed << std::setprecision(2);
    if (microseconds < kMilli) {
        time << microseconds << " us";
    } else {
        time << microseconds / kMilli << " ms";
    }
    return time.str();
}

std::string FamilyOf(const Result& result)
{
    const std::string& name = result.name;
    return result.group + name.substr(0, name.find(',')) + (name.ends_with("*.doc") ? "*.doc" : "");
}

nlohmann::ordered_json ToJson(const Result& result)
{
    nlohmann::ordered_json json = {{"group", result.group},        {"name", result.name},
                                   {"rounds", result.rounds},      {"microseconds", result.microseconds},
                                   {"ratio", result.ratio},        {"ratioLow", result.ratioLow},
                                   {"ratioHigh", result.ratioHigh}};
    if (result.alternativeRatio > 0) {
        json["alternative"] = result.alternativeName;
        json["alternativeRatio"] = result.alternativeRatio;
    }
    return json;
}

// The pixels of the chart.
constexpr int kNameWidth = 420;
constexpr int kUnitWidth = 160; // of a ratio of 1
constexpr int kRowHeight = 22;
constexpr int kChartWidth = 900;
constexpr double kMaxRatio = 2.5;

void WriteBar(std::ofstream& svg, const Result& result, int row)
{
    const int top = row * kRowHeight;
    const int width = static_cast<int>(std::min(result.ratio, kMaxRatio) * kUnitWidth);
    svg << "<text x='" << kNameWidth - 8 << "' y='" << top + 15 << "' text-anchor='end'>" << result.name
        << "</text><rect x='" << kNameWidth << "' y='" << top + 4 << "' width='" << width
        << "' height='14' fill='#4878a8'/><text x='" << kNameWidth + width + 6 << "' y='" << top + 15 << "'>"
        << std::setprecision(2) << std::fixed << result.ratio << "</text>\n";
}

} // namespace

void PrintHeading()
{
    std::printf("%-9s %-58s %12s  %6s  %14s  %6s  %s\n", "group", "operation", "median", "x bare", "10th..90th",
                "rounds", "x alternative");
}

void PrintLine(const Result& result)
{
    std::printf("%-9s %-58s %12s  %6.2f  %6.2f..%6.2f  %6d", result.group.c_str(), result.name.c_str(),
                FormatTime(result.microseconds).c_str(), result.ratio, result.ratioLow, result.ratioHigh,
                result.rounds);
    if (result.alternativeRatio > 0) {
        std::printf("  %.2f of %s", result.alternativeRatio, result.alternativeName.c_str());
    }
    std::printf("\n");
    static_cast<void>(std::fflush(stdout));
}

void PrintGrowth(const std::vector<Result>& results)
{
    std::printf("\ngrowth between sizes, time for one item (1.00: linear)\n");
    for (std::size_t i = 1; i < results.size(); ++i) {
        const Result& smaller = results[i - 1];
        const Result& larger = results[i];
        if (smaller.items > 0 && larger.items > smaller.items && FamilyOf(smaller) == FamilyOf(larger)) {
            const double growth = (larger.microseconds / larger.items) / (smaller.microseconds / smaller.items);
            std::printf("%-9s %7d to %7d items: x %.2f\n", larger.group.c_str(), smaller.items, larger.items, growth);
        }
    }
}

void PrintJson(const std::vector<Result>& results, double seconds)
{
    nlohmann::ordered_json rows = nlohmann::ordered_json::array();
    std::transform(results.begin(), results.end(), std::back_inserter(rows), &ToJson);
    const nlohmann::ordered_json json = {{"seconds", seconds}, {"rows", rows}};
    std::printf("%s\n", json.dump(1).c_str());
}

bool WriteChart(const std::string& path, const std::vector<Result>& results)
{
    std::ofstream svg(path);
    const int height = static_cast<int>(results.size() + 1) * kRowHeight;
    const int one = kNameWidth + kUnitWidth;
    svg << "<svg xmlns='http://www.w3.org/2000/svg' viewBox='0 0 " << kChartWidth << ' ' << height
        << "' font-family='sans-serif' font-size='12'>\n<rect width='100%' height='100%' fill='white'/>\n";
    for (std::size_t i = 0; i < results.size(); ++i) {
        WriteBar(svg, results[i], static_cast<int>(i));
    }
    svg << "<line x1='" << one << "' y1='0' x2='" << one << "' y2='" << height - kRowHeight
        << "' stroke='#a04040'/><text x='" << one << "' y='" << height - 6
        << "' text-anchor='middle'>1 = a bare loop of the same platform calls</text>\n</svg>\n";
    return static_cast<bool>(svg.flush());
}

} // namespace bench
