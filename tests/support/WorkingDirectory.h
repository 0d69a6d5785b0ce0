// The process's current directory for one scope.

#pragma once

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

#include <string>

// At the end of the scope the process must still be in the directory: the library restores what it changes.
class WorkingDirectory {
public:
    explicit WorkingDirectory(const std::wstring& directory) : m_before(CurrentDirectory())
    {
        EXPECT_TRUE(::SetCurrentDirectoryW(directory.c_str())) << Utf8(directory) << " error " << ::GetLastError();
        m_entered = CurrentDirectory();
        ::SetLastError(0);
    }
    ~WorkingDirectory()
    {
        const DWORD lastError = ::GetLastError();
        EXPECT_EQ(m_entered, CurrentDirectory()) << "the current directory was not restored";
        ::SetCurrentDirectoryW(m_before.c_str());
        ::SetLastError(lastError);
    }
    WorkingDirectory(const WorkingDirectory&) = delete;
    WorkingDirectory& operator=(const WorkingDirectory&) = delete;

private:
    std::wstring m_before;
    std::wstring m_entered;
};
