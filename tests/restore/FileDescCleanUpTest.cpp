// The order in which the strings of file descriptions are freed.

#include "tests/support/CallLog.h"
#include "tests/support/LibraryTest.h"

namespace {

void WINAPI RecordFreedString(BSTR string)
{
    if (string != nullptr) {
        CallLog::Add(string);
    }
    ::SysFreeString(string);
}

class FileDescCleanUpTest : public LibraryTest {};

} // namespace

TEST_F(FileDescCleanUpTest, SecondDescriptionIsFreedBeforeTheFirstAndEachSpecBeforeItsPath)
{
    std::wstring firstPath = LR"(C:\a)";
    std::wstring firstSpec = L"1*";
    std::wstring secondPath = LR"(C:\b)";
    std::wstring secondSpec = L"*2";
    CallLog::Take();
    {
        const ImportPatch patch("SysFreeString", &RecordFreedString);
        EXPECT_FALSE(IsFileDescMatch(firstPath, firstSpec, false, secondPath, secondSpec, false));
    }
    const StringList freed = CallLog::Take();
    ASSERT_LE(4U, freed.size());
    EXPECT_EQ((StringList{L"*2", LR"(C:\B\)", L"1*", LR"(C:\A\)"}), StringList(freed.end() - 4, freed.end()));
}
