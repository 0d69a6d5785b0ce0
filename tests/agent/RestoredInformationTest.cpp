// What comes back besides the content: attributes, times and security descriptors; and what a replaced file keeps.

#include "tests/support/AgentTest.h"

class RestoredInformationTest : public AgentTest {
protected:
    static constexpr FILETIME kCreated = {0, 28500000};
    static constexpr FILETIME kModified = {1230000000, 29000000};
    static constexpr DWORD kAll =
        FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM | FILE_ATTRIBUTE_ARCHIVE;

    static DWORD Attributes(const std::wstring& path) { return ::GetFileAttributesW(path.c_str()) & kAll; }

    static void SetTimes(const std::wstring& path)
    {
        const HANDLE file = ::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ | FILE_SHARE_WRITE,
                                          nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr);
        EXPECT_TRUE(::SetFileTime(file, &kCreated, nullptr, &kModified)) << "error " << ::GetLastError();
        ::CloseHandle(file);
    }

    static ULONGLONG Modified(const std::wstring& path)
    {
        WIN32_FILE_ATTRIBUTE_DATA data = {};
        EXPECT_TRUE(::GetFileAttributesExW(path.c_str(), GetFileExInfoStandard, &data)) << Utf8(path);
        return (static_cast<ULONGLONG>(data.ftLastWriteTime.dwHighDateTime) << 32U) |
               data.ftLastWriteTime.dwLowDateTime;
    }

    static constexpr ULONGLONG kModifiedNumber = (29000000ULL << 32U) | 1230000000U;
    std::wstring other = store.Path(L"other");
};

TEST_F(RestoredInformationTest, AttributesOfNewAndReplacedFilesComeBack)
{
    const std::vector<DWORD> attributes = {0,
                                           FILE_ATTRIBUTE_READONLY,
                                           FILE_ATTRIBUTE_HIDDEN,
                                           FILE_ATTRIBUTE_SYSTEM,
                                           FILE_ATTRIBUTE_ARCHIVE | FILE_ATTRIBUTE_HIDDEN,
                                           kAll};
    std::vector<DWORD> before;
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        const std::wstring path = live.File(L"f" + std::to_wstring(i), "content");
        ::SetFileAttributesW(path.c_str(), attributes[i] == 0 ? FILE_ATTRIBUTE_NORMAL : attributes[i]);
        before.push_back(Attributes(path));
    }
    MakeBackup();
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        const std::wstring path = live.Path(L"f" + std::to_wstring(i));
        ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        WriteFileBytes(path, "damaged");
        ::SetFileAttributesW(path.c_str(), i % 2 == 0 ? kAll : FILE_ATTRIBUTE_NORMAL);
    }
    RunForJson({L"restore", Backup()}, 0);
    RunForJson({L"restore", Backup(), L"--to", other}, 0);
    for (std::size_t i = 0; i < attributes.size(); ++i) {
        for (const std::wstring& root : {live.Root(), other}) {
            const std::wstring path = root + L"\\f" + std::to_wstring(i);
            EXPECT_EQ(before[i], Attributes(path)) << Utf8(path);
            EXPECT_EQ("content", ReadFileBytes(path)) << Utf8(path);
            ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
        }
    }
}

TEST_F(RestoredInformationTest, TimesOfFilesAndDirectoriesComeBack)
{
    const StringList paths = {L"a.txt", LR"(sub\deeper\c.txt)", LR"(sub\deeper)", L"sub"};
    live.Files({L"a.txt", LR"(sub\deeper\c.txt)"});
    for (const std::wstring& path : paths) {
        SetTimes(live.Path(path));
    }
    MakeBackup();
    live.File(LR"(sub\deeper\c.txt)", "damaged");
    live.File(LR"(sub\deeper\another.txt)");
    RunForJson({L"restore", Backup()}, 0);
    RunForJson({L"restore", Backup(), L"--to", other}, 0);
    for (const std::wstring& path : paths) {
        EXPECT_EQ(kModifiedNumber, Modified(live.Path(path))) << Utf8(path);
        EXPECT_EQ(kModifiedNumber, Modified(other + L"\\" + path)) << Utf8(path);
    }
}

TEST_F(RestoredInformationTest, TimesOfTheOriginalDirectoryItselfComeBack)
{
    live.File(LR"(top\a.txt)");
    SetTimes(live.Path(L"top"));
    RunForJson({L"backup", live.Path(L"top"), Backup()}, 0);
    const std::wstring elsewhere = store.Path(L"elsewhere");
    live.File(LR"(top\a.txt)", "damaged");
    live.File(LR"(top\another.txt)");
    RunForJson({L"restore", Backup()}, 0);
    RunForJson({L"restore", Backup(), L"--to", elsewhere}, 0);
    RunForJson({L"restore", Backup(), L"--map", live.Path(L"top") + L"=" + store.Path(L"mapped")}, 0);
    EXPECT_EQ(kModifiedNumber, Modified(live.Path(L"top")));
    EXPECT_EQ(kModifiedNumber, Modified(elsewhere));
    EXPECT_EQ(kModifiedNumber, Modified(store.Path(L"mapped")));
}

