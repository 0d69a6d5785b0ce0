// What the owner change frees when an exception ends it.

#include "tests/security/ObjectOwnerFixture.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/SilentHost.h"

#include <stdexcept>

namespace {

int __cdecl ThrowingKeepAlive(int seconds, ...)
{
    if (seconds == 10800) {
        throw std::runtime_error("the host gives up");
    }
    return 0;
}

} // namespace

TEST_F(ChangeObjectOwnerSimulation, FreesEverythingWhenAnExceptionPasses)
{
    struct Row {
        const wchar_t* function;
        int call;
    };
    constexpr Row kRows[] = {
        {L"LookupAccountNameW", 1},    {L"LookupAccountNameW", 2},    {L"GetNamedSecurityInfoW", 1},
        {L"SetEntriesInAclW", 1},      {L"SetNamedSecurityInfoW", 1}, {L"GetNamedSecurityInfoW", 2},
        {L"PathIsDirectoryW", 1},      {L"FindFirstFileW", 1},        {L"FindNextFileW", 1},
        {L"SetNamedSecurityInfoW", 3}, {L"FindFirstFileW", 2},        {L"FindNextFileW", 3},
    };
    tree.File(LR"(dir\f)");
    for (const auto& [function, call] : kRows) {
        HostRecorder recorder;
        SecurityCalls throwing(recorder);
        throwing.Throw(function, call);
        const int handles = OpenHandleCount();
        EXPECT_THROW(ChangeObjectOwner(tree.Root(), kAccount), std::runtime_error) << Utf8(function) << ' ' << call;
        EXPECT_TRUE(throwing.HoldsNothing()) << Utf8(function) << ' ' << call;
        EXPECT_EQ(handles, OpenHandleCount()) << Utf8(function) << ' ' << call;
    }
}

TEST_F(ChangeObjectOwnerTest, FreesEverythingWhenTheHostThrows)
{
    SetVssFileManagerLogger(&SilentLog, &ThrowingKeepAlive, &SilentLog);
    EXPECT_THROW(ChangeObjectOwner(tree.File(L"f.txt"), kAccount), std::runtime_error);
}

// Without the recording, which needs memory itself. A simulation.
class ChangeObjectOwnerMemory : public LibraryTest {};

TEST_F(ChangeObjectOwnerMemory, FreesEverythingWhenMemoryRunsShort)
{
    static int lists = 0;
    lists = 0;
    const ImportPatch made(
        "SetEntriesInAclW", +[](ULONG count, PEXPLICIT_ACCESSW entries, PACL old, PACL* list) -> DWORD {
            ++lists;
            return ::SetEntriesInAclW(count, entries, old, list);
        });
    const ImportPatch freed(
        "LocalFree", +[](HLOCAL memory) -> HLOCAL {
            --lists;
            return ::LocalFree(memory);
        });
    RegisterSilentHost();
    tree.File(LR"(dir\f)");
    const std::wstring root = tree.Root();
    int failures = 0;
    bool happened = true;
    for (int allocation = 1; happened; ++allocation) {
        const int handles = OpenHandleCount();
        bool threw = false;
        {
            const MemoryFault fault(allocation);
            try {
                ChangeObjectOwner(root, kAccount);
            } catch (const std::bad_alloc&) {
                threw = true;
            }
            happened = MemoryFault::HasStruck();
            EXPECT_EQ(0, MemoryFault::LivingBlocks()) << allocation;
        }
        EXPECT_EQ(happened, threw) << allocation;
        EXPECT_EQ(handles, OpenHandleCount()) << allocation;
        EXPECT_EQ(0, lists) << allocation;
        failures += threw ? 1 : 0;
    }
    EXPECT_GT(failures, 10);
}
