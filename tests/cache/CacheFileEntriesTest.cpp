// Entries of cache file lists: kinds, separators, prefixes and directories, and lists that an exception ends.

#include "tests/cache/CacheFileFixture.h"
#include "tests/support/CallLog.h"

#include <stdexcept>

namespace {

using StringMap = std::map<std::wstring, std::wstring>;

UINT WINAPI RecordTempFile(const wchar_t* directory, const wchar_t* prefix, UINT /*unique*/, wchar_t* /*name*/)
{
    CallLog::Add(std::wstring(directory) + L" " + prefix);
    ::SetLastError(ERROR_BUFFER_OVERFLOW); // as Windows does for a directory of more than 246 characters
    return 0;
}

int __cdecl RecordCreation(const wchar_t* directory)
{
    CallLog::Add(L"create " + std::wstring(directory));
    return ::CreateDirectoryW(directory, nullptr) ? 0 : -1;
}

BOOL WINAPI RecordMove(const wchar_t* /*source*/, const wchar_t* target, DWORD /*flags*/)
{
    CallLog::Add(L"register " + std::wstring(target));
    return TRUE;
}

HANDLE WINAPI ThrowFromOpen(const wchar_t* /*path*/, DWORD /*access*/, DWORD /*share*/,
                            SECURITY_ATTRIBUTES* /*security*/, DWORD /*disposition*/, DWORD /*flags*/,
                            HANDLE /*pattern*/)
{
    throw std::runtime_error("a simulated exception");
}

class CacheFileEntriesTest : public CreateCacheFileTest {
protected:
    void SetUp() override
    {
        CreateCacheFileTest::SetUp();
        CallLog::Take();
    }

    // Sets TMP to an existing directory of so many characters, without a trailing backslash.
    [[nodiscard]] std::wstring SetTemporaryDirectoryOf(std::size_t length) const
    {
        std::wstring directory = temporary.Root() + L"\\" + std::wstring(length - temporary.Root().size() - 1, L't');
        EXPECT_TRUE(::CreateDirectoryW((LR"(\\?\)" + directory).c_str(), nullptr)) << ::GetLastError();
        EXPECT_TRUE(::SetEnvironmentVariableW(L"TMP", directory.c_str()));
        return directory;
    }

    StringMap map;
};

} // namespace

TEST_F(CacheFileEntriesTest, CreateCacheFileListPassesPrefixAndTemporaryDirectoryOn)
{
    const std::wstring live = tree.File(L"live");
    const ImportPatch patch("GetTempFileNameW", &RecordTempFile);
    EXPECT_FALSE(CreateCacheFileList({live}, L'\0', L"pre", true, map, true));
    EXPECT_FALSE(CreateCacheFileList({live}, L'\0', L"fix", false, map, true));
    const StringList calls = CallLog::Take();
    ASSERT_EQ(2U, calls.size());
    EXPECT_TRUE(EqualIgnoringCase(temporary.Root() + L"\\ pre", calls[0])) << Utf8(calls[0]);
    EXPECT_EQ(tree.Root() + L" fix", calls[1]);
}

// The names of the test's directories contain hyphens.
TEST_F(CacheFileEntriesTest, PathFollowsTheFirstSeparator)
{
    const std::wstring live = tree.File(L"li-ve", "content");
    EXPECT_TRUE(CreateCacheFileList({L"FILE-" + live}, L'-', L"abc", false, map, true));
    ASSERT_EQ(1U, map.size());
    EXPECT_EQ("content", ReadFileBytes(map.begin()->second));
    const std::wstring cache = tree.File(L"ca-che");
    StringMap caches = {{L"LIVE", L"FILE-" + cache}};
    EXPECT_TRUE(DeleteCacheFileList(caches, L'-'));
    EXPECT_FALSE(PathExists(cache));
}

