// The fixture of the tree deletion's tests: the lines that a deletion logs.

#pragma once

#include "tests/support/LibraryTest.h"

class DeleteDirectoryRecursiveTest : public LibraryTest {
protected:
    static HostEvent Detail(const char* format, const std::wstring& text)
    {
        return {HostEvent::Kind::kLog, 0, format, text};
    }
    static HostEvent FileLine(const std::wstring& path)
    {
        return Detail("Deleting file: %S \n", L"Deleting file: " + path + L" \n");
    }
    static HostEvent DirectoryLine(const std::wstring& path)
    {
        return Detail("Deleting directory: %S \n", L"Deleting directory: " + path + L" \n");
    }

    // The path is passed as a wide text for %s, of which a printf shows the first character.
    static StringList Undeleted(const wchar_t* kind, DWORD error)
    {
        StringList lines = {std::wstring(kind) + L" couldn't be deleted: C \n"};
        const auto report =
            FailureLines(error, L"RecursivelyDeleteVirtualDir call failed: " + std::to_wstring(error) + L"\n");
        lines.insert(lines.end(), report.begin(), report.end());
        return lines;
    }
};
