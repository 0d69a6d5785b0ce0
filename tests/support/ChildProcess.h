// Second processes, run from programs of the build.

#pragma once

#include "tests/support/UniqueResource.h"

#include <string>
#include <vector>

// The path of a program that is beside this one.
std::wstring ProgramBesideThis(const std::wstring& name);

// Starts a program in `directory`, or in that of this process. Returns the process; null after a failure, which fails
// the test.
UniqueHandle StartProgram(const std::wstring& program, const std::vector<std::wstring>& arguments,
                          const std::wstring& directory = {});

// Waits for the end of a process and returns its whole exit code.
DWORD ExitCodeOf(HANDLE process);

// Runs a program that is beside this one to its end and returns its whole exit code.
DWORD RunHelper(const std::wstring& name, const std::vector<std::wstring>& arguments);
