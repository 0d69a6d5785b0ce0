// Interleaved measurement of two or three ways to do the same work.

#pragma once

#include <functional>
#include <string>
#include <vector>

namespace bench {

// One line of the table. `library` calls the library; `bare` makes the same platform calls, or does the same work, in a
// plain loop; `alternative`, which may be empty, is what a user would take instead of the library.
struct Row {
    std::string group;
    std::string name;
    std::function<void()> library;
    std::function<void()> bare;
    std::string alternativeName;
    std::function<void()> alternative;
    std::function<void()> prepare; // before each measured call, not measured itself; may be empty
    int rounds = 0;                // 0: as many as fit the time of a row
    int items = 0;                 // files or mappings of one call, for the growth between sizes; 0 without
};

struct Result {
    std::string group;
    std::string name;
    int rounds = 0;
    double microseconds = 0;     // of one library call, the median
    double ratio = 0;            // library to bare, the median of the pairs' ratios
    double ratioLow = 0;         // 10th percentile
    double ratioHigh = 0;        // 90th percentile
    double alternativeRatio = 0; // library to alternative; 0 without one
    std::string alternativeName;
    int items = 0;
};

// Measures A, B, A, B, … so that a change of the machine's load meets both sides.
Result Measure(const Row& row);

} // namespace bench
