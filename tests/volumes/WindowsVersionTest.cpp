// Windows versions: those that a process can be shown on this machine, and the rest by simulation.

#include "tests/support/ChildProcess.h"
#include "tests/support/LibraryTest.h"

#include <cstring>

namespace {

std::wstring DirectoryOfThisProgram()
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\'));
}

// Lets programs of one name be shown another Windows version, for a scope.
class ShownVersion {
public:
    ShownVersion(const std::wstring& program, const std::wstring& version)
        : m_key(LR"(Software\Wine\AppDefaults\)" + program)
    {
        const auto size = static_cast<DWORD>((version.size() + 1) * sizeof(wchar_t));
        EXPECT_EQ(ERROR_SUCCESS,
                  ::RegSetKeyValueW(HKEY_CURRENT_USER, m_key.c_str(), L"Version", REG_SZ, version.c_str(), size));
    }
    ~ShownVersion() { EXPECT_EQ(ERROR_SUCCESS, ::RegDeleteKeyW(HKEY_CURRENT_USER, m_key.c_str())); }
    ShownVersion(const ShownVersion&) = delete;
    ShownVersion& operator=(const ShownVersion&) = delete;

private:
    std::wstring m_key;
};

// Runs a program with one argument, in the directory where it finds the library.
void RunProgram(const std::wstring& program, const std::wstring& argument)
{
    const UniqueHandle process = StartProgram(program, {argument}, DirectoryOfThisProgram());
    EXPECT_EQ(0U, ExitCodeOf(process.get()));
}

// Each version in a process of its own, by a program of a name of its own.
class WindowsVersionTest : public LibraryTest {
protected:
    std::string Probe(const std::wstring& version)
    {
        const std::wstring name =
            L"kestrovane-version-" + std::to_wstring(::GetCurrentProcessId()) + L"-" + version + L".exe";
        const std::wstring program = tree.Path(name);
        EXPECT_TRUE(
            ::CopyFileW((DirectoryOfThisProgram() + L"\\kestrovane-version-probe.exe").c_str(), program.c_str(), TRUE));
        const ShownVersion shown(name, version);
        RunProgram(program, tree.Path(version));
        return ReadFileBytes(tree.Path(version));
    }
};

// What GetVersionExW answers next, and how often it was asked.
struct Answer {
    DWORD major;
    DWORD minor;
    BYTE productType;
    const wchar_t* servicePack;
    BOOL succeeds;
};
Answer g_answer = {};
int g_queries = 0;

BOOL WINAPI AnswerVersion(OSVERSIONINFOW* asked)
{
    ++g_queries;
    OSVERSIONINFOEXW expected = {};
    expected.dwOSVersionInfoSize = 284; // bytes: the extended record
    auto* record = reinterpret_cast<OSVERSIONINFOEXW*>(asked);
    EXPECT_EQ(0, std::memcmp(&expected, record, sizeof(expected))) << "a zero-filled record but for its size";
    record->dwMajorVersion = g_answer.major;
    record->dwMinorVersion = g_answer.minor;
    record->wProductType = g_answer.productType;
    std::wcscpy(record->szCSDVersion, g_answer.servicePack);
    return g_answer.succeeds;
}

class WindowsVersionSimulation : public LibraryTest {
protected:
    void SetUp() override
    {
        LibraryTest::SetUp();
        g_queries = 0;
    }

    void TearDown() override
    {
        EXPECT_TRUE(host.Events().empty());
        LibraryTest::TearDown();
    }

    ImportPatch version{"GetVersionExW", &AnswerVersion};
};

} // namespace

TEST_F(WindowsVersionTest, IsNeitherOnWindows2000)
{
    EXPECT_EQ("5.0 type 1 'Service Pack 4': XP 0, 2003 SP1 0", Probe(L"win2k"));
}

TEST_F(WindowsVersionTest, IsXpOnXp)
{
    EXPECT_EQ("5.1 type 1 'Service Pack 3': XP 1, 2003 SP1 0", Probe(L"winxp"));
}

