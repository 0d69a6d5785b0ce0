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
constexpr double kMedian = 0.5;
constexpr double kLow = 0.1;
constexpr double kHigh = 0.9;

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

// Work with a preparation or a number of rounds is called once a sample.
int RepeatsOf(const Row& row)
{
    if (row.prepare || row.rounds > 0) {
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

int RoundsOf(const Row& row, int repeats)
{
    if (row.rounds > 0) {
        return row.rounds;
    }
    const double first = TimeOf(row.library, repeats) + TimeOf(row.bare, repeats);
    return std::clamp(static_cast<int>(kRowMicroseconds / (first * repeats)), kMinRounds, kMaxRounds);
}

} // namespace

Result Measure(const Row& row)
{
    const int repeats = RepeatsOf(row);
    const int rounds = RoundsOf(row, repeats);
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
    return {row.group,
            row.name,
            rounds,
            Percentile(times, kMedian),
            Percentile(ratios, kMedian),
            Percentile(ratios, kLow),
            Percentile(ratios, kHigh),
            row.alternative ? Percentile(alternativeRatios, kMedian) : 0,
            row.alternativeName,
            row.items};
}

} // namespace bench
