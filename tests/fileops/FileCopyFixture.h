// What the tests of both copies share.

#pragma once

#include "tests/support/FileLockerTest.h"
#include "tests/support/WorkingDirectory.h"

#include <algorithm>

constexpr DWORD kShareNothing = 0;
constexpr std::size_t kBlock = 8192; // bytes that a copy moves at a time

inline std::wstring WithForwardSlashes(std::wstring path)
{
    std::replace(path.begin(), path.end(), L'\\', L'/');
    return path;
}
