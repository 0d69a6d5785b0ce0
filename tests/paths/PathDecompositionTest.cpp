// Parts of absolute paths, which do not depend on the current directory.

#include "tests/support/LibraryTest.h"

class PathDecompositionTest : public LibraryTest {};

namespace {

struct PathCase {
    std::wstring path;
    std::wstring fileName;      // GetFileName
    std::wstring pathFileName;  // GetPathFileName
    std::wstring withoutVolume; // GetPathFileNameNoVolume
    std::wstring volume;        // GetVolume
    std::wstring translated;    // GetPathFileTranslate
    const char* why;
};

const PathCase kPathCases[] = {
    {LR"(C:\dir\f.txt)", L"f.txt", LR"(C:\dir)", LR"(\dir\f.txt)", L"C", LR"(C:\dir\f.txt)", "the plain case"},
    {LR"(C:\dir\)", L"", LR"(C:\dir)", LR"(\dir\)", L"C", LR"(C:\dir\)", "nothing after the last backslash"},
    {LR"(C:\dir)", L"dir", L"C:", LR"(\dir)", L"C", LR"(C:\dir)", "a directory is a name"},
    {LR"(C:\f.txt)", L"f.txt", L"C:", LR"(\f.txt)", L"C", LR"(C:\f.txt)", "the root loses its backslash"},
    {LR"(C:\)", L"", L"C:", LR"(\)", L"C", LR"(C:\)", "a root"},
    {L"C:", L"", L"", L"", L"C", L"C:", "no backslash to cut at"},
    {L"C:a.txt", L"", L"", L"a.txt", L"C", L"C:a.txt", "drive-relative: stays as it is"},
    {LR"(C:dir\a.txt)", L"a.txt", L"C:dir", LR"(dir\a.txt)", L"C", LR"(C:dir\a.txt)", "drive-relative, deeper"},
    {LR"(C:\dir\f.tar.gz)", L"f.tar.gz", LR"(C:\dir)", LR"(\dir\f.tar.gz)", L"C", LR"(C:\dir\f.tar.gz)",
     "every extension belongs to the name"},
    {LR"(C:\dir\name)", L"name", LR"(C:\dir)", LR"(\dir\name)", L"C", LR"(C:\dir\name)", "no extension"},
    {LR"(C:\dir.d\.hidden)", L".hidden", LR"(C:\dir.d)", LR"(\dir.d\.hidden)", L"C", LR"(C:\dir.d\.hidden)",
     "nothing but an extension"},
    {L"C:/a/b.txt", L"b.txt", LR"(C:\a)", LR"(\a\b.txt)", L"C", LR"(C:\a\b.txt)", "slashes are backslashes"},
    {LR"(C:/a\b/c)", L"c", LR"(C:\a\b)", LR"(\a\b\c)", L"C", LR"(C:\a\b\c)", "slashes among backslashes"},
    {LR"(C:\a\..\b)", L"b", LR"(C:\a\..)", LR"(\a\..\b)", L"C", LR"(C:\a\..\b)", "steps up are not followed"},
    {LR"(C:\a\\b)", L"b", LR"(C:\a\)", LR"(\a\\b)", L"C", LR"(C:\a\\b)", "doubled backslashes stay"},
    {LR"(*:\a\b)", L"b", LR"(*:\a)", LR"(\a\b)", L"*", LR"(*:\a\b)", "a drive is never rejected"},
    {L"C:\\\u0416\u00E9\\\U0001F600.t", L"\U0001F600.t", L"C:\\\u0416\u00E9", L"\\\u0416\u00E9\\\U0001F600.t", L"C",
     L"C:\\\u0416\u00E9\\\U0001F600.t", "characters of every plane"},
    {LR"(\\srv\share)", L"share", LR"(\\srv)", L"", L"", LR"(\\srv\share)", "a share has no drive"},
    {LR"(\\srv\share\dir\f.txt)", L"f.txt", LR"(\\srv\share\dir)", L"", L"", LR"(\\srv\share\dir\f.txt)", "below it"},
    {L"//srv/share/f", L"f", LR"(\\srv\share)", L"", L"", LR"(\\srv\share\f)", "a share with slashes"},
    {LR"(\\srv\sh*re\d:r\f?.txt)", L"f?.txt", LR"(\\srv\sh*re\d:r)", LR"(r\f?.txt)", LR"(\\srv\sh*re\d)",
     LR"(\\srv\sh*re\d:r\f?.txt)", "shares are not validated"},
    {LR"(\\?\C:\x)", L"x", LR"(\\?\C:)", LR"(\x)", LR"(\\?\C)", LR"(\\?\C:\x)", "the long form"},
    {LR"(\\?\C:\a*b\c?)", L"c?", LR"(\\?\C:\a*b)", LR"(\a*b\c?)", LR"(\\?\C)", LR"(\\?\C:\a*b\c?)",
     "the long form is not validated"},
};

} // namespace

