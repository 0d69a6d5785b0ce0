// How many handles the process has open, to find those that a call left behind.

#pragma once

int OpenHandleCount();
