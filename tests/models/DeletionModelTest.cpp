// The tree deletion beside its model: random trees and random failures of a simulated file system.

#include "tests/models/DeletionModel.h"
#include "tests/models/RandomRounds.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/SilentHost.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <iterator>

namespace {

SimulatedTree* g_tree = nullptr;

HANDLE WINAPI FindFirst(const wchar_t* pattern, WIN32_FIND_DATAW* entry)
{
    return g_tree->FindFirst(pattern, *entry);
}
BOOL WINAPI FindNext(HANDLE search, WIN32_FIND_DATAW* entry)
{
    return g_tree->FindNext(search, *entry);
}
BOOL WINAPI FindClose(HANDLE search)
{
    return g_tree->FindClose(search);
}
BOOL WINAPI DeleteOneFile(const wchar_t* path)
{
    return g_tree->DeleteFile(path);
}
BOOL WINAPI RemoveOneDirectory(const wchar_t* path)
{
    return g_tree->RemoveDirectory(path);
}

DWORD RandomAttributes(RandomInput& input, bool isDirectory)
{
    constexpr DWORD kOthers[] = {0, FILE_ATTRIBUTE_READONLY, FILE_ATTRIBUTE_HIDDEN, FILE_ATTRIBUTE_ARCHIVE,
                                 FILE_ATTRIBUTE_REPARSE_POINT};
    return kOthers[input.Below(std::size(kOthers))] | (isDirectory ? FILE_ATTRIBUTE_DIRECTORY : 0U);
}

std::wstring RandomName(RandomInput& input, std::size_t number)
{
    constexpr std::size_t kLongestName = 255; // characters
    std::wstring name = input.Of(L"ab. \xE9\xD800", 3) + std::to_wstring(number);
    if (input.OneIn(20)) {
        name.append(input.Below(kLongestName - name.size()), L'x');
    }
    if (input.OneIn(40)) {
        name.insert(input.Below(name.size() + 1), 1, input.OneIn(2) ? L'\\' : L'/');
    }
    return name;
}

void AddDirectory(RandomInput& input, const std::wstring& path, std::size_t depth, SimulatedTree::Directories& all)
{
    constexpr std::size_t kDeepest = 4;
    constexpr std::size_t kMostEntries = 4;
    const bool isRoot = path.ends_with(L':'); // it has no entries of its own and its parent
    std::vector<SimulatedTree::Entry> entries;
    if (!isRoot) {
        entries = {{L".", FILE_ATTRIBUTE_DIRECTORY}, {L"..", FILE_ATTRIBUTE_DIRECTORY}};
    }
    for (std::size_t number = input.Below(kMostEntries + 1); number > 0; --number) {
        const bool isDirectory = depth < kDeepest && input.OneIn(3);
        const SimulatedTree::Entry entry = {RandomName(input, number), RandomAttributes(input, isDirectory)};
        entries.push_back(entry);
        if (isDirectory) {
            AddDirectory(input, path + L"\\" + entry.name, depth + 1, all);
        }
    }
    all[path] = entries;
}

std::wstring RandomTop(RandomInput& input)
{
    constexpr std::size_t kAroundTheLimit = 258; // characters: the longest directory with its pattern has 257
    if (input.OneIn(10)) {
        return L"Q:";
    }
    std::wstring top = LR"(Q:\top)";
    if (input.OneIn(8)) {
        top.append(kAroundTheLimit - top.size() - input.Below(input.OneIn(2) ? 4 : 100), L't');
    }
    return top;
}

class DeletionModelTest : public RandomRounds {
protected:
    void TearDown() override { RegisterSilentHost(); }

private:
    const ImportPatch m_first{"FindFirstFileW", &FindFirst};
    const ImportPatch m_next{"FindNextFileW", &FindNext};
    const ImportPatch m_close{"FindClose", &FindClose};
    const ImportPatch m_delete{"DeleteFileW", &DeleteOneFile};
    const ImportPatch m_remove{"RemoveDirectoryW", &RemoveOneDirectory};
    const ImportPatch m_message{"FormatMessageW", &FormatScriptMessage};
};

} // namespace

TEST_F(DeletionModelTest, MakesTheSameCallsAsItsModel)
{
    constexpr std::size_t kCallsThatMayFail = 60;
    constexpr DWORD kErrorBefore = ERROR_INVALID_DATA;
    std::size_t deleted = 0;
    const int rounds = Rounds();
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(Title(round));
        const std::wstring top = RandomTop(input);
        SimulatedTree::Directories directories;
        directories[L"Q:"] = {{top.substr(top.find(L'\\') + 1), FILE_ATTRIBUTE_DIRECTORY}}; // replaced for the root
        AddDirectory(input, top, 0, directories);
        const CallScript::Failures failures = RandomFailures(input, kCallsThatMayFail);

        SimulatedTree expected(directories, failures);
        ::SetLastError(kErrorBefore);
        const int expectedResult = DeleteDirectoryByModel(expected, top);
        const DWORD expectedError = ::GetLastError();

        SimulatedTree actual(directories, failures);
        g_tree = &actual;
        RegisterScriptHost(actual.script);
        ::SetLastError(kErrorBefore);
        const int result = DeleteDirectoryRecursive(top.c_str());
        const DWORD error = ::GetLastError();

        EXPECT_EQ("", FirstDifference(expected.script, actual.script));
        EXPECT_EQ(expectedResult, result);
        EXPECT_EQ(expectedError, error);
        g_tree = nullptr;
        deleted += result != 0 ? 1 : 0;
    }
    EXPECT_LT(static_cast<std::size_t>(rounds) / 10, deleted) << "hardly any tree is deleted";
    EXPECT_GT(static_cast<std::size_t>(rounds) * 9 / 10, deleted) << "hardly any deletion fails";
}
