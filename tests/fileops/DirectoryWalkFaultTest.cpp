// A walk through a tree in which one directory cannot be searched. A simulation: the find functions are replaced.

#include "tests/support/LibraryTest.h"
#include "tests/support/SimulatedListing.h"

class DirectoryWalkFaultTest : public LibraryTest {};

TEST_F(DirectoryWalkFaultTest, SearchesCloseInnermostFirst)
{
    SimulatedListing listing;
    const std::wstring top = tree.Root() + L"\\";
    listing.Answer(top + L"*.*", {SimulatedDirectory(L"a")});
    listing.Answer(top + LR"(a\*.*)", {SimulatedDirectory(L"b")});
    listing.Answer(top + LR"(a\b\*.*)", {SimulatedDirectory(L"c")}); // c cannot be searched
    EXPECT_EQ(StringList{}, ListFilesFilterRecursive(tree.Root(), L"none", true));
    EXPECT_EQ((std::vector<std::intptr_t>{3, 2, 1}), listing.ClosedInOrder());
}
