// Paths and current directories that are longer than the buffers of the library.

#include "tests/support/LibraryTest.h"
#include "tests/support/WorkingDirectory.h"

#include <direct.h>

#include <cerrno>

class LongPathTest : public LibraryTest {
protected:
    // A directory below the test's own whose whole path has `length` characters.
    [[nodiscard]] std::wstring DirectoryOfLength(std::size_t length) const
    {
        constexpr std::size_t kLongestName = 100; // characters
        std::wstring relative;
        for (std::size_t left = length - tree.Root().size() - 1; left > 0;) {
            std::size_t name = std::min(left, kLongestName);
            name -= left == name + 1 ? 1 : 0; // one more name needs two characters
            relative += (relative.empty() ? L"" : L"\\") + std::wstring(name, L'd');
            left -= name + (left > name ? 1 : 0);
        }
        std::wstring path = tree.Directory(relative);
        EXPECT_EQ(length, path.size());
        return path;
    }
};

namespace {

constexpr std::size_t kLongestPart = 255; // characters that validation looks at

std::wstring Letters(std::size_t count)
{
    std::wstring letters(count, L'n');
    return letters;
}

// Fills the whole buffer, without a terminator.
wchar_t* __cdecl SpoilAndFail(wchar_t* buffer, int room)
{
    std::fill_n(buffer, room, L'X');
    errno = ERANGE;
    return nullptr;
}

wchar_t* __cdecl JustFail(wchar_t* /*buffer*/, int /*room*/)
{
    errno = ENOMEM;
    return nullptr;
}

} // namespace

TEST_F(LongPathTest, KeepsItsDriveHoweverLongAPartIs)
{
    for (const std::size_t length : {254U, 255U, 256U, 300U, 32000U}) {
        const std::wstring part = Letters(length);
        const std::wstring longDirectory = LR"(C:\)" + part + LR"(\f.txt)";
        const std::wstring longName = LR"(C:\dir\)" + part + L".txt";
        const std::wstring longExtension = LR"(C:\dir\f.)" + part;
        for (const std::wstring& path : {longDirectory, longName, longExtension}) {
            EXPECT_EQ(path, GetPathFileTranslate(path)) << length << ": an absolute path stays as it is";
            EXPECT_EQ(L"C", GetVolume(path)) << length;
        }
        EXPECT_EQ(part + L".txt", GetFileName(longName));
        EXPECT_EQ(L"f." + part, GetFileName(longExtension));
        EXPECT_EQ(LR"(C:\)" + part, GetPathFileName(longDirectory));
    }
}

TEST_F(LongPathTest, StaysAShareHoweverLongItIs)
{
    const std::wstring path = LR"(\\srv\share\)" + Letters(300) + LR"(*\f?.txt)";
    EXPECT_EQ(L"f?.txt", GetFileName(path));
    const std::wstring longForm = LR"(\\?\C:\)" + Letters(300) + LR"(*\f?.txt)";
    EXPECT_EQ(longForm, GetPathFileTranslate(longForm));
}

TEST_F(LongPathTest, IsLookedAtUpToTheLongestPart)
{
    const auto isRejected = [](const std::wstring& path) { return GetPathFileTranslate(path).empty(); };
    EXPECT_TRUE(isRejected(LR"(C:\dir\)" + Letters(kLongestPart - 1) + L"*")) << "the last character of a name";
    EXPECT_FALSE(isRejected(LR"(C:\dir\)" + Letters(kLongestPart) + L"*"));
    // The directory begins with a backslash, and the extension its dot.
    EXPECT_TRUE(isRejected(LR"(C:\)" + Letters(kLongestPart - 2) + LR"(*\f)")) << "the last of a directory";
    EXPECT_FALSE(isRejected(LR"(C:\)" + Letters(kLongestPart - 1) + LR"(*\f)"));
    EXPECT_TRUE(isRejected(LR"(C:\dir\f.)" + Letters(kLongestPart - 2) + L"?")) << "the last of an extension";
    EXPECT_FALSE(isRejected(LR"(C:\dir\f.)" + Letters(kLongestPart - 1) + L"?"));
}

TEST_F(LongPathTest, OnePartThatIsTooLongDoesNotHideAnother)
{
    EXPECT_EQ(L"", GetFileName(LR"(C:\)" + Letters(300) + LR"(\f*.txt)"));
    EXPECT_EQ(L"", GetFileName(LR"(C:\d?r\)" + Letters(300)));
    EXPECT_EQ(L"", GetFileName(LR"(C:\dir\f:s.)" + Letters(300)));
}

TEST_F(LongPathTest, IsWholeAfterTheCurrentDirectory)
{
    const WorkingDirectory in(tree.Root());
    const std::wstring relative = Letters(300) + LR"(\)" + Letters(300) + L"." + Letters(300);
    EXPECT_EQ(tree.Path(relative), GetPathFileTranslate(relative));
    EXPECT_EQ(L"C:\\" + relative, GetPathFileTranslate(L"\\" + relative));
}

