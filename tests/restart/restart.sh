#!/bin/sh
# Runs the tests before a restart, ends all processes of the prefix, starts it again, and runs the tests after it:
# restart.sh WINE_SCRIPT PROGRAM. No other test may run meanwhile.
set -eu

wine=$1
program=$2
rm -rf "${KESTROVANE_PREFIX:-$(dirname "$wine")/../build/wine}/drive_c/kestrovane-restart"
"$wine" "$program" --gtest_filter='BeforeRestart.*'
"$wine" stop
"$wine" start
"$wine" "$program" --gtest_filter='AfterRestart.*'
