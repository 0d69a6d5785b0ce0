// Texts that no sensible host would give, into every exported function that takes texts.
//
// Each call must come back, with the current directory and the open handles as they were. The process is in a
// directory of the test, so that relative paths stay inside; no function that writes is given a path that leads out.

#include "tests/support/LibraryTest.h"
#include "tests/support/SilentHost.h"
#include "tests/support/WorkingDirectory.h"

#include <algorithm>
#include <functional>
#include <set>

namespace {

struct HostileText {
    std::wstring text;
    std::string what;
};

constexpr std::size_t kLong = 32000; // characters

std::wstring Repeated(const std::wstring& text, std::size_t length)
{
    std::wstring repeated;
    while (repeated.size() < length) {
        repeated += text;
    }
    return repeated;
}

// `directory` is one that exists, for characters inside an absolute path.
std::vector<HostileText> HostileTexts(const std::wstring& directory)
{
    std::vector<HostileText> texts = {
        {L"", "empty"},
        {LR"(\)", "one backslash"},
        {LR"(\\)", "two backslashes"},
        {LR"(\\\)", "three backslashes"},
        {L"//", "two slashes"},
        {L".", "one dot"},
        {L"..", "two dots"},
        {L"...", "three dots"},
        {L"....", "four dots"},
        {LR"(..\)", "one step up"},
        {LR"(..\..)", "two steps up"},
        {LR"(.\.\.)", "no steps"},
        {L":", "a colon"},
        {L"::", "two colons"},
        {L":::", "three colons"},
        {LR"(\\?\)", "the long form of nothing"},
        {LR"(\\?)", "the beginning of the long form"},
        {LR"(\\.\)", "the device form of nothing"},
        {LR"(\\?\UNC\)", "the long form of no share"},
        {LR"(\\?\Volume{)", "the beginning of a volume's name"},
        {LR"(\\h\volume$\)", "the mark without a volume"},
        {L"%", "a percent sign"},
        {L"%s%n%S%d", "a format"},
        {L" ", "a blank"},
        {L". ", "a dot and a blank"},
        {L"\t\r\n", "white space"},
        {std::wstring(1, L'\0'), "a terminator"},
        {std::wstring(L"a\0b", 3), "a terminator inside"},
        {std::wstring(L"a\0*", 3), "a star behind a terminator"},
        {directory + std::wstring(L"\0\\x", 3), "a terminator inside an absolute path"},
        {L"\xD800", "half a surrogate pair"},
        {L"\xDC00", "the other half"},
        {L"a\xDC00\xD800z", "both halves in the wrong order"},
        {directory + L"\\\xD800", "half a pair in an absolute path"},
        {L"\xFFFE\xFFFF\xFEFF", "no characters at all"},
        {std::wstring(kLong, L'a'), "32,000 letters"},
        {directory + L"\\" + std::wstring(kLong, L'a'), "32,000 letters in an absolute path"},
        {std::wstring(kLong, L'\\'), "32,000 backslashes"},
        {std::wstring(kLong, L'.'), "32,000 dots"},
        {std::wstring(kLong, L'*'), "32,000 stars"},
        {std::wstring(kLong, L'\0'), "32,000 terminators"},
        {Repeated(LR"(..\)", kLong), "10,667 steps up"},
    };
    for (wchar_t character = 1; character < 128; ++character) {
        const std::string what = "character " + std::to_string(character);
        texts.push_back({std::wstring(1, character), what});
        texts.push_back({std::wstring(L"a") + character + L"b", what + " inside"});
        texts.push_back({directory + L"\\a" + character + L"b", what + " inside an absolute path"});
    }
    return texts;
}

// For functions that create nothing. What they would make is beyond the test bench: thousands of directories are too
// deep for it to delete, and Wine cuts a name of broken pairs to its own limit, enters it under the whole name and
// overruns its record of the current directory.
std::vector<HostileText> TextsNotToCreate()
{
    return {{Repeated(LR"(a\)", kLong), "16,000 directories"},
            {std::wstring(kLong, L'\xD800'), "32,000 halves of a pair"}};
}

// Whether `path` leads to the root of a drive or to a share: by a separator in front, or by more steps up than the
// process's directory lies below the test's.
bool LeadsOut(const std::wstring& path)
{
    return path.starts_with(L'\\') || path.starts_with(L'/') || path.starts_with(LR"(..\..\..)");
}

std::string Narrowed(const std::wstring& text)
{
    std::string narrow;
    for (const wchar_t character : text) {
        narrow += static_cast<char>(character & 0xFF);
    }
    return narrow;
}

// The names in the roots of the drives, other than those that tests at the same time make there.
std::set<std::wstring> NamesInRoots()
{
    std::set<std::wstring> names;
    for (const wchar_t* drive : {L"C:", L"D:"}) {
        for (const WIN32_FIND_DATAW& entry : EntriesOf(drive)) {
            const std::wstring name = entry.cFileName;
            if (!name.starts_with(L"kv") && !name.starts_with(L'#')) {
                names.insert(name);
            }
        }
    }
    return names;
}

struct Function {
    const char* name;
    std::function<void(const std::wstring&)> call;
};

} // namespace

