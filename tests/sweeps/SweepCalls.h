// The calls of the sweeps.

#pragma once

#include "tests/contract/functions/ExportedFunction.h"

// The sample calls of a function, and those that reach imports which they do not reach.
std::vector<SampleCall> SweepCalls(const ExportedFunction& function);
