// The clean-up of directories with long paths, with an invalid-parameter handler that returns. The older runtime has
// such handlers for each module, so only a program that holds the library's objects can set one.

#include "tests/support/SilentHost.h"
#include "tests/support/TestDirectory.h"
#include "tests/support/WorkingDirectory.h"

#include "frame/FileManager.h"

#include <gtest/gtest.h>

#include <cstdlib>

namespace {

int g_reports = 0;

// Only debug runtimes tell more than that there is an invalid parameter.
void CountReport(const wchar_t* expression, const wchar_t* function, const wchar_t* file, unsigned line,
                 std::uintptr_t reserved)
{
    EXPECT_TRUE(expression == nullptr && function == nullptr && file == nullptr && line == 0 && reserved == 0);
    ++g_reports;
}

} // namespace

class LongPathCleanupTest : public ::testing::Test {
protected:
    LongPathCleanupTest() : m_before(::_set_invalid_parameter_handler(&CountReport))
    {
        g_reports = 0;
        manager.SetHostFunctions(&SilentLog, &SilentKeepAlive, &SilentLog);
    }
    ~LongPathCleanupTest() override { ::_set_invalid_parameter_handler(m_before); }

    TestDirectory tree;
    quorvantavss::CVssFileManager manager;

private:
    _invalid_parameter_handler m_before;
};

TEST_F(LongPathCleanupTest, RemovesTheDirectoriesBelowAndReportsOnceAfterTheFirst)
{
    tree.Files({L"f", LR"(a\f)", LR"(a\b\f)", LR"(c\f)"});
    EXPECT_TRUE(manager.CleanUpLongPath(tree.Root()));
    EXPECT_EQ(1, g_reports);
    EXPECT_FALSE(PathExists(tree.Path(L"a")));
    EXPECT_FALSE(PathExists(tree.Path(L"c")));
    EXPECT_TRUE(PathExists(tree.Path(L"f")));
}

TEST_F(LongPathCleanupTest, WithoutDirectoriesBelowReportsAtOnce)
{
    tree.File(L"f");
    EXPECT_TRUE(manager.CleanUpLongPath(tree.Root()));
    EXPECT_EQ(1, g_reports);
    EXPECT_TRUE(PathExists(tree.Path(L"f")));
}

TEST_F(LongPathCleanupTest, StopsAtAFailureAndReports)
{
    tree.Files({LR"(a\f)", LR"(b\f)", LR"(c\f)"});
    ::SetFileAttributesW(tree.Path(LR"(b\f)").c_str(), FILE_ATTRIBUTE_READONLY);
    EXPECT_FALSE(manager.CleanUpLongPath(tree.Root()));
    EXPECT_EQ(1, g_reports);
    EXPECT_EQ(L"errno: 13 " + tree.Path(LR"(b\f)"), manager.GetErrorText());
    EXPECT_TRUE(PathExists(tree.Path(LR"(a\f)"))) << "the last directory comes first";
    EXPECT_FALSE(PathExists(tree.Path(L"c")));
}

TEST_F(LongPathCleanupTest, ADirectoryThatCannotBeRemovedIsNoFailure)
{
    tree.Files({LR"(a\f)", LR"(b\f)"});
    const LockedFile locked(tree.Path(L"b"), GENERIC_READ, FILE_SHARE_READ);
    EXPECT_TRUE(manager.CleanUpLongPath(tree.Root()));
    EXPECT_TRUE(PathExists(tree.Path(L"b")));
    EXPECT_FALSE(PathExists(tree.Path(LR"(b\f)")));
    EXPECT_FALSE(PathExists(tree.Path(L"a"))) << "the others are removed all the same";
}

TEST_F(LongPathCleanupTest, OfAMissingPathIsFalseWithoutAReport)
{
    EXPECT_FALSE(manager.CleanUpLongPath(tree.Path(L"missing")));
    EXPECT_EQ(0, g_reports);
}

TEST_F(LongPathCleanupTest, OfAnEmptyPathLeavesTheCurrentDirectory)
{
    tree.Files({L"f", LR"(a\f)"});
    const WorkingDirectory in(tree.Root());
    EXPECT_FALSE(manager.CleanUpLongPath(L""));
    EXPECT_FALSE(manager.RemoveOneDirectory(L""));
    EXPECT_EQ(0, g_reports);
    EXPECT_TRUE(PathExists(tree.Path(L"f")));
    EXPECT_TRUE(PathExists(tree.Path(LR"(a\f)")));
}

TEST_F(LongPathCleanupTest, DirectoryThatIsMissingOrInvalidIsNotRemoved)
{
    EXPECT_FALSE(manager.RemoveOneDirectory(tree.Path(L"missing")));
    EXPECT_EQ(L"errno: 2 " + tree.Path(LR"(missing\)"), manager.GetErrorText());
    ::SetLastError(ERROR_SUCCESS); // nothing to report
    EXPECT_FALSE(manager.RemoveOneDirectory(tree.Path(L"a?")));
    EXPECT_EQ(L"", manager.GetErrorText());
}

TEST_F(LongPathCleanupTest, RecordsWhichDirectoryCannotBeRemoved)
{
    const std::wstring directory = tree.Directory(L"a") + L"\\";
    {
        const LockedFile locked(directory, GENERIC_READ, FILE_SHARE_READ);
        EXPECT_TRUE(manager.RemoveOneDirectory(directory));
        EXPECT_EQ(L"errno: 13 " + directory, manager.GetErrorText());
    }
    EXPECT_TRUE(manager.RemoveOneDirectory(directory));
    EXPECT_EQ(L"", manager.GetErrorText());
    EXPECT_FALSE(PathExists(directory));
}