class HostileInputTest : public LibraryTest {
protected:
    void SetUp() override
    {
        // Before the handles are counted: the first look at a root opens one that stays.
        m_namesBefore = NamesInRoots();
        LibraryTest::SetUp();
        RegisterSilentHost(); // a recorder would keep it all
        texts = HostileTexts(tree.Directory(L"there"));
        // Deep enough for the few steps up among the texts.
        home = tree.Directory(LR"(1\2\3)");
    }

    void TearDown() override
    {
        for (const std::wstring& name : NamesInRoots()) {
            EXPECT_TRUE(m_namesBefore.contains(name)) << Utf8(name) << " was made outside the test's directory";
        }
        LibraryTest::TearDown();
    }

    void AddTextsNotToCreate()
    {
        const std::vector<HostileText> more = TextsNotToCreate();
        texts.insert(texts.end(), more.begin(), more.end());
    }

    void Try(const Function& function, const HostileText& hostile)
    {
        SCOPED_TRACE(std::string(function.name) + " with " + hostile.what);
        const WorkingDirectory in(home);
        ::SetLastError(ERROR_ACCESS_DENIED); // so that refusals are reported
        EXPECT_NO_THROW(function.call(hostile.text));
    }

    void TryAll(const std::vector<Function>& functions)
    {
        CapturedOutput output; // of failed creations and expansions
        for (const Function& function : functions) {
            for (const HostileText& hostile : texts) {
                Try(function, hostile);
            }
        }
    }

    std::vector<HostileText> texts;
    std::wstring home;

private:
    std::set<std::wstring> m_namesBefore;
};

TEST_F(HostileInputTest, IsTakenByTheHostFunctions)
{
    TryAll({{"SendKA", [](const std::wstring& text) { SendKA(Narrowed(text).c_str()); }}});
}

namespace {

// Cut at its last `mark`, a path gives what the library's two functions for that mark say.
void ExpectCutAt(wchar_t mark, const std::wstring& path, const std::wstring& before, const std::wstring& after)
{
    if (path.find(mark) == std::wstring::npos) {
        EXPECT_TRUE(before.empty() && after.empty());
    } else {
        EXPECT_EQ(path, before + mark + after);
        EXPECT_EQ(std::wstring::npos, after.find(mark));
    }
}

// The path as the library makes it absolute. Those with the mark of a volume would be translated, but are absolute.
std::wstring Absolute(const std::wstring& path)
{
    return path.starts_with(LR"(\\h\volume$)") ? path : GetPathFileTranslate(path);
}

} // namespace

