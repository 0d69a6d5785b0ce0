// Mapping of restore paths when memory runs short. Simulations: each allocation of a call fails in turn.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryMeters.h"
#include "tests/support/SilentHost.h"

class RestorePathFaultTest : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        SetVssFileManagerLogger(&SilentLog, &SilentKeepAlive, &SilentLog); // a recording host takes memory itself
    }

    // What came of one call: S_OK for a mapped path, S_FALSE for none, or the HRESULT that was thrown.
    template <typename Function>
    HRESULT Attempt(Function* function, std::wstring& path)
    {
        try {
            return function(path, m_spec, m_mappings) ? S_OK : S_FALSE;
        } catch (const CAtlException& exception) {
            return exception.m_hr;
        } // anything else ends the test
    }

    // The path that a call is given: too long for a string's own room.
    const std::wstring kPath = LR"(C:\Data\a directory with a long name\and one more below it)";
    const std::wstring kResult = LR"(D:\Restore\a directory with a long name\and one more below it)";

private:
    std::wstring m_spec = L"a.txt";
    // The first and the second are visited, the third covers the path.
    std::vector<VSS_ALTERNATE_MAPPING> m_mappings = {{LR"(C:\Data\)", L"D:", L"*.doc", true},
                                                     {LR"(C:\Other)", L"D:", L"*", true},
                                                     {LR"(C:\Data)", LR"(D:\Restore)", L"*.txt", true}};
};

TEST_F(RestorePathFaultTest, EveryStringThatCannotBeAllocatedIsOutOfMemoryAndNothingLeaks)
{
    const BstrMeter meter;
    for (auto* const function : {&MapRestorePath, &MapRestorePath1}) {
        for (int failing = 1;; ++failing) {
            std::wstring path = kPath;
            BstrMeter::FailAt(failing);
            const HRESULT result = Attempt(function, path);
            EXPECT_EQ(0, BstrMeter::Outstanding()) << failing;
            if (!BstrMeter::HasFailed()) {
                EXPECT_EQ(S_OK, result);
                EXPECT_EQ(kResult, path);
                EXPECT_LT(10, failing) << "the call takes many strings";
                break;
            }
            EXPECT_EQ(E_OUTOFMEMORY, result) << failing;
            EXPECT_EQ(kPath, path) << failing;
        }
    }
}

TEST_F(RestorePathFaultTest, EveryBlockThatCannotBeAllocatedIsOutOfMemoryAndNothingLeaks)
{
    const HeapMeter meter;
    for (auto* const function : {&MapRestorePath, &MapRestorePath1}) {
        for (const auto shortage : {HeapMeter::Shortage::kOneAllocation, HeapMeter::Shortage::kFromThenOn}) {
            for (int failing = 1;; ++failing) {
                // Copies of exact size have no capacity for the longer result.
                std::wstring path(kPath);
                const int before = HeapMeter::Outstanding();
                HRESULT result = E_FAIL;
                HeapMeter::Run(failing, shortage, [&] { result = Attempt(function, path); });
                EXPECT_EQ(before, HeapMeter::Outstanding()) << failing;
                if (!HeapMeter::HasFailed()) {
                    EXPECT_EQ(S_OK, result);
                    EXPECT_EQ(kResult, path);
                    EXPECT_LT(1, failing) << "the result takes a block";
                    break;
                }
                EXPECT_EQ(E_OUTOFMEMORY, result) << failing;
                EXPECT_EQ(kPath, path) << failing;
            }
        }
    }
}

TEST_F(RestorePathFaultTest, AResultThatNeedsNoNewBlockIsMappedInPlace)
{
    const BstrMeter meter;
    std::wstring path = kPath;
    path.reserve(1000);
    EXPECT_EQ(S_OK, Attempt(&MapRestorePath, path));
    EXPECT_EQ(kResult, path);
    EXPECT_EQ(0, BstrMeter::Outstanding());
    EXPECT_LT(0, BstrMeter::Allocations());
}
