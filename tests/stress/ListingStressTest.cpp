// Listings of very many files, in all orders, and of deep and wide trees.

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedListing.h"

#include <Kestrovane.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <numeric>
#include <random>

namespace {

constexpr unsigned kSeed = 20240611;

StringList Names(int count)
{
    StringList names;
    for (int i = 0; i < count; ++i) {
        std::wstring number = std::to_wstring(i);
        number.insert(0, 6 - number.size(), L'0');
        names.push_back((i % 3 == 0 ? L"File " : i % 3 == 1 ? L"file " : L"\u0444\u0430\u0439\u043b ") + number);
    }
    std::sort(names.begin(), names.end());
    return names;
}

// The listing as a plain insertion gives it, with its log lines.
struct Oracle {
    StringList files;
    StringList lines;

    explicit Oracle(const StringList& found)
    {
        for (const std::wstring& name : found) {
            const auto place =
                std::find_if(files.begin(), files.end(), [&](const std::wstring& file) { return file > name; });
            if (place == files.end()) {
                lines.push_back(L"file =  " + name + L"\n");
            }
            files.insert(place, name);
        }
    }
};

struct NamedOrder {
    const char* name;
    std::function<void(StringList&)> apply; // to names in ascending order
};

const NamedOrder kOrders[] = {
    {"ascending", [](StringList&) {}},
    {"descending", [](StringList& names) { std::reverse(names.begin(), names.end()); }},
    {"shuffled", [](StringList& names) { std::shuffle(names.begin(), names.end(), std::mt19937(kSeed)); }},
    {"from the middle", [](StringList& names) { std::rotate(names.begin(), names.begin() + 1, names.end()); }},
    {"outside in",
     [](StringList& names) {
         StringList ordered;
         for (std::size_t i = 0; i < names.size(); ++i) {
             ordered.push_back(names[i % 2 == 0 ? i / 2 : names.size() - 1 - i / 2]);
         }
         names = ordered;
     }},
    {"in pairs of equals",
     [](StringList& names) {
         for (std::size_t i = 1; i < names.size(); i += 2) {
             names[i] = names[i - 1];
         }
         std::shuffle(names.begin(), names.end(), std::mt19937(kSeed));
     }},
};

double SecondsOf(const std::function<void()>& call)
{
    const auto start = std::chrono::steady_clock::now();
    call();
    return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

} // namespace

class ListingStress : public LibraryTest {};

// A simulation of the find functions: no file system gives these orders.
TEST_F(ListingStress, GivesAndLogsWhatAPlainInsertionWould)
{
    constexpr int kFiles = 2000;
    for (const NamedOrder& order : kOrders) {
        StringList names = Names(kFiles);
        order.apply(names);
        const Oracle oracle(names);
        SimulatedListing simulated;
        simulated.AnswerAll(SimulatedFiles(names));
        host.Clear();
        EXPECT_EQ(oracle.files, ListFilesFilter(tree.Root(), L"*", false)) << order.name << ", seed " << kSeed;
        EXPECT_EQ(oracle.lines, host.Lines()) << order.name << ", seed " << kSeed;
    }
}

// A simulation of the find functions. An insertion that moves its elements would take minutes.
TEST_F(ListingStress, ListsAHundredThousandFilesInAnyOrderInAMoment)
{
    constexpr int kFiles = 100000;
    constexpr double kMoment = 5.0; // seconds
    const StringList sorted = Names(kFiles);
    for (const NamedOrder& order : kOrders) {
        StringList names = sorted;
        order.apply(names);
        SimulatedListing simulated;
        simulated.AnswerAll(SimulatedFiles(names));
        StringList files;
        EXPECT_GT(kMoment, SecondsOf([&] { files = ListFilesFilter(tree.Root(), L"*", false); })) << order.name;
        std::sort(names.begin(), names.end());
        EXPECT_TRUE(names == files) << order.name << ", seed " << kSeed;
    }
}

TEST_F(ListingStress, ListsARealDirectoryOfTwoThousandFiles)
{
    const StringList names = Names(2000);
    tree.Files(names);
    EXPECT_TRUE(names == ListFilesFilter(tree.Root(), L"*", false));
    EXPECT_EQ(names.size() / 3, ListFilesFilter(tree.Root(), L"\u0444*", false).size());
    EXPECT_TRUE(names == ListFilesFilterRecursive(tree.Root(), L"*", false));
}

// Windows' own functions say what is there.
TEST_F(ListingStress, ListsARealTreeOfAThousandFilesCompletely)
{
    std::mt19937 random(kSeed);
    StringList directories = {L""};
    StringList expected;
    for (int i = 0; i < 100; ++i) {
        const std::wstring& parent = directories[random() % directories.size()];
        directories.push_back(parent + L"d" + std::to_wstring(i) + L"\\");
        tree.Directory(directories.back().substr(0, directories.back().size() - 1));
    }
    for (int i = 0; i < 1000; ++i) {
        expected.push_back(directories[random() % directories.size()] + L"f" + std::to_wstring(i));
    }
    tree.Files(expected);
    StringList found = ListFilesFilterRecursive(tree.Root(), L"*", false);
    const auto parent = [](const std::wstring& path) { return path.substr(0, path.rfind(L'\\') + 1); };
    for (std::size_t i = 1; i < found.size(); ++i) {
        if (parent(found[i - 1]) == parent(found[i])) {
            EXPECT_LT(found[i - 1], found[i]) << "sorted within a directory, seed " << kSeed;
        }
    }
    std::sort(expected.begin(), expected.end());
    std::sort(found.begin(), found.end());
    EXPECT_EQ(expected, found) << "seed " << kSeed;
}

TEST_F(ListingStress, ListsARealTreeOfTwoHundredLevels)
{
    constexpr int kDepth = 200;
    std::wstring path = LR"(\\?\)" + tree.Root();
    std::wstring relative;
    for (int level = 0; level < kDepth; ++level) {
        path += LR"(\d)";
        relative += LR"(d\)";
        ASSERT_TRUE(::CreateDirectoryW(path.c_str(), nullptr)) << level << " error " << ::GetLastError();
    }
    WriteFileBytes(path + LR"(\file)", "x");
    EXPECT_EQ((StringList{relative + L"file"}), ListFilesFilterRecursive(LR"(\\?\)" + tree.Root(), L"*", false));
}

// A simulation: a tree deeper than the test machine's file system allows, as long paths of Windows do. A call for each
// level would not come back.
TEST_F(ListingStress, WalksATreeDeeperThanTheStack)
{
    constexpr std::size_t kDepth = 4000;
    std::size_t opened = 0;
    SimulatedListing simulated;
    simulated.AnswerAll({SimulatedDirectory(L"d")});
    simulated.OnOpen([&](const std::wstring&) {
        if (++opened > kDepth) {
            simulated.AnswerAll({});
        }
    });
    EXPECT_EQ(StringList(), ListFilesFilterRecursive(tree.Root(), L"*", false));
    EXPECT_EQ(kDepth, simulated.OpenedSearches());
    EXPECT_EQ(0U, simulated.OpenSearches());
}
