// A fresh directory for one test.

#pragma once

#include "tests/support/FileTools.h"

#include <string>

// Created and marked at the start, deleted with everything in it at the end. Links in it are removed, never followed,
// and nothing without the mark is deleted.
class TestDirectory {
public:
    TestDirectory();                                   // on C:
    explicit TestDirectory(const std::wstring& place); // for example D:\, or a share with its trailing backslash
    ~TestDirectory();
    TestDirectory(const TestDirectory&) = delete;
    TestDirectory& operator=(const TestDirectory&) = delete;

    [[nodiscard]] const std::wstring& Root() const { return m_root; }    // no trailing backslash
    [[nodiscard]] std::wstring Path(const std::wstring& relative) const; // below the root
    // These two create what they return, with its parents; often the path is not needed.
    // NOLINTBEGIN(modernize-use-nodiscard)
    std::wstring File(const std::wstring& relative, const std::string& bytes = "x") const;
    std::wstring Directory(const std::wstring& relative) const;
    // NOLINTEND(modernize-use-nodiscard)
    void Files(const StringList& relatives) const;

private:
    std::wstring m_top;  // carries the mark
    std::wstring m_root; // the directory that tests use; no file of the test bench is in it
};
