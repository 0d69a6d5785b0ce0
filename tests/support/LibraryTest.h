// The fixture of black-box tests: a recording host, a fresh directory, and the promises that hold for every call.

#pragma once

#include "tests/support/CapturedOutput.h"
#include "tests/support/FileLockerProcess.h"
#include "tests/support/FileTools.h"
#include "tests/support/HandleCount.h"
#include "tests/support/HostRecorder.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/TestDirectory.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

// After each test the process must be in the directory it was in before, and have the same number of open handles.
class LibraryTest : public ::testing::Test {
protected:
    void SetUp() override
    {
        m_directoryBefore = CurrentDirectory();
        m_handlesBefore = OpenHandleCount();
        ::SetLastError(0);
    }

    void TearDown() override
    {
        EXPECT_EQ(m_directoryBefore, CurrentDirectory()) << "the current directory was not restored";
        EXPECT_EQ(m_handlesBefore, OpenHandleCount()) << "a handle was left open";
    }

    HostRecorder host;
    TestDirectory tree;

private:
    std::wstring m_directoryBefore;
    int m_handlesBefore = 0;
};