TEST_F(RestoredInformationTest, DirectoriesThatAreThereKeepTheirTimesWhereNothingMayBeOverwritten)
{
    live.File(LR"(sub\a.txt)");
    SetTimes(live.Path(L"sub"));
    MakeBackup();
    live.File(LR"(sub\b.txt)");
    const ULONGLONG before = Modified(live.Path(L"sub"));
    RunForJson({L"restore", Backup(), L"--overwrite", L"never"}, 0);
    EXPECT_EQ(before, Modified(live.Path(L"sub")));
}

TEST_F(RestoredInformationTest, AReadOnlyFileIsReplacedAndNotCalledInUse)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    const std::wstring path = live.File(L"a.txt", "damaged");
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("hello", ReadFileBytes(path));
}

TEST_F(RestoredInformationTest, AReadOnlyFileWhoseReplacementFailsStaysReadOnly)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    WriteFileBytes(Copy(L"a.txt"), "HELLO");
    const std::wstring path = live.File(L"a.txt", "live");
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_READONLY);
    const auto report = RunForJson({L"restore", Backup()}, 1);
    EXPECT_EQ(Utf8(Copy(L"a.txt")), report["failures"][0]["file"]);
    EXPECT_EQ("live", ReadFileBytes(path));
    EXPECT_EQ(FILE_ATTRIBUTE_READONLY, Attributes(path) & FILE_ATTRIBUTE_READONLY);
    ::SetFileAttributesW(path.c_str(), FILE_ATTRIBUTE_NORMAL);
}

// The security descriptor of a file as a string of bytes.
std::string Descriptor(const std::wstring& path)
{
    std::string descriptor(4096, '\0');
    DWORD size = 0;
    EXPECT_TRUE(::GetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.data(),
                                   static_cast<DWORD>(descriptor.size()), &size))
        << Utf8(path);
    descriptor.resize(size);
    return descriptor;
}

TEST_F(RestoredInformationTest, AReplacedFileKeepsItsDacl)
{
    live.File(L"a.txt", "hello");
    live.File(L"ordinary.txt", "hello");
    MakeBackup();
    const std::wstring path = live.File(L"a.txt", "damaged");
    RunForJson({L"own", path, L"Everyone", L"--yes"}, 0);
    const std::string before = Descriptor(path);
    ASSERT_NE(Descriptor(live.Path(L"ordinary.txt")), before);
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("hello", ReadFileBytes(path));
    EXPECT_EQ(before, Descriptor(path));
}

TEST_F(RestoredInformationTest, SecurityRestoresTheDescriptorOfTheManifest)
{
    const std::wstring path = live.File(L"a.txt", "hello");
    RunForJson({L"own", path, L"Everyone", L"--yes"}, 0);
    const std::string before = Descriptor(path);
    RunForJson({L"backup", live.Root(), Backup(), L"--security"}, 0);
    RunForJson({L"restore", Backup(), L"--to", other + L"1"}, 0);
    EXPECT_NE(before, Descriptor(other + L"1\\a.txt"));
    RunForJson({L"restore", Backup(), L"--to", other + L"2", L"--security"}, 0);
    EXPECT_EQ(before, Descriptor(other + L"2\\a.txt"));
}

TEST_F(RestoredInformationTest, SecurityThatTheBackupDoesNotHoldIsDoneInPart)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    EXPECT_EQ(1, RunForJson({L"restore", Backup(), L"--to", other, L"--security"}, 3)["withoutSecurity"]);
}

using RestoreDryRunTest = RestoredInformationTest;

TEST_F(RestoreDryRunTest, SaysWhatWouldBeOverwritten)
{
    MakeLiveTree();
    MakeBackup();
    ::DeleteFileW(live.Path(L"block.bin").c_str());
    const auto report = RunForJson({L"restore", Backup(), L"--dry-run"}, 0);
    EXPECT_EQ(5, report["overwritten"]);
    for (const auto& step : report["plan"]) {
        EXPECT_EQ(step["target"] != Utf8(live.Path(L"block.bin")), step["overwrites"].get<bool>());
    }
    EXPECT_FALSE(PathExists(live.Path(L"block.bin")));
}

TEST_F(RestoreDryRunTest, SaysWhatIsMissingInTheBackup)
{
    MakeLiveTree();
    MakeBackup();
    ::DeleteFileW(Copy(L"a.txt").c_str());
    WriteFileBytes(Copy(L"block.bin"), "cut");
    const auto report = RunForJson({L"restore", Backup(), L"--dry-run"}, 3);
    EXPECT_EQ(2, report["failed"]);
    EXPECT_EQ(4U, report["plan"].size());
}

TEST_F(RestoreDryRunTest, SaysWhatWouldNotFit)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    Json manifest = Manifest();
    manifest["files"][0]["size"] = 1000000000000000;
    WriteFileBytes(ManifestPath(), manifest.dump());
    const auto report = RunForJson({L"restore", Backup(), L"--to", L"C:\\kestrovane-too-large", L"--dry-run"}, 1);
    EXPECT_NE(std::string::npos, report["failures"].dump().find("do not fit"));
    EXPECT_EQ("C:\\", report["failures"].back()["file"]);
}
