// What the process, the library included, writes to standard output during a scope.

#include "tests/support/CapturedOutput.h"

#include <gtest/gtest.h>

#include <cstdio>

CapturedOutput::CapturedOutput()
{
    std::fflush(stdout);
    ::testing::internal::CaptureStdout();
}

CapturedOutput::~CapturedOutput()
{
    if (m_capturing) {
        Text();
    }
}

std::string CapturedOutput::Text()
{
    m_capturing = false;
    std::fflush(stdout);
    std::string text = ::testing::internal::GetCapturedStdout();
    std::erase(text, '\r');
    return text;
}
