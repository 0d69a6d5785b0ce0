// Checks, listings and copies when memory runs short. A simulation: each allocation of the C++ runtime fails in turn.

#include "tests/support/LibraryTest.h"
#include "tests/support/MemoryFault.h"
#include "tests/support/ThrowingHost.h"
#include "tests/support/WorkingDirectory.h"

#include <functional>
#include <new>

class FileMemoryFault : public ThrowingTest {
protected:
    void SetUp() override
    {
        ThrowingTest::SetUp();
        tree.Files({L"long enough to take memory of its own", LR"(a\long enough to take memory of its own)",
                    LR"(a\b\file)", L"blocked"});
        tree.Directory(L"here");
        // The library keeps the memory of its latest error text: this one is longer than those that follow.
        ListDirecoriesRecursive(tree.Path(std::wstring(500, L'x')));
    }

    // Runs `call` with its first allocation failing, then its second, until it ends by itself. Each time std::bad_alloc
    // must come out, no memory stay behind, and the current directory be restored.
    void ExpectCleanFailures(const std::function<void()>& call)
    {
        const WorkingDirectory inside(tree.Path(L"here"));
        const std::wstring before = CurrentDirectory();
        int failing = 1;
        while (FailsAt(failing, call)) {
            ++failing;
            EXPECT_EQ(before, CurrentDirectory()) << "allocation " << failing;
        }
        EXPECT_LT(1, failing) << "nothing was allocated";
    }

private:
    static bool FailsAt(int allocation, const std::function<void()>& call)
    {
        bool thrown = false;
        bool struck = false;
        int living = 0;
        {
            const MemoryFault fault(allocation);
            try {
                call();
            } catch (const std::bad_alloc&) {
                thrown = true;
            }
            struck = MemoryFault::HasStruck();
            living = MemoryFault::LivingBlocks();
        }
        EXPECT_EQ(struck, thrown) << "allocation " << allocation;
        EXPECT_EQ(0, living) << "allocation " << allocation;
        return struck;
    }

protected:
    // Its calls take no memory.
    const ThrowingHost silent;
};

TEST_F(FileMemoryFault, ChecksFailCleanly)
{
    std::wstring file = tree.Path(L"long enough to take memory of its own");
    const std::wstring missing = tree.Path(L"missing and long enough to take memory of its own");
    ExpectCleanFailures([&] { isDirectoryExists(tree.Root()); });
    ExpectCleanFailures([&] { isDirectoryExists(missing); });
    ExpectCleanFailures([&] { isDirectoryExists(LR"(..\a\.\.\.\.\.\.)"); });
    ExpectCleanFailures([&] { isFileExists(file); });
    ExpectCleanFailures([&] { isFileExists(LR"(..\a\long enough to take memory of its own)"); });
    ExpectCleanFailures([&] { IsCanReplaceFile(file); });
}

TEST_F(FileMemoryFault, CreationFailsCleanly)
{
    const std::wstring path = tree.Path(LR"(new directories\that are\long enough\to take memory)");
    const std::wstring blocked = tree.Path(LR"(blocked\by a\file)");
    const CapturedOutput output;
    ExpectCleanFailures([&] { RecursivelyCreateDirectory(path); });
    ExpectCleanFailures([&] { RecursivelyCreateDirectory(blocked); });
}

TEST_F(FileMemoryFault, ListingsFailCleanly)
{
    const std::wstring filter = L"*";
    const std::wstring missing = tree.Path(L"missing and long enough to take memory of its own");
    ExpectCleanFailures([&] { ListFilesFilter(tree.Root(), filter, true); });
    ExpectCleanFailures([&] { ListFilesFilter(missing, filter, true); });
    ExpectCleanFailures([&] { ListFilesFilterRecursive(tree.Root(), filter, false); });
    ExpectCleanFailures([&] { ListDirecoriesRecursive(tree.Root()); });
}

TEST_F(FileMemoryFault, CopiesFailCleanly)
{
    const std::wstring source = tree.Path(L"long enough to take memory of its own");
    const std::wstring target = tree.Path(LR"(copied to\a name that takes memory)");
    ExpectCleanFailures([&] { DoCopyComponentFile(source, target); });
    ExpectCleanFailures([&] { DoCopyComponentFileToDir(source, tree.Path(L"copied under its own name")); });
}
