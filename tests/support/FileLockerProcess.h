// A second process that locks a file: it keeps the file open with a given share mode.

#pragma once

#include "tests/support/UniqueResource.h"

#include <string>

// Keeps the file open from the constructor's return to the destructor, with the given access and share mode.
class FileLockerProcess {
public:
    FileLockerProcess(const std::wstring& path, DWORD access, DWORD share);
    ~FileLockerProcess();
    FileLockerProcess(const FileLockerProcess&) = delete;
    FileLockerProcess& operator=(const FileLockerProcess&) = delete;

private:
    UniqueHandle m_process;
    UniqueHandle m_release; // an event
};