TEST_F(HostileInputTest, IsTakenByThePathFunctions)
{
    AddTextsNotToCreate();
    TryAll({
        {"GetFileName and GetPathFileName",
         [](const std::wstring& text) {
             ExpectCutAt(L'\\', Absolute(text), GetPathFileName(text), GetFileName(text));
         }},
        {"GetVolume and GetPathFileNameNoVolume",
         [](const std::wstring& text) {
             ExpectCutAt(L':', Absolute(text), GetVolume(text), GetPathFileNameNoVolume(text));
         }},
        {"GetPathFileTranslate",
         [](const std::wstring& text) { EXPECT_EQ(std::wstring::npos, GetPathFileTranslate(text).find(L'/')); }},
        {"AppendBackslash",
         [](const std::wstring& text) {
             const std::wstring path = AppendBackslash(text);
             EXPECT_TRUE(path.starts_with(text) && path.ends_with(L'\\'));
             EXPECT_EQ(path, AppendBackslash(path));
         }},
    });
}

TEST_F(HostileInputTest, IsTakenByTheStringFunctions)
{
    AddTextsNotToCreate();
    TryAll({
        {"IsEqual", [](const std::wstring& text) { EXPECT_TRUE(IsEqual(text, text)); }},
        {"FindStringInList",
         [](const std::wstring& text) {
             EXPECT_TRUE(FindStringInList(text, {L"other", text}));
         }},
        {"FindMatchStringInList",
         [](const std::wstring& text) { EXPECT_TRUE(FindMatchStringInList(L"<" + text + L">", {text})); }},
        {"WStringAfterWCHAR",
         [](const std::wstring& text) { EXPECT_EQ(text, WStringAfterWCHAR(L"\x1234" + text, L'\x1234')); }},
        {"WStringBeforeWCHAR",
         [](const std::wstring& text) { EXPECT_EQ(text, WStringBeforeWCHAR(text + L"\x1234", L'\x1234')); }},
        {"WString2UpperCase",
         [](const std::wstring& text) {
             const std::wstring upper = WString2UpperCase(text);
             EXPECT_EQ(text.size(), upper.size());
             EXPECT_EQ(upper, WString2UpperCase(upper));
         }},
        {"DoExpandEnvironmentStrings",
         [](const std::wstring& text) {
             const std::wstring given = L"%" + text;
             CComBSTR string(given.c_str());
             DoExpandEnvironmentStrings(string);
             EXPECT_GE(std::wcslen(given.c_str()), string.Length()) << "no variable has such a name";
         }},
    });
}

TEST_F(HostileInputTest, IsTakenByTheChecks)
{
    AddTextsNotToCreate();
    TryAll({
        {"isDirectoryExists", [](const std::wstring& text) { isDirectoryExists(text); }},
        {"isDirectoryReadWritable", [](const std::wstring& text) { isDirectoryReadWritable(text); }},
        {"isFileExists", [](const std::wstring& text) { EXPECT_FALSE(isFileExists(text)); }},
        {"IsFileExistsSnap", [](const std::wstring& text) { IsFileExistsSnap(Narrowed(text).data()); }},
        {"IsCanReplaceFile",
         [](const std::wstring& text) {
             std::wstring path = text;
             EXPECT_TRUE(IsCanReplaceFile(path)) << "no such file";
             EXPECT_EQ(text, path);
         }},
        {"getFileSize",
         [](const std::wstring& text) {
             std::wstring path = text;
             EXPECT_EQ(0, getFileSize(path));
             EXPECT_EQ(text, path);
         }},
    });
}

TEST_F(HostileInputTest, IsTakenByTheListings)
{
    AddTextsNotToCreate();
    TryAll({
        {"ListFilesFilter, directory", [](const std::wstring& text) { ListFilesFilter(text, L"*", true); }},
        {"ListFilesFilterRecursive, directory",
         [](const std::wstring& text) { ListFilesFilterRecursive(text, L"*", false); }},
        {"ListDirecoriesRecursive", [](const std::wstring& text) { ListDirecoriesRecursive(text); }},
        {"ListFilesFilter, filter", [this](const std::wstring& text) { ListFilesFilter(tree.Root(), text, false); }},
        {"ListFilesFilterRecursive, filter",
         [this](const std::wstring& text) { ListFilesFilterRecursive(tree.Root(), text, true); }},
    });
}

TEST_F(HostileInputTest, IsTakenByTheCreation)
{
    std::erase_if(texts, [](const HostileText& hostile) { return LeadsOut(hostile.text); });
    TryAll({{"RecursivelyCreateDirectory", [](const std::wstring& text) { RecursivelyCreateDirectory(text); }}});
}

