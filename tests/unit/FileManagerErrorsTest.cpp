// The file manager's error state, which only the library itself can see.

#include "frame/FileManager.h"

#include <gtest/gtest.h>

TEST(SetErrnoError, WithoutASubjectHasNoTrailingBlank)
{
    quorvantavss::CVssFileManager manager;
    manager.SetErrnoError(2, L"");
    EXPECT_EQ(L"errno: 2", manager.GetErrorText());
}
