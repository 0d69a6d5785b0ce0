// The process's current directory, which several functions move: it is put back whatever becomes of the call.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryMeters.h"
#include "tests/support/SilentHost.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>
#include <io.h>

#include <cerrno>
#include <functional>
#include <new>
#include <stdexcept>

namespace {

struct Operation {
    const char* name;
    std::function<void()> call;
};

// Thrown by a host in the middle of a call.
struct HostGivesUp {};
bool g_throws = false;

int __cdecl ThrowingLog(int /*level*/, const char* /*format*/, ...)
{
    if (g_throws) {
        throw HostGivesUp();
    }
    return 0;
}

// Failing imports. A change to g_home still works, so that what is seen is whether the library goes back there.

std::wstring g_home;

int __cdecl LeaveNoDirectory(const wchar_t* directory)
{
    if (directory == g_home) {
        return ::_wchdir(directory);
    }
    errno = EACCES;
    return -1;
}

int __cdecl MakeNoDirectory(const wchar_t* /*directory*/)
{
    errno = EACCES;
    return -1;
}

int __cdecl OpenNoFile(const wchar_t* /*path*/, int /*flags*/, ...)
{
    errno = EACCES;
    return -1;
}

std::intptr_t __cdecl FindNothing(const wchar_t* /*pattern*/, void* /*entry*/)
{
    errno = ENOENT;
    return -1;
}

int __cdecl FindNoMore(std::intptr_t /*search*/, void* /*entry*/)
{
    errno = ENOENT;
    return -1;
}

HANDLE WINAPI CreateNoFile(const wchar_t* /*path*/, DWORD /*access*/, DWORD /*share*/,
                           SECURITY_ATTRIBUTES* /*security*/, DWORD /*disposition*/, DWORD /*flags*/,
                           HANDLE /*pattern*/)
{
    ::SetLastError(ERROR_ACCESS_DENIED);
    return INVALID_HANDLE_VALUE;
}

BOOL WINAPI WriteNothing(HANDLE /*file*/, const void* /*bytes*/, DWORD /*size*/, DWORD* written,
                         OVERLAPPED* /*overlapped*/)
{
    *written = 0;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

} // namespace

class CurrentDirectoryTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        tree.Files({L"a.txt", LR"(sub\b.txt)", LR"(sub\deeper\c.txt)"});
        home = tree.Directory(LR"(home\one\two)");
        g_home = home;
        RegisterSilentHost();
    }

    // Runs each operation from `home`, and finds the process there afterwards.
    void RunAll(const char* circumstances)
    {
        for (const Operation& operation : operations) {
            const WorkingDirectory in(home);
            CapturedOutput output; // of the creation's failures
            operation.call();
            EXPECT_EQ(home, CurrentDirectory()) << operation.name << ", " << circumstances;
        }
    }

    std::wstring home;

    // The functions that move the current directory, each where it succeeds and where it fails.
    const std::vector<Operation> operations = {
        {"GetFileName", [] { GetFileName(LR"(..\..\f.txt)"); }},
        {"GetPathFileName", [] { GetPathFileName(LR"(..\f.txt)"); }},
        {"GetPathFileNameNoVolume", [] { GetPathFileNameNoVolume(LR"(..\f.txt)"); }},
        {"GetVolume", [] { GetVolume(LR"(..\f.txt)"); }},
        {"GetPathFileTranslate", [] { GetPathFileTranslate(LR"(..\..\..\..\..\..\f.txt)"); }},
        {"GetFileName, refused", [] { GetFileName(LR"(..\f*.txt)"); }},
        {"isDirectoryExists", [this] { isDirectoryExists(tree.Root()); }},
        {"isDirectoryExists, relative", [] { isDirectoryExists(LR"(..\..)"); }},
        {"isDirectoryExists, missing", [this] { isDirectoryExists(tree.Path(L"missing")); }},
        {"isDirectoryExists, a file", [this] { isDirectoryExists(tree.Path(L"a.txt")); }},
        {"isDirectoryExists, refused", [] { isDirectoryExists(LR"(..\a*)"); }},
        {"isFileExists", [] { isFileExists(LR"(..\..\a.txt)"); }},
        {"IsCanReplaceFile",
         [] {
             std::wstring path = LR"(..\a.txt)";
             IsCanReplaceFile(path);
         }},
        {"RecursivelyCreateDirectory", [this] { RecursivelyCreateDirectory(tree.Path(LR"(new\a\b)")); }},
        {"RecursivelyCreateDirectory, relative", [] { RecursivelyCreateDirectory(LR"(new\a)"); }},
        {"RecursivelyCreateDirectory, climbing", [] { RecursivelyCreateDirectory(LR"(..\new)"); }},
        {"RecursivelyCreateDirectory, below a file", [this] { RecursivelyCreateDirectory(tree.Path(LR"(a.txt\b)")); }},
        {"RecursivelyCreateDirectory, a share", [] { RecursivelyCreateDirectory(LR"(\\alpha\missing\a)"); }},
        {"RecursivelyCreateDirectory, refused", [] { RecursivelyCreateDirectory(L"a?b"); }},
        {"ListFilesFilter", [this] { ListFilesFilter(tree.Root(), L"*", true); }},
        {"ListFilesFilter, climbing", [] { ListFilesFilter(LR"(..\..)", L"*", true); }},
        {"ListFilesFilter, missing", [this] { ListFilesFilter(tree.Path(L"missing"), L"*", true); }},
        {"ListFilesFilterRecursive", [this] { ListFilesFilterRecursive(tree.Root(), L"*", false); }},
        {"ListFilesFilterRecursive, missing", [this] { ListFilesFilterRecursive(tree.Path(L"no"), L"*", false); }},
        {"ListDirecoriesRecursive", [this] { ListDirecoriesRecursive(tree.Root()); }},
        {"ListDirecoriesRecursive, climbing", [] { ListDirecoriesRecursive(LR"(..\..)"); }},
        {"DoCopyComponentFileToDir", [this] { DoCopyComponentFileToDir(tree.Path(L"a.txt"), tree.Path(L"to")); }},
        {"DoCopyComponentFileToDir, climbing", [this] { DoCopyComponentFileToDir(tree.Path(L"a.txt"), LR"(..\to)"); }},
        {"DoCopyComponentFileToDir, missing", [this] { DoCopyComponentFileToDir(L"missing", tree.Path(L"to")); }},
        {"DoCopyComponentFile", [this] { DoCopyComponentFile(tree.Path(L"a.txt"), tree.Path(LR"(as\b.txt)")); }},
        {"DoCopyComponentFile, climbing", [this] { DoCopyComponentFile(tree.Path(L"a.txt"), LR"(..\as\b.txt)"); }},
        {"DoCopyComponentFile, below a file",
         [this] { DoCopyComponentFile(tree.Path(L"a.txt"), tree.Path(LR"(a.txt\b)")); }},
    };
};

