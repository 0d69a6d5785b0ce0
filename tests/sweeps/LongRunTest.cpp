// The library in one process for a long time, and in several processes on one volume.
//
// KESTROVANE_LONG_CALLS sets the number of calls; run has a verb for it.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/MemoryMeters.h"
#include "tests/sweeps/FuzzSettings.h"
#include "tests/sweeps/RandomInput.h"
#include "tests/sweeps/SweepGround.h"

#include <psapi.h>

#include <cstdio>
#include <cstring>

namespace {

constexpr int kUsualCalls = 400;
constexpr std::uint64_t kUsualSeed = 20240229;

int LongCalls()
{
    return static_cast<int>(FuzzSetting("KESTROVANE_LONG_CALLS", kUsualCalls));
}

struct Operation {
    const char* function;
    SampleCall call;
};

// Without the owner change: it is documented to keep a security descriptor for each object.
std::vector<Operation> AllOperations()
{
    std::vector<Operation> operations;
    for (const ExportedFunction& function : AllFunctions()) {
        for (const SampleCall& call : function.calls) {
            if (std::strcmp(function.name, "ChangeObjectOwner") != 0) {
                operations.push_back({function.name, call});
            }
        }
    }
    return operations;
}

std::size_t CommittedBytes()
{
    PROCESS_MEMORY_COUNTERS counters = {};
    counters.cb = sizeof(counters);
    ::K32GetProcessMemoryInfo(::GetCurrentProcess(), &counters, sizeof(counters));
    return counters.PagefileUsage;
}

int __cdecl DiscardMessage(const char* /*format*/, ...)
{
    return 0;
}

class LongRunTest : public LibraryTest {
protected:
    // What Windows and the runtime create once and keep is created before the handles are counted.
    void SetUp() override
    {
        RegisterSilentHost();
        MakeCalls(LongCalls() / 4);
        LibraryTest::SetUp();
    }

    // Makes random calls of all functions. The directory is restored after each one that changed it.
    void MakeCalls(int calls)
    {
        for (int call = 0; call < calls && !HasFailure(); ++call) {
            const Operation& operation = m_operations[m_input.Below(m_operations.size())];
            SCOPED_TRACE(std::string(operation.function) + " " + operation.call.circumstances);
            {
                const WorkingDirectory in(m_ground.home);
                operation.call.make(m_ground, [](const std::function<void()>& function) { function(); });
            }
            m_files.Clean();
        }
    }

private:
    const CallGround m_ground{tree};
    SweepGround m_files{m_ground};
    const std::vector<Operation> m_operations = AllOperations();
    RandomInput m_input{FuzzSetting("KESTROVANE_FUZZ_SEED", kUsualSeed) + ::GetCurrentProcessId()};
    const ImportPatch m_noMoves{"MoveFileExW", &RegisterNoMove};
    const ImportPatch m_noMessages{"printf", &DiscardMessage};
};

} // namespace

TEST_F(LongRunTest, KeepsMemoryAndHandlesFlat)
{
    constexpr std::size_t kMostGrowth = 1 << 20; // bytes: what the heap's fragments differ by
    // Strings that the test and the last error hold; a function that leaks one block a call leaves more.
    constexpr int kMostBlocks = 5;
    const int calls = LongCalls();
    const int handles = OpenHandleCount();
    const std::size_t bytes = CommittedBytes();
    const HeapMeter heap;
    const BstrMeter strings;
    MakeCalls(calls);
    EXPECT_EQ(handles, OpenHandleCount());
    const int blocks = HeapMeter::Outstanding();
    EXPECT_GE(kMostBlocks, blocks);
    EXPECT_GE(bytes + kMostGrowth, CommittedBytes());
    std::printf("Long run: %d calls, %d handles before and after, %lld bytes of memory more, %d blocks more.\n", calls,
                handles, static_cast<long long>(CommittedBytes()) - static_cast<long long>(bytes), blocks);
}

TEST(EightProcesses, OnOneVolumeDoNotDisturbEachOther)
{
    constexpr int kProcesses = 8;
    ::SetEnvironmentVariableW(L"KESTROVANE_LONG_CALLS", std::to_wstring(LongCalls() / kProcesses).c_str());
    std::vector<UniqueHandle> processes;
    for (int i = 0; i < kProcesses; ++i) {
        processes.push_back(StartProgram(
            ProgramBesideThis(L"kestrovane-sweeps.exe"),
            {L"--gtest_filter=LongRunTest.KeepsMemoryAndHandlesFlat:SharedDirectoryTest.*", L"--gtest_brief=1"}));
    }
    for (const UniqueHandle& process : processes) {
        ::WaitForSingleObject(process.get(), INFINITE);
        EXPECT_EQ(0U, ExitCodeOf(process.get()));
    }
    ::SetEnvironmentVariableW(L"KESTROVANE_LONG_CALLS", std::to_wstring(LongCalls()).c_str());
}

// One of several processes that work in the same directory at a time; run alone, it is the only one.
class SharedDirectoryTest : public LibraryTest {};

TEST_F(SharedDirectoryTest, CacheFilesOfOneProcessAreItsOwn)
{
    constexpr int kRounds = 20;
    const std::wstring shared = LR"(C:\kestrovane-shared\cache)";
    const std::wstring live = tree.File(L"live.txt", "content of process " + std::to_string(::GetCurrentProcessId()));
    EXPECT_TRUE(RecursivelyCreateDirectory(shared));
    EXPECT_TRUE(isDirectoryExists(shared)) << "created by this process or by another one at the same time";
    ::SetEnvironmentVariableW(L"TMP", shared.c_str());
    std::vector<std::wstring> created;
    for (int round = 0; round < kRounds; ++round) {
        std::wstring cacheFile;
        EXPECT_TRUE(CreateCacheFile(live, cacheFile, L"kvs", true, true));
        created.push_back(cacheFile);
    }
    for (const std::wstring& cacheFile : created) {
        EXPECT_EQ(ReadFileBytes(live), ReadFileBytes(cacheFile)) << Utf8(cacheFile);
    }
    EXPECT_TRUE(DeleteCacheFileList(created));
    for (const std::wstring& cacheFile : created) {
        EXPECT_FALSE(PathExists(cacheFile)) << Utf8(cacheFile);
    }
}