TEST_F(CacheFileEntriesTest, OnlyTheExactKindXmlIsSkippedInAnyCase)
{
    const struct {
        const wchar_t* kind;
        bool skipped;
    } rows[] = {{L"XML|", true},   {L"xml|", true},   {L"xMl|", true}, {L"XMLX|", false},
                {L" XML|", false}, {L"XML |", false}, {L"XM|", false}, {L"|", false}};
    const std::wstring live = tree.File(L"live");
    for (const auto& [kind, skipped] : rows) {
        map.clear();
        EXPECT_TRUE(CreateCacheFileList({kind + live}, L'|', L"abc", false, map, false)) << Utf8(kind);
        EXPECT_EQ(skipped, map.empty()) << Utf8(kind);
    }
}

// A simulation: Wine accepts directories that are too long for Windows.
TEST_F(CacheFileEntriesTest, TemporaryDirectoryOf247To258CharactersIsUsedAsItIs)
{
    const std::wstring live = tree.File(L"live");
    const ImportPatch patch("GetTempFileNameW", &RecordTempFile);
    for (const std::size_t length : {247U, 258U}) {
        const std::wstring directory = SetTemporaryDirectoryOf(length);
        cacheFile = L"unchanged";
        EXPECT_FALSE(CreateCacheFile(live, cacheFile, L"abc", true, false)) << length;
        EXPECT_EQ(DWORD{ERROR_BUFFER_OVERFLOW}, ::GetLastError()) << length;
        EXPECT_EQ(L"unchanged", cacheFile) << length;
        const StringList calls = CallLog::Take();
        ASSERT_EQ(1U, calls.size()) << length << ": no directory takes its place";
        EXPECT_TRUE(EqualIgnoringCase(directory + L"\\ abc", calls[0])) << Utf8(calls[0]);
    }
}

TEST_F(CacheFileEntriesTest, TemporaryDirectoryOf259CharactersIsFalse)
{
    ASSERT_NE(L"", SetTemporaryDirectoryOf(259)); // 260 with its backslash and 261 with its NUL
    cacheFile = L"unchanged";
    EXPECT_FALSE(CreateCacheFile(tree.File(L"live"), cacheFile, L"abc", true, false));
    EXPECT_EQ(L"unchanged", cacheFile);
}

TEST_F(CacheFileEntriesTest, CopyHasTheNameOfTheCacheFileAndNoOther)
{
    EXPECT_TRUE(CreateCacheFile(tree.File(L"live", "content"), cacheFile, L"abc", true, true));
    const std::vector<WIN32_FIND_DATAW> entries = EntriesOf(temporary.Root());
    ASSERT_EQ(1U, entries.size());
    EXPECT_TRUE(EqualIgnoringCase(NameOf(cacheFile), entries[0].cFileName));
    EXPECT_EQ("content", ReadFileBytes(cacheFile));
}

TEST_F(CacheFileEntriesTest, MoveCacheFileCreatesTheDirectoryBeforeItRegistersTheMove)
{
    const std::wstring cache = tree.File(L"cache");
    std::wstring target = tree.Path(LR"(new\live)");
    const ImportPatch create("_wmkdir", &RecordCreation);
    const ImportPatch move("MoveFileExW", &RecordMove);
    EXPECT_TRUE(MoveCacheFile(cache, target));
    const StringList calls = CallLog::Take();
    ASSERT_LE(2U, calls.size());
    EXPECT_EQ(L"create " + tree.Path(L"new"), calls[calls.size() - 2]);
    EXPECT_EQ(L"register " + target, calls.back());
}

TEST_F(CacheFileEntriesTest, RestoreFileListCacheKeepsItsResultWhenAnExceptionEndsIt)
{
    const std::wstring cache = tree.File(LR"(temp\cache)");
    const ImportPatch patch("CreateFileW", &ThrowFromOpen);
    map = {{tree.Path(L"B"), cache}};
    EXPECT_TRUE(RestoreFileListCache(map)) << "no copy had failed before";
    map = {{tree.Path(L"A"), tree.Path(L"missing")}, {tree.Path(L"B"), cache}};
    EXPECT_FALSE(RestoreFileListCache(map)) << "the first copy had failed before";
}
