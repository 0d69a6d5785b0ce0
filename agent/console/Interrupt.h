// Ctrl-C: work stops between two files, and what was done is still reported.

#pragma once

namespace agent {

void WatchForInterrupt();
bool IsInterrupted();

} // namespace agent
