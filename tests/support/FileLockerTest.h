// The fixture of tests that have files held by a second process.

#pragma once

#include "tests/support/LibraryTest.h"

// The first process that a program starts may cost it a handle for good, as it does under Wine. It is started before
// the handles are counted.
class FileLockerTest : public LibraryTest {
protected:
    static void SetUpTestSuite()
    {
        const TestDirectory tree;
        const FileLockerProcess first(tree.File(L"file"), GENERIC_READ, 0);
    }
};