TEST_F(PathDecompositionTest, GivesThePartsOfAbsolutePaths)
{
    for (const PathCase& row : kPathCases) {
        const std::string why = std::string(row.why) + ": " + Utf8(row.path);
        EXPECT_EQ(row.fileName, GetFileName(row.path)) << why;
        EXPECT_EQ(row.pathFileName, GetPathFileName(row.path)) << why;
        EXPECT_EQ(row.withoutVolume, GetPathFileNameNoVolume(row.path)) << why;
        EXPECT_EQ(row.volume, GetVolume(row.path)) << why;
        EXPECT_EQ(row.translated, GetPathFileTranslate(row.path)) << why;
    }
    EXPECT_TRUE(host.Events().empty()) << "none of them is rejected";
}

namespace {

struct RejectedCase {
    std::wstring path;
    const char* why;
};

const RejectedCase kRejectedCases[] = {
    {LR"(C:\a\b*.txt)", "a star in the name"},
    {LR"(C:\a?\b)", "a question mark in the directory"},
    {LR"(C:\a\b.t?t)", "a question mark in the extension"},
    {LR"(C:\a*\b)", "a star in the directory"},
    {LR"(C:\a\b?c.txt)", "a question mark in the name"},
    {LR"(C:\a\b.t*)", "a star in the extension"},
    {LR"(C:\a\f:s)", "a colon in the name: a stream"},
    {LR"(C:\a:b\c)", "a colon in the directory"},
    {LR"(C:\a\b.c:d)", "a colon in the extension"},
    {L"C:/a*/b", "with slashes"},
    {LR"(a\b*)", "relative"},
    {LR"(..\a*\b)", "a star in what a climbing path leaves out"},
    {L"*", "a star alone"},
    {L"?", "a question mark alone"},
};

} // namespace

TEST_F(PathDecompositionTest, IsEmptyForARejectedPath)
{
    for (const auto& [path, why] : kRejectedCases) {
        EXPECT_EQ(L"", GetFileName(path)) << why;
        EXPECT_EQ(L"", GetPathFileName(path)) << why;
        EXPECT_EQ(L"", GetPathFileNameNoVolume(path)) << why;
        EXPECT_EQ(L"", GetVolume(path)) << why;
        EXPECT_EQ(L"", GetPathFileTranslate(path)) << why;
    }
    EXPECT_TRUE(host.Events().empty()) << "there is no last error to report";
}

TEST_F(PathDecompositionTest, ReportsTheLastErrorOfARejectedPathOnce)
{
    ::SetLastError(ERROR_INVALID_NAME);
    EXPECT_EQ(L"", GetFileName(LR"(C:\a*b)"));
    EXPECT_EQ(ReportLines(ERROR_INVALID_NAME), host.Lines());
    EXPECT_EQ(DWORD{ERROR_INVALID_NAME}, ::GetLastError());
}

TEST_F(PathDecompositionTest, LeavesArgumentAndLastErrorAlone)
{
    const std::wstring path = LR"(C:/dir/f.txt)";
    const std::wstring relative = LR"(..\a/f.txt)";
    ::SetLastError(1234);
    for (const std::wstring& given : {std::cref(path), std::cref(relative)}) {
        const std::wstring before = given;
        GetFileName(given);
        GetPathFileName(given);
        GetPathFileNameNoVolume(given);
        GetVolume(given);
        GetPathFileTranslate(given);
        EXPECT_EQ(before, given);
        EXPECT_EQ(1234U, ::GetLastError());
    }
}

