// The size and the seed of the suites with random input, from KESTROVANE_FUZZ_CALLS and KESTROVANE_FUZZ_SEED.

#pragma once

#include <cstdint>
#include <cstdlib>

inline std::uint64_t FuzzSetting(const char* name, std::uint64_t usual)
{
    const char* value = std::getenv(name);
    return value == nullptr ? usual : std::strtoull(value, nullptr, 10);
}

inline std::uint64_t FuzzSeed()
{
    constexpr std::uint64_t kUsualSeed = 20240229;
    return FuzzSetting("KESTROVANE_FUZZ_SEED", kUsualSeed);
}

// The tenths of all calls that one test makes.
inline int FuzzShare(int tenths)
{
    constexpr std::uint64_t kUsualCalls = 50000;
    return static_cast<int>(FuzzSetting("KESTROVANE_FUZZ_CALLS", kUsualCalls)) / 10 * tenths;
}
