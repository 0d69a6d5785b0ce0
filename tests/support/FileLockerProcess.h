// A second process that holds a file open.

#pragma once

#include <windows.h>

#include <string>
#include <vector>

// Holds the file from the constructor's return to the destructor, with the given access and share mode.
class FileLockerProcess {
public:
    FileLockerProcess(const std::wstring& path, DWORD access, DWORD share);
    ~FileLockerProcess();
    FileLockerProcess(const FileLockerProcess&) = delete;
    FileLockerProcess& operator=(const FileLockerProcess&) = delete;

private:
    PROCESS_INFORMATION m_process = {};
    HANDLE m_release = nullptr;
};

// Runs a program of the test bench that lies beside this one, and gives its whole exit code.
DWORD RunHelper(const std::wstring& name, const std::vector<std::wstring>& arguments);
