// What a restore would do: each file, what it would overwrite, what is missing, and what would not fit.

#pragma once

#include "agent/console/Report.h"
#include "agent/restore/RestorePlan.h"

namespace agent {

// Nothing is changed. Copies are looked at, not read.
void ShowPlan(const RestorePlan& plan, Report& report);

} // namespace agent
