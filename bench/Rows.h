// The rows of the table, by subject.

#pragma once

#include "bench/Measure.h"

#include <string>
#include <vector>

namespace bench {

// The directory that tools/bench.sh prepares.
inline const std::wstring kRoot = LR"(C:\kestrovane-bench)";

constexpr int kFewRounds = 5; // for rows whose single call takes a second

std::vector<Row> MatchRows();
std::vector<Row> PathRows();
std::vector<Row> ListingRows();
std::vector<Row> FileRows();
std::vector<Row> ServiceRows();
std::vector<Row> AgentRows();

} // namespace bench
