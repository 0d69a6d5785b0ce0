// The process's current directory, which several functions change: every exported function restores it.

#include "tests/contract/EveryFunctionFixture.h"

#include <direct.h>
#include <io.h>

#include <cerrno>

namespace {

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

class CurrentDirectoryTest : public EveryFunctionTest {
protected:
    void SetUp() override
    {
        EveryFunctionTest::SetUp();
        g_home = ground.home;
    }

    // Makes each call from `home`. That the process is there afterwards is checked by Make.
    void MakeAll(const char* circumstances, DWORD lastError = ERROR_SUCCESS)
    {
        for (const SampleCall& call : GetParam().calls) {
            SCOPED_TRACE(Title(call) + ", " + circumstances);
            ground.Build();
            Make(call, [&](const std::function<void()>& function) {
                ::SetLastError(lastError);
                function();
            });
        }
    }

    template <typename Function>
    void MakeAllWith(const char* import, Function* replacement, const char* circumstances)
    {
        const ImportPatch patch(import, replacement);
        MakeAll(circumstances);
    }
};

} // namespace

TEST_P(CurrentDirectoryTest, IsRestoredAfterSuccessAndAfterARealFailure)
{
    MakeAll("nothing simulated");
    MakeAll("with a last error to report", ERROR_ACCESS_DENIED);
}

TEST_P(CurrentDirectoryTest, IsRestoredOnAShare)
{
    const TestDirectory share(LR"(\\alpha\data\)");
    const CallGround onShare(share);
    onShare.Build();
    for (const SampleCall& call : GetParam().calls) {
        SCOPED_TRACE(Title(call));
        const WorkingDirectory in(onShare.home);
        call.make(onShare, [](const std::function<void()>& function) { function(); });
    }
}

// Simulations: one import after the other fails, whatever it is called with.
TEST_P(CurrentDirectoryTest, IsRestoredWhenAnImportFails)
{
    MakeAllWith("_wchdir", &LeaveNoDirectory, "no directory can be entered");
    MakeAllWith("_wmkdir", &MakeNoDirectory, "no directory can be created");
    MakeAllWith("_wopen", &OpenNoFile, "no file can be opened for reading");
    MakeAllWith("_wfindfirst64", &FindNothing, "no search can be opened");
    MakeAllWith("_wfindnext64", &FindNoMore, "a search ends after its first entry");
    MakeAllWith("CreateFileW", &CreateNoFile, "no file can be created or opened");
    MakeAllWith("WriteFile", &WriteNothing, "the disk is full");
}

INSTANTIATE_TEST_SUITE_P(Every, CurrentDirectoryTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);
