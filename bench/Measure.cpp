// Interleaved measurement of two or three ways to do the same work.

#include "bench/Measure.h"

#include <algorithm>
#include <chrono>
#include <cmath>

namespace bench {

namespace {

constexpr double kSampleMicroseconds = 2000; // short calls are repeated until a sample is this long
constexpr double kRowMicroseconds = 2.5e6;   // for all rounds of a row together
constexpr int kMinRounds = 5;
constexpr int kMaxRounds = 61;
constexpr int kMaxRepeats = 1 << 22;

double TimeOf(const std::function<void()>& work, int repeats)
{
    const auto start = std::chrono::steady_clock::now();
    for (int i = 0; i < repeats; ++i) {
        work();
    }
    const std::chrono::duration<double, std::micro> elapsed = std::chrono::steady_clock::now() - start;
    return elapsed.count() / repeats;
}

void Prepare(const Row& row)
{
    if (row.prepare) {
        row.prepare();
    }
}

double Sample(const Row& row, const std::function<void()>& work, int repeats)
{
    Prepare(row);
    return TimeOf(work, repeats);
}

// Work with a preparation is called once a sample.
int RepeatsOf(const Row& row)
{
    if (row.prepare) {
        return 1;
    }
    int repeats = 1;
    while (repeats < kMaxRepeats && TimeOf(row.library, repeats) * repeats < kSampleMicroseconds) {
        repeats *= 2;
    }
    return repeats;
}

double Percentile(std::vector<double> values, double share)
{
    std::sort(values.begin(), values.end());
    const auto last = static_cast<double>(values.size() - 1);
    return values[static_cast<std::size_t>(std::lround(last * share))];
}

} // namespace

Result Measure(const Row& row)
{
    constexpr double kMedian = 0.5;
    const int repeats = RepeatsOf(row);
    const double first = Sample(row, row.library, repeats) + Sample(row, row.bare, repeats);
    const int rounds = std::clamp(static_cast<int>(kRowMicroseconds / (first * repeats)), kMinRounds, kMaxRounds);
    std::vector<double> times;
    std::vector<double> ratios;
    std::vector<double> alternativeRatios;
    for (int round = 0; round < rounds; ++round) {
        const double library = Sample(row, row.library, repeats);
        const double bare = Sample(row, row.bare, repeats);
        times.push_back(library);
        ratios.push_back(library / bare);
        if (row.alternative) {
            alternativeRatios.push_back(library / Sample(row, row.alternative, repeats));
        }
    }
    Result result{row.group,
                  row.name,
                  rounds,
                  Percentile(times, kMedian),
                  Percentile(ratios, kMedian),
                  Percentile(ratios, 0.1),
                  Percentile(ratios, 0.9),
                  0,
                  row.alternativeName};
    if (row.alternative) {
        result.alternativeRatio = Percentile(alternativeRatios, kMedian);
    }
    return result;
}

} // namespace bench
