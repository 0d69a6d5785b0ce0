// The rows of the table, by subject.

#pragma once

#include "bench/Measure.h"

#include <vector>

namespace bench {

std::vector<Row> MatchRows();
std::vector<Row> PathRows();

} // namespace bench
