// How many handles the process has open, to find those that a call left behind.

#pragma once

int OpenHandleCount();
// Those among the lowest values alone, which new handles take first: quick enough for every call of a sweep.
int OpenLowHandleCount();
