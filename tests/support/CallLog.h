// What replaced functions were called with, in order.

#pragma once

#include "tests/support/FileTools.h"

#include <string>
#include <utility>

// One list for the whole program: replaced functions have no object to write into.
class CallLog {
public:
    static void Add(std::wstring call) { s_calls.push_back(std::move(call)); }
    static StringList Take() { return std::exchange(s_calls, {}); } // and empties it

private:
    inline static StringList s_calls;
};