TEST_F(LongPathTest, LongNameIsKeptWholeAfterParentSteps)
{
    const WorkingDirectory in(tree.Directory(L"1"));
    EXPECT_EQ(tree.Path(Letters(300) + L"." + Letters(300)),
              GetPathFileTranslate(LR"(..\)" + Letters(300) + L"." + Letters(300)));
    std::wstring manySteps;
    for (int step = 0; step < 200; ++step) {
        manySteps += LR"(..\)";
    }
    EXPECT_EQ(LR"(C:\\f.txt)", GetPathFileTranslate(manySteps + L"f.txt"));
}

TEST_F(LongPathTest, CurrentDirectoryOf259CharactersFits)
{
    const std::wstring here = DirectoryOfLength(259);
    const WorkingDirectory in(here);
    EXPECT_EQ(here + LR"(\f.txt)", GetPathFileTranslate(L"f.txt"));
    EXPECT_EQ(L"C", GetVolume(LR"(\f.txt)"));
    EXPECT_EQ(here.substr(0, here.rfind(L'\\')) + LR"(\f.txt)", GetPathFileTranslate(LR"(..\f.txt)"));
}

TEST_F(LongPathTest, RelativePathIsInvalidInCurrentDirectoryOf260Characters)
{
    for (const std::size_t length : {260U, 270U}) {
        const std::wstring here = DirectoryOfLength(length);
        const WorkingDirectory in(here);
        for (const wchar_t* path : {L"f.txt", L"", LR"(\dir\f.txt)", LR"(..\f.txt)", LR"(sub\f.txt)"}) {
            ::SetLastError(ERROR_ACCESS_DENIED);
            host.Clear();
            EXPECT_EQ(L"", GetPathFileTranslate(path));
            EXPECT_FALSE(host.Lines().empty()) << "the failure is reported";
            EXPECT_EQ(here, CurrentDirectory());
        }
        EXPECT_EQ(L"f.txt", GetFileName(LR"(C:\dir\f.txt)"));
        EXPECT_EQ(L"share", GetFileName(LR"(\\srv\share)"));
    }
}

TEST_F(LongPathTest, CurrentDirectoryThatDoesNotFitIsRestoredByEveryOperation)
{
    const std::wstring file = tree.File(L"f.txt");
    const std::wstring missing = tree.Path(L"missing");
    const std::wstring here = DirectoryOfLength(270);
    const WorkingDirectory in(here);
    const std::pair<const char*, std::function<void()>> operations[] = {
        {"isDirectoryExists, there", [&] { EXPECT_TRUE(isDirectoryExists(tree.Root())); }},
        {"isDirectoryExists, missing", [&] { EXPECT_FALSE(isDirectoryExists(missing)); }},
        {"RecursivelyCreateDirectory", [&] { EXPECT_TRUE(RecursivelyCreateDirectory(tree.Path(LR"(a\b)"))); }},
        {"ListFilesFilter", [&] { EXPECT_EQ(1U, ListFilesFilter(tree.Root(), L"*", true).size()); }},
        {"ListFilesFilterRecursive", [&] { EXPECT_EQ(1U, ListFilesFilterRecursive(tree.Root(), L"*", true).size()); }},
        {"ListDirecoriesRecursive", [&] { EXPECT_LE(1U, ListDirecoriesRecursive(tree.Root()).size()); }},
        {"DoCopyComponentFileToDir", [&] { EXPECT_EQ(1, DoCopyComponentFileToDir(file, tree.Path(L"copy"))); }},
    };
    for (const auto& [name, operation] : operations) {
        operation();
        EXPECT_EQ(here, CurrentDirectory()) << name;
    }
}

// Simulation: the runtime cannot read the current directory, and may leave anything in the buffer.
TEST_F(LongPathTest, RelativePathIsInvalidWhileCurrentDirectoryCannotBeRead)
{
    const WorkingDirectory in(tree.Directory(LR"(1\2)"));
    for (auto* const failure : {&SpoilAndFail, &JustFail}) {
        const ImportPatch getCwd("_wgetcwd", failure);
        for (const wchar_t* path : {L"f.txt", L"", LR"(\dir\f.txt)", LR"(..\f.txt)"}) {
            EXPECT_EQ(L"", GetPathFileTranslate(path));
            EXPECT_EQ(tree.Path(LR"(1\2)"), CurrentDirectory());
        }
        EXPECT_TRUE(isDirectoryExists(tree.Root()));
        EXPECT_EQ(tree.Path(LR"(1\2)"), CurrentDirectory());
    }
}

namespace {

int __cdecl FailToSplit(const wchar_t* /*path*/, wchar_t* /*drive*/, std::size_t /*driveRoom*/, wchar_t* /*directory*/,
                        std::size_t /*directoryRoom*/, wchar_t* /*name*/, std::size_t /*nameRoom*/,
                        wchar_t* /*extension*/, std::size_t /*extensionRoom*/)
{
    return EINVAL;
}

} // namespace

// Simulation: the runtime's splitter fails and writes nothing; the path then has no parts.
TEST_F(LongPathTest, PathThatCannotBeSplitIsRelative)
{
    const WorkingDirectory in(tree.Root());
    const ImportPatch split("_wsplitpath_s", &FailToSplit);
    EXPECT_EQ(tree.Path(LR"(C:\dir\f*.txt)"), GetPathFileTranslate(LR"(C:\dir\f*.txt)"));
}
