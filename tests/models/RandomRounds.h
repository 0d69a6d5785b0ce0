// The fixture of the tests beside a model: a number of rounds with random input.
//
// KESTROVANE_FUZZ_CALLS and KESTROVANE_FUZZ_SEED set the number of calls of all these tests and the seed.

#pragma once

#include "tests/sweeps/FuzzSettings.h"
#include "tests/sweeps/RandomInput.h"

#include <gtest/gtest.h>

#include <string>

class RandomRounds : public ::testing::Test {
protected:
    // A tenth of all calls.
    static int Rounds() { return FuzzShare(1); }
    // For messages.
    static std::string Title(int round)
    {
        return "round " + std::to_string(round) + ", seed " + std::to_string(FuzzSeed());
    }

    RandomInput input{FuzzSeed()};
};
