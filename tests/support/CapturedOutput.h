// What the process, the library included, writes to standard output during a scope.

#pragma once

#include <string>

class CapturedOutput {
public:
    CapturedOutput();
    ~CapturedOutput();
    CapturedOutput(const CapturedOutput&) = delete;
    CapturedOutput& operator=(const CapturedOutput&) = delete;

    // Ends the capture; line ends come as "\n".
    std::string Text();

private:
    bool m_capturing = true;
};
