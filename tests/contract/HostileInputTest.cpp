// Strings that no sensible host would pass, into every string argument of every exported function.
//
// Each call must return, with the current directory and the open handles as before. The process is in a directory of
// the test, so that relative paths stay inside; no function that changes anything gets a path that leads out.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/support/ThrowingHost.h"

#include <optional>
#include <set>

namespace {

struct HostileString {
    std::wstring string;
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

const std::vector<HostileString> kStrings = {
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
    {std::wstring(1, L'\0'), "a NUL"},
    {std::wstring(L"a\0b", 3), "an embedded NUL"},
    {std::wstring(L"a\0*", 3), "a star after an embedded NUL"},
    {L"\xD800", "half a surrogate pair"},
    {L"\xDC00", "the other half"},
    {L"a\xDC00\xD800z", "both halves in the wrong order"},
    {L"\xFFFE\xFFFF\xFEFF", "no characters at all"},
    {std::wstring(kLong, L'a'), "32,000 letters"},
    {std::wstring(kLong, L'\\'), "32,000 backslashes"},
    {std::wstring(kLong, L'.'), "32,000 dots"},
    {std::wstring(kLong, L'*'), "32,000 stars"},
    {std::wstring(kLong, L'\0'), "32,000 NULs"},
    {Repeated(LR"(..\)", kLong), "10,667 steps up"},
};

// Strings after the path of a directory that exists and a backslash.
const std::vector<HostileString> kNamesInDirectory = {
    {L"\xD800", "half a pair in an absolute path"},
    {std::wstring(kLong, L'a'), "32,000 letters in an absolute path"},
};

// Every character of ASCII, alone, inside a name and inside an absolute path.
void AddCharacters(std::vector<HostileString>& strings, const std::wstring& directory)
{
    for (wchar_t character = 1; character < 128; ++character) {
        const std::string what = "character " + std::to_string(character);
        strings.push_back({std::wstring(1, character), what});
        strings.push_back({std::wstring(L"a") + character + L"b", what + " inside"});
        strings.push_back({directory + L"\\a" + character + L"b", what + " inside an absolute path"});
    }
}

// `directory` is one that exists.
std::vector<HostileString> HostileStrings(const std::wstring& directory)
{
    std::vector<HostileString> strings = kStrings;
    for (const auto& [name, what] : kNamesInDirectory) {
        strings.push_back({directory + L"\\" + name, what});
    }
    strings.push_back({directory + std::wstring(L"\0\\x", 3), "an embedded NUL in an absolute path"});
    AddCharacters(strings, directory);
    return strings;
}

// For functions that create nothing. What others would create, the tests could not delete: thousands of directories are
// too deep, and Wine cuts a name of broken pairs to its own limit, enters it under the whole name and overruns its
// record of the current directory.
std::vector<HostileString> StringsNotToCreate()
{
    return {{Repeated(LR"(a\)", kLong), "16,000 directories"},
            {std::wstring(kLong, L'\xD800'), "32,000 halves of a pair"}};
}

// Whether `path` leads to the root of a drive or to a share: by a leading separator, or by more steps up than the
// process's directory lies below the test's.
bool LeadsOut(const std::wstring& path)
{
    return path.starts_with(L'\\') || path.starts_with(L'/') || path.starts_with(LR"(..\..\..)");
}

// The names in the roots of the drives, other than those that tests at the same time create there.
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

class HostileInputTest : public EveryFunctionTest {
protected:
    void SetUp() override
    {
        // Before the handles are counted: the first look at a root opens one that stays.
        m_namesBefore = NamesInRoots();
        EveryFunctionTest::SetUp();
        m_host.emplace(); // instead of the silent one
    }

    void TearDown() override
    {
        for (const std::wstring& name : NamesInRoots()) {
            EXPECT_TRUE(m_namesBefore.contains(name)) << Utf8(name) << " was created outside the test's directory";
        }
        EXPECT_TRUE(IsDirectory(tree.Root()));
        EveryFunctionTest::TearDown();
    }

    [[nodiscard]] std::vector<HostileString> StringsFor(Effect effect) const
    {
        std::vector<HostileString> strings = HostileStrings(tree.Path(L"there"));
        if (effect == Effect::kChanges) {
            std::erase_if(strings, [](const HostileString& hostile) { return LeadsOut(hostile.string); });
        } else {
            const std::vector<HostileString> more = StringsNotToCreate();
            strings.insert(strings.end(), more.begin(), more.end());
        }
        return strings;
    }

    void Try(const StringArgument& argument, const HostileString& hostile) const
    {
        SCOPED_TRACE(std::string(GetParam().name) + ", " + argument.name + ": " + hostile.what);
        const WorkingDirectory in(ground.home);
        // In the small tree, a call that logs so many lines would never end: the host throws then.
        constexpr int kEndless = 2000; // lines
        ThrowingHost::Throw(argument.effect == Effect::kChanges ? kEndless : 0, 0);
        ::SetLastError(ERROR_ACCESS_DENIED); // for failures that are only logged with an error
        EXPECT_NO_THROW(argument.call(ground, hostile.string));
    }

private:
    std::optional<ThrowingHost> m_host;
    std::set<std::wstring> m_namesBefore;
};

} // namespace

TEST_P(HostileInputTest, IsHandledByEveryStringArgument)
{
    for (const StringArgument& argument : GetParam().strings) {
        ground.Build();
        for (const HostileString& hostile : StringsFor(argument.effect)) {
            Try(argument, hostile);
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, HostileInputTest, ::testing::ValuesIn(AllFunctions()), &TestNameOf);

// The roots of drives exist, and shares of these names do not.
class CreationInRootsTest : public LibraryTest {};

TEST_F(CreationInRootsTest, IsTrueForWellFormedPaths)
{
    int tried = 0;
    const WorkingDirectory in(tree.Directory(LR"(1\2\3)"));
    CapturedOutput output;
    for (const HostileString& hostile : HostileStrings(tree.Directory(L"there"))) {
        if (LeadsOut(hostile.string)) {
            ::SetLastError(ERROR_ACCESS_DENIED);
            EXPECT_TRUE(RecursivelyCreateDirectory(hostile.string)) << hostile.what;
            ++tried;
        }
    }
    EXPECT_LT(5, tried);
}