namespace {

struct TranslateCase {
    std::wstring path;
    std::wstring local;
    const char* why;
};

const TranslateCase kTranslateCases[] = {
    {LR"(\\host\volume$C\dir\f.txt)", LR"(C:\dir\f.txt)", "the plain case"},
    {LR"(\\host\volume$C\)", LR"(C:\)", "the root of the volume"},
    {LR"(//host/volume$C/dir)", LR"(C:\dir)", "with slashes"},
    {LR"(\\host\volume$C)", L"", "no backslash after the volume"},
    {LR"(\\host\volume$)", L"", "nothing after the mark"},
    {LR"(\\host\volume$\dir)", LR"(:\dir)", "no letter after the mark"},
    {LR"(\\host\volume$CD\dir)", LR"(CD:\dir)", "everything up to the backslash is the volume"},
    {LR"(\\host\volume$A\x\volume$C\dir)", LR"(C:\dir)", "the last mark counts"},
    {LR"(\\host\volume$C\dir\volume$D)", L"", "the last mark counts, even without a backslash after it"},
    {LR"(\\host\VOLUME$C\dir)", LR"(\\host\VOLUME$C\dir)", "the mark is in small letters"},
    {LR"(\\host\Volume$C\dir)", LR"(\\host\Volume$C\dir)", "in all of them"},
    {LR"(\\host\volumeC\dir)", LR"(\\host\volumeC\dir)", "no dollar sign"},
    {LR"(C:\a\volume$D\b)", LR"(D:\b)", "in a local path, too"},
    {LR"(C:\a\myvolume$D\b)", LR"(D:\b)", "inside a name, too"},
    {LR"(\\?\C:\volume$D\b)", LR"(D:\b)", "in the long form, too"},
    {LR"(C:\volume$D\b*)", L"", "rejected before it is searched"},
    {LR"(C:\dir\f.txt)", LR"(C:\dir\f.txt)", "no mark: the path itself"},
    {L"C:/dir/f.txt", LR"(C:\dir\f.txt)", "no mark: the path with its separators converted"},
};

} // namespace

TEST_F(PathDecompositionTest, TranslatesTheVolumeOfAnAdministrativeShare)
{
    for (const auto& [path, local, why] : kTranslateCases) {
        EXPECT_EQ(local, GetPathFileTranslate(path)) << why;
    }
}

TEST_F(PathDecompositionTest, EndsAPathAtATerminatorInsideOnlyWhereItIsSplit)
{
    const std::wstring path(L"C:\\dir\0\\f.txt", 13);
    EXPECT_EQ(L"f.txt", GetFileName(path));
    EXPECT_EQ(std::wstring(L"C:\\dir\0", 7), GetPathFileName(path));
    const std::wstring hidden(L"C:\\dir\0*", 8);
    EXPECT_EQ(std::wstring(L"dir\0*", 5), GetFileName(hidden)) << "what comes after it is not validated";
}

TEST(AppendBackslash, EnsuresOneBackslashAtTheEnd)
{
    struct Case {
        std::wstring path;
        std::wstring result;
        const char* why;
    };
    const Case cases[] = {
        {L"", LR"(\)", "an empty path"},
        {LR"(\)", LR"(\)", "a backslash"},
        {LR"(C:\dir)", LR"(C:\dir\)", "none yet"},
        {LR"(C:\dir\)", LR"(C:\dir\)", "one already"},
        {LR"(C:\dir\\)", LR"(C:\dir\\)", "two already"},
        {L"a/", LR"(a/\)", "a slash is none"},
        {L"C:", LR"(C:\)", "a drive"},
        {L"a*?", LR"(a*?\)", "nothing is validated"},
    };
    for (const auto& [path, result, why] : cases) {
        std::wstring given = path;
        EXPECT_EQ(result, AppendBackslash(given)) << why;
        EXPECT_EQ(path, given) << why;
    }
}