// The roots of drives exist, and shares of these names do not.
TEST_F(HostileInputTest, IsTakenByTheCreationInRoots)
{
    std::erase_if(texts, [](const HostileText& hostile) { return !LeadsOut(hostile.text); });
    ASSERT_LT(5U, texts.size());
    TryAll({{"RecursivelyCreateDirectory",
             [](const std::wstring& text) { EXPECT_TRUE(RecursivelyCreateDirectory(text)) << "none is refused"; }}});
}

TEST_F(HostileInputTest, IsTakenByTheCopies)
{
    std::erase_if(texts, [](const HostileText& hostile) { return LeadsOut(hostile.text); });
    const std::wstring source = tree.File(L"source.txt", "content");
    TryAll({
        {"DoCopyComponentFileToDir, source",
         [this](const std::wstring& text) { EXPECT_EQ(0, DoCopyComponentFileToDir(text, tree.Path(L"to"))); }},
        {"DoCopyComponentFile, source",
         [this](const std::wstring& text) { EXPECT_EQ(0, DoCopyComponentFile(text, tree.Path(LR"(to\a)"))); }},
        {"DoCopyComponentFileToDir, directory",
         [&source](const std::wstring& text) { DoCopyComponentFileToDir(source, text); }},
        {"DoCopyComponentFile, target", [&source](const std::wstring& text) { DoCopyComponentFile(source, text); }},
    });
    EXPECT_EQ("content", ReadFileBytes(source));
}

TEST_F(HostileInputTest, IsTakenByTheRestoreMapping)
{
    AddTextsNotToCreate();
    TryAll({
        {"IsFileDescMatch",
         [](const std::wstring& text) {
             std::wstring path = text;
             std::wstring spec = L"*";
             EXPECT_TRUE(IsFileDescMatch(path, spec, false, path, spec, false)) << "a description overlaps itself";
             EXPECT_TRUE(IsFileDescMatch(path, spec, true, path, spec, true));
             EXPECT_EQ(text, path);
         }},
        {"IsFileDescMatch, specification",
         [](const std::wstring& text) {
             std::wstring path = L"C:";
             std::wstring spec = text.substr(0, 2000); // two patterns of 32,000 stars take seconds
             EXPECT_TRUE(IsFileDescMatch(path, spec, false, path, spec, false)) << "a description overlaps itself";
         }},
        {"MapRestorePath",
         [](const std::wstring& text) {
             std::wstring path = text;
             std::wstring spec = L"a";
             std::vector<VSS_ALTERNATE_MAPPING> mappings = {{text, L"D:", L"*", true}};
             EXPECT_TRUE(MapRestorePath(path, spec, mappings)) << "a directory covers itself";
             EXPECT_EQ(L"D:", path);
         }},
        {"MapRestorePath1",
         [](const std::wstring& text) {
             std::wstring path = text;
             std::wstring spec = L"a";
             std::vector<VSS_ALTERNATE_MAPPING> mappings = {{L"C:", text, L"*", false}, {text, L"D:", L"*", true}};
             EXPECT_TRUE(MapRestorePath1(path, spec, mappings)) << "a directory covers itself";
         }},
        {"MapRestorePath, alternate location",
         [](const std::wstring& text) {
             std::wstring path = LR"(C:\x)";
             std::wstring spec = L"a";
             std::vector<VSS_ALTERNATE_MAPPING> mappings = {{L"C:", text, L"*", true}};
             EXPECT_TRUE(MapRestorePath(path, spec, mappings));
             EXPECT_EQ(text.c_str() + std::wstring(LR"(\x)"), path) << "up to a terminator inside";
         }},
        {"MapRestorePath, specification",
         [](const std::wstring& text) {
             std::wstring path = LR"(C:\x)";
             std::wstring spec = text;
             std::vector<VSS_ALTERNATE_MAPPING> mappings = {{L"C:", L"D:", L"*", true}};
             EXPECT_TRUE(MapRestorePath(path, spec, mappings)) << "a star covers everything";
         }},
    });
}