TEST_F(WindowsVersionTest, IsXpOnTheXpThatSharesItsNumberWithServer2003)
{
    EXPECT_EQ("5.2 type 1 'Service Pack 2': XP 1, 2003 SP1 0", Probe(L"winxp64"));
}

TEST_F(WindowsVersionTest, IsServer2003WithAServicePackOnThatServer)
{
    EXPECT_EQ("5.2 type 3 'Service Pack 2': XP 0, 2003 SP1 1", Probe(L"win2003"));
}

TEST_F(WindowsVersionTest, IsLaterThanServer2003OnWindows10)
{
    EXPECT_EQ("6.2 type 1 '': XP 0, 2003 SP1 1", Probe(L"win10")) << "10 is told to programs without a manifest as 6.2";
}

TEST_F(WindowsVersionSimulation, FollowsFamilyMemberAndServicePack)
{
    struct Row {
        Answer answer;
        int xp;
        int server2003Sp1;
        const char* why;
    };
    constexpr Row kRows[] = {
        {{5, 2, 3, L"", TRUE}, 0, 0, "Server 2003 without a service pack"},
        {{5, 2, 3, L"Service Pack 1", TRUE}, 0, 1, "Server 2003 with the first one"},
        {{5, 2, 3, L"v.1184", TRUE}, 0, 1, "any text counts as a service pack"},
        {{5, 2, 2, L"", TRUE}, 0, 0, "a domain controller is a server"},
        {{5, 2, 2, L"Service Pack 2", TRUE}, 0, 1, "a domain controller is a server"},
        {{5, 2, 1, L"", TRUE}, 1, 0, "64-bit XP without a service pack"},
        {{5, 2, 1, L"Service Pack 2", TRUE}, 1, 0, "64-bit XP with a service pack"},
        {{5, 1, 1, L"", TRUE}, 1, 0, "XP without a service pack"},
        {{5, 1, 3, L"Service Pack 1", TRUE}, 1, 0, "the product type of 5.1 does not matter"},
        {{5, 0, 3, L"Service Pack 4", TRUE}, 0, 0, "a server of Windows 2000"},
        {{5, 3, 1, L"", TRUE}, 0, 1, "a member after Server 2003"},
        {{4, 1, 1, L"", TRUE}, 0, 1, "another family, though older"},
        {{4, 2, 1, L"", TRUE}, 0, 1, "another family, though older"},
        {{6, 1, 1, L"", TRUE}, 0, 1, "a later family"},
        {{6, 0, 3, L"", TRUE}, 0, 1, "a later family"},
        {{10, 0, 1, L"", TRUE}, 0, 1, "a later family"},
        {{0, 0, 0, L"", FALSE}, 0, 1, "the query fails"},
        {{5, 1, 1, L"", FALSE}, 0, 1, "the query fails, whatever it leaves"},
        {{5, 0, 1, L"", FALSE}, 0, 1, "the query fails, whatever it leaves"},
    };
    for (const auto& [answer, xp, server2003Sp1, why] : kRows) {
        g_answer = answer;
        EXPECT_EQ(xp, IsRunsOnWinXP()) << why;
        EXPECT_EQ(server2003Sp1, IsRunOnWin2003SP1Up()) << why;
    }
}

TEST_F(WindowsVersionSimulation, IsReadOncePerCall)
{
    g_answer = {5, 1, 1, L"", TRUE};
    EXPECT_EQ(1, IsRunsOnWinXP());
    EXPECT_EQ(1, g_queries);
    g_answer = {6, 1, 1, L"", TRUE};
    EXPECT_EQ(0, IsRunsOnWinXP());
    EXPECT_EQ(2, g_queries);
    EXPECT_EQ(1, IsRunOnWin2003SP1Up());
    EXPECT_EQ(3, g_queries);
    g_answer = {5, 1, 1, L"", TRUE};
    EXPECT_EQ(0, IsRunOnWin2003SP1Up());
    EXPECT_EQ(4, g_queries);
}
