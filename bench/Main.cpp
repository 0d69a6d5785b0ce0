// The table of times: each operation of the library beside a bare loop of the same platform calls.

#include "bench/Rows.h"

#include <Kestrovane.h>

#include <cstdio>
#include <cstring>

namespace {

int __cdecl SilentLog(int /*level*/, const char* /*format*/, ...)
{
    return 0;
}

int __cdecl SilentKeepAlive(int /*seconds*/, ...)
{
    return 0;
}

void Print(const bench::Result& result)
{
    std::printf("%-9s %-46s %12.2f us  x %5.2f (%5.2f..%5.2f)  %3d rounds", result.group.c_str(), result.name.c_str(),
                result.microseconds, result.ratio, result.ratioLow, result.ratioHigh, result.rounds);
    if (result.alternativeRatio > 0) {
        std::printf("  x %6.2f of %s", result.alternativeRatio, result.alternativeName.c_str());
    }
    std::printf("\n");
    std::fflush(stdout);
}

} // namespace

int main(int count, char** arguments)
{
    SetVssFileManagerLogger(&SilentLog, &SilentKeepAlive, &SilentLog);
    std::vector<bench::Row> rows;
    for (const auto& part : {bench::MatchRows(), bench::PathRows()}) {
        rows.insert(rows.end(), part.begin(), part.end());
    }
    for (const bench::Row& row : rows) {
        if (count < 2 || row.name.find(arguments[1]) != std::string::npos || row.group == arguments[1]) {
            Print(bench::Measure(row));
        }
    }
    return 0;
}
