// A fresh directory for one test.

#pragma once

#include "tests/support/FileTools.h"

#include <string>

// Made and marked at the start, deleted with everything in it at the end. Links in it are removed, never followed, and
// nothing without the mark is deleted.
class TestDirectory {
public:
    TestDirectory();                                   // on C:
    explicit TestDirectory(const std::wstring& place); // for example D:\, or a share with its trailing backslash
    ~TestDirectory();
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;

    const std::wstring& Root() const { return m_root; }    // no trailing backslash
    std::wstring Path(const std::wstring& relative) const; // below the root
    std::wstring File(const std::wstring& relative,
                      const std::string& bytes = "x") const;    // makes it and its parents
    std::wstring Directory(const std::wstring& relative) const; // makes it and its parents
    void Files(const StringList& relatives) const;

private:
    std::wstring m_top;  // carries the mark
    std::wstring m_root; // the directory that tests use; no file of the test bench is in it
};