TEST_F(CurrentDirectoryTest, IsPutBackAfterSuccessAndAfterAnHonestFailure)
{
    RunAll("nothing simulated");
}

TEST_F(CurrentDirectoryTest, IsPutBackOnAShare)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    home = share.Directory(LR"(one\two)");
    RunAll("on a share");
}

TEST_F(CurrentDirectoryTest, IsPutBackWithALastErrorToReport)
{
    for (const Operation& operation : operations) {
        const WorkingDirectory in(home);
        CapturedOutput output;
        ::SetLastError(ERROR_ACCESS_DENIED);
        operation.call();
        EXPECT_EQ(home, CurrentDirectory()) << operation.name;
    }
}

// Simulations: one import after the other fails, whatever it is asked.
TEST_F(CurrentDirectoryTest, IsPutBackWhenAnImportFails)
{
    {
        const ImportPatch patch("_wchdir", &LeaveNoDirectory);
        RunAll("no directory can be entered");
    }
    {
        const ImportPatch patch("_wmkdir", &MakeNoDirectory);
        RunAll("no directory can be made");
    }
    {
        const ImportPatch patch("_wopen", &OpenNoFile);
        RunAll("no file can be opened for reading");
    }
    {
        const ImportPatch patch("_wfindfirst64", &FindNothing);
        RunAll("no search can be opened");
    }
    {
        const ImportPatch patch("_wfindnext64", &FindNoMore);
        RunAll("a search ends after its first entry");
    }
    {
        const ImportPatch patch("CreateFileW", &CreateNoFile);
        RunAll("no file can be created or opened");
    }
    {
        const ImportPatch patch("WriteFile", &WriteNothing);
        RunAll("the disk is full");
    }
}

// Simulation: each allocation of each operation finds no memory in turn.
TEST_F(CurrentDirectoryTest, IsPutBackWhenMemoryIsShort)
{
    constexpr int kEnough = 500; // more allocations than any operation needs
    const HeapMeter meter;
    for (const Operation& operation : operations) {
        bool failed = true;
        int failing = 1;
        for (; failed && failing < kEnough; ++failing) {
            const WorkingDirectory in(home);
            CapturedOutput output;
            HeapMeter::Run(failing, HeapMeter::Shortage::kOneAllocation, [&operation] {
                try {
                    operation.call();
                } catch (const std::bad_alloc&) { // the host's business
                }
            });
            failed = HeapMeter::HasFailed();
            EXPECT_EQ(home, CurrentDirectory()) << operation.name << ", allocation " << failing;
        }
        EXPECT_LT(1, failing) << operation.name;
        EXPECT_GT(kEnough, failing) << operation.name;
    }
}

// A host whose logger throws is on its own, but not in another directory.
TEST_F(CurrentDirectoryTest, IsPutBackWhenTheHostThrows)
{
    g_throws = false;
    SetVssFileManagerLogger(&ThrowingLog, &SilentKeepAlive, &SilentLog);
    int thrown = 0;
    for (const Operation& operation : operations) {
        const WorkingDirectory in(home);
        CapturedOutput output;
        ::SetLastError(ERROR_ACCESS_DENIED);
        g_throws = true;
        try {
            operation.call();
        } catch (const HostGivesUp&) {
            ++thrown;
        }
        g_throws = false;
        EXPECT_EQ(home, CurrentDirectory()) << operation.name;
    }
    EXPECT_LT(0, thrown);
}
