// What checks, creation, listings and copies leave in the file manager's error text.

#include "frame/FileManager.h"

#include "tests/support/Dacl.h"
#include "tests/support/FileTools.h"
#include "tests/support/SilentHost.h"
#include "tests/support/TestDirectory.h"

#include <gtest/gtest.h>

#include <functional>

namespace {

constexpr const wchar_t* kReported = L"CVssFileManager call failed";

} // namespace

class FileOperationErrorTextTest : public ::testing::Test {
protected:
    using Operation = std::function<void(quorvantavss::CVssFileManager&)>;

    void SetUp() override { manager.SetHostFunctions(&SilentLog, &SilentKeepAlive, &SilentLog); }

    // The error text after `operation`, which finds an older one and this last error.
    std::wstring TextAfter(const Operation& operation, DWORD lastError = 0)
    {
        manager.SetErrnoError(13, L"an older failure");
        ::SetLastError(lastError);
        operation(manager);
        return manager.GetErrorText();
    }

    TestDirectory tree;
    StringList list;
    quorvantavss::CVssFileManager manager;
};

TEST_F(FileOperationErrorTextTest, SuccessLeavesNone)
{
    const std::wstring file = tree.File(L"file");
    const std::wstring& root = tree.Root();
    const Operation operations[] = {
        [&](auto& m) { EXPECT_TRUE(m.isDirectoryExists(root)); },
        [&](auto& m) { EXPECT_TRUE(m.isDirectoryReadWritable(root, 0)); },
        [&](auto& m) { EXPECT_TRUE(m.RecursivelyCreateDirectory(root)); },
        [&](auto& m) { EXPECT_TRUE(m.isFileExists(file)); },
        [&](auto& m) { EXPECT_TRUE(m.ScanDirectory(L"*.*", root, list, true)); },
        [&](auto& m) { EXPECT_TRUE(m.ScanDirectory(L"*.none", root, list, true)); },
        [&](auto& m) { EXPECT_TRUE(m.WalkDirectories(root, list)); },
        [&](auto& m) { static_cast<void>(m.ListDirectories(root)); },
        [&](auto& m) { EXPECT_TRUE(m.CopyToDirectory(file, tree.Path(L"a"))); },
        [&](auto& m) { EXPECT_TRUE(m.CopyToDirectoryAs(file, tree.Path(L"b"), L"name")); },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        EXPECT_EQ(L"", TextAfter(operations[i], ERROR_ACCESS_DENIED)) << i;
    }
}

TEST_F(FileOperationErrorTextTest, AnswerOfNoIsNoFailure)
{
    const std::wstring missing = tree.Path(L"missing");
    const Operation operations[] = {
        [&](auto& m) { EXPECT_FALSE(m.isDirectoryExists(missing)); },
        [&](auto& m) { EXPECT_FALSE(m.isDirectoryReadWritable(missing, 0)); },
        [&](auto& m) { EXPECT_FALSE(m.isFileExists(missing)); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectory(missing, tree.Path(L"a"))); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectoryAs(missing, tree.Path(L"a"), L"name")); },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        EXPECT_EQ(L"", TextAfter(operations[i])) << i;
    }
}

TEST_F(FileOperationErrorTextTest, RejectedPathIsReportedWhenThereIsAnErrorToReport)
{
    const std::wstring rejected = tree.Path(L"a*b");
    const std::wstring file = tree.File(L"file");
    const Operation operations[] = {
        [&](auto& m) { EXPECT_FALSE(m.isDirectoryExists(rejected)); },
        [&](auto& m) { EXPECT_FALSE(m.RecursivelyCreateDirectory(rejected)); },
        [&](auto& m) { EXPECT_FALSE(m.isFileExists(rejected)); },
        [&](auto& m) { EXPECT_FALSE(m.ScanDirectory(L"*.*", rejected, list, true)); },
        [&](auto& m) { EXPECT_FALSE(m.WalkDirectories(rejected, list)); },
        [&](auto& m) { EXPECT_EQ(StringList(), m.ListDirectories(rejected)); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectory(rejected, tree.Path(L"a"))); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectory(file, rejected)); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectoryAs(rejected, tree.Path(L"a"), L"name")); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectoryAs(file, rejected, L"name")); },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        EXPECT_EQ(L"", TextAfter(operations[i])) << i;
        EXPECT_EQ(kReported, TextAfter(operations[i], ERROR_ACCESS_DENIED)) << i;
    }
}

