// A file description on its own.

#include "restore/FileDesc.h"

#include <gtest/gtest.h>

TEST(FileDesc, TakesUpperCaseCopiesAndEndsThePathWithABackslash)
{
    struct Case {
        const wchar_t* path;
        const wchar_t* spec;
        const wchar_t* upperPath;
        const wchar_t* upperSpec;
        const char* why;
    };
    const Case cases[] = {
        {LR"(c:\data)", L"a.txt", LR"(C:\DATA\)", L"A.TXT", "the plain case"},
        {LR"(c:\data\)", L"*.?", LR"(C:\DATA\)", L"*.?", "a backslash already"},
        {LR"(c:\data\\)", L"", LR"(C:\DATA\\)", L"", "two backslashes stay"},
        {L"c:/data/", L"a/b", LR"(C:/DATA/\)", L"A/B", "a slash is no backslash"},
        {L"", L"", LR"(\)", L"", "an empty path is the root"},
        {nullptr, nullptr, LR"(\)", L"", "null texts are empty"},
        {LR"(\)", L"*", LR"(\)", L"*", "the root"},
        {L"\u00E9\u0436\u03B1", L"\u00FF\u00DF\u0131", L"\u00C9\u0416\u0391\\", L"\u0178\u00DF\u0131",
         "one code unit for one: letters without a capital of one unit stay"},
        {L"\xD83D\xDE00\xD800", L"\xDE00", L"\xD83D\xDE00\xD800\\", L"\xDE00", "surrogates stay, paired or not"},
    };
    for (const auto& [path, spec, upperPath, upperSpec, why] : cases) {
        for (const bool recursive : {false, true}) {
            FileDesc description(path, spec, recursive);
            EXPECT_STREQ(upperPath, description.Path()) << why;
            EXPECT_STREQ(upperSpec, description.Spec()) << why;
            EXPECT_EQ(recursive, description.IsRecursive()) << why;
        }
    }
}
