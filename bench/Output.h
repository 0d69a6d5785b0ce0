// The results as a table, as JSON and as a bar chart.

#pragma once

#include "bench/Measure.h"

#include <string>
#include <vector>

namespace bench {

void PrintHeading();
void PrintLine(const Result& result);
void PrintGrowth(const std::vector<Result>& results);

void PrintJson(const std::vector<Result>& results, double seconds);

// Writes a bar chart of the ratios. Returns false if the file cannot be written.
bool WriteChart(const std::string& path, const std::vector<Result>& results);

} // namespace bench