TEST_F(FileOperationErrorTextTest, EmptyPathIsReportedWhenThereIsAnErrorToReport)
{
    const Operation operations[] = {
        [](auto& m) { EXPECT_FALSE(m.isDirectoryExists(L"")); },
        [](auto& m) { EXPECT_FALSE(m.isDirectoryReadWritable(L"", 0)); },
        [](auto& m) { EXPECT_FALSE(m.RecursivelyCreateDirectory(L"")); },
        [](auto& m) { EXPECT_FALSE(m.isFileExists(L"")); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectory(L"", tree.Root())); },
        [&](auto& m) { EXPECT_FALSE(m.CopyToDirectoryAs(L"", tree.Root(), L"name")); },
    };
    for (std::size_t i = 0; i < std::size(operations); ++i) {
        EXPECT_EQ(L"", TextAfter(operations[i])) << i;
        EXPECT_EQ(kReported, TextAfter(operations[i], ERROR_ACCESS_DENIED)) << i;
    }
}

TEST_F(FileOperationErrorTextTest, MissingDirectoryIsRecordedAsTheCallerGaveIt)
{
    std::wstring given = tree.Path(L"missing");
    std::replace(given.begin(), given.end(), L'\\', L'/');
    EXPECT_EQ(L"errno: 2 " + given,
              TextAfter([&](auto& m) { EXPECT_FALSE(m.ScanDirectory(L"*.*", given, list, true)); }));
    EXPECT_EQ(L"errno: 2 " + given, TextAfter([&](auto& m) { static_cast<void>(m.ListFiles(given, L"*", true)); }));
    EXPECT_EQ(L"errno: 2 " + tree.Path(L"missing\\"),
              TextAfter([&](auto& m) { static_cast<void>(m.ListTree(given, L"*", true)); }))
        << "a tree is listed from its normalised directory";
}

TEST_F(FileOperationErrorTextTest, DirectoryThatCannotBeSearchedIsRecordedAsThePattern)
{
    const std::wstring missing = tree.Path(L"missing");
    const std::wstring text = L"errno: 2 " + missing + LR"(\*.*)";
    EXPECT_EQ(text, TextAfter([&](auto& m) { EXPECT_FALSE(m.WalkDirectories(missing, list)); }));
    EXPECT_EQ(text, TextAfter([&](auto& m) { EXPECT_EQ(StringList(), m.ListDirectories(missing)); }));
}

TEST_F(FileOperationErrorTextTest, FileInPlaceOfADirectoryIsRecorded)
{
    const std::wstring file = tree.File(L"file");
    EXPECT_EQ(L"errno: 22 " + file,
              TextAfter([&](auto& m) { EXPECT_FALSE(m.ScanDirectory(L"*.*", file, list, true)); }));
}

TEST_F(FileOperationErrorTextTest, UnreachableNewDirectoryIsReported)
{
    tree.File(L"file");
    ::testing::internal::CaptureStdout();
    EXPECT_EQ(kReported,
              TextAfter([&](auto& m) { EXPECT_TRUE(m.RecursivelyCreateDirectory(tree.Path(LR"(file\x)"))); }));
    EXPECT_NE("", ::testing::internal::GetCapturedStdout());
}

// The runtime's error number is not that of the copy, which does not use the runtime: the last thing that set it was
// the attempt to make a directory that exists.
TEST_F(FileOperationErrorTextTest, FailedCopyIsRecordedWithTheSource)
{
    const std::wstring file = tree.File(L"file");
    const std::wstring text = L"errno: 17 " + file;
    EXPECT_EQ(text, TextAfter([&](auto& m) { EXPECT_FALSE(m.CopyToDirectory(file, tree.Root())); }));
    EXPECT_EQ(text, TextAfter([&](auto& m) { EXPECT_FALSE(m.CopyToDirectoryAs(file, tree.Root(), L"file")); }));
}

// These are no operations of the file manager; one of them asks it a question.
TEST_F(FileOperationErrorTextTest, FreeFunctionsLeaveTheErrorTextAlone)
{
    std::wstring missing = tree.Path(L"missing");
    std::string narrow(missing.begin(), missing.end());
    g_fileManager.SetErrnoError(13, L"an older failure");
    EXPECT_FALSE(IsFileExistsSnap(narrow.data()));
    EXPECT_EQ(0, getFileSize(missing));
    EXPECT_EQ(L"errno: 13 an older failure", g_fileManager.GetErrorText());
    EXPECT_TRUE(IsCanReplaceFile(missing));
    EXPECT_EQ(L"", g_fileManager.GetErrorText());
}

TEST_F(FileOperationErrorTextTest, AccessMaskIsIgnored)
{
    constexpr std::uint32_t kRead = GENERIC_READ;
    const std::wstring readOnly = tree.Directory(L"read-only");
    SetDacl(readOnly, kEveryoneMayRead);
    for (const std::uint32_t mask : {std::uint32_t{0}, kRead, std::uint32_t{GENERIC_WRITE}}) {
        EXPECT_FALSE(manager.isDirectoryReadWritable(readOnly, mask));
        EXPECT_TRUE(manager.isDirectoryReadWritable(tree.Root(), mask));
    }
    SetDacl(readOnly, kEveryoneMayAll);
}
