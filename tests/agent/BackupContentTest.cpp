// What a backup holds: attributes, times, security descriptors, selections, names that differ only in case, files in
// use.

#include "tests/support/AgentOutside.h"
#include "tests/support/AgentTest.h"
#include "tests/support/FileLockerProcess.h"

#include <memory>

class BackupContentTest : public AgentTest {
protected:
    Json BackUp(std::vector<std::wstring> options = {}, DWORD exitCode = 0) const
    {
        options.insert(options.begin(), {L"backup", live.Root(), Backup()});
        return RunForJson(options, exitCode);
    }

    Json FileEntry(const std::string& name) const { return EntryOf("files", name); }
    Json DirectoryEntry(const std::string& name) const { return EntryOf("directories", name); }

private:
    Json EntryOf(const char* list, const std::string& name) const
    {
        const Json manifest = Manifest();
        for (const Json& entry : manifest[list]) {
            if (entry["name"] == name) {
                return entry;
            }
        }
        return {};
    }
};

namespace {

constexpr std::int64_t kLongAgo = 120000000000000000; // 100-nanosecond steps since 1601

void SetModified(const std::wstring& path, std::int64_t time)
{
    const HANDLE file = ::CreateFileW(path.c_str(), FILE_WRITE_ATTRIBUTES, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                      FILE_FLAG_BACKUP_SEMANTICS, nullptr);
    const FILETIME written = {static_cast<DWORD>(time & 0xFFFFFFFF), static_cast<DWORD>(time >> 32)};
    EXPECT_TRUE(::SetFileTime(file, nullptr, nullptr, &written)) << ::GetLastError();
    ::CloseHandle(file);
}

} // namespace

TEST_F(BackupContentTest, AttributesAndTimesOfFilesAndDirectoriesAreInTheManifest)
{
    const std::wstring file = live.File(LR"(sub\a.txt)");
    SetModified(file, kLongAgo);
    SetModified(live.Path(L"sub"), kLongAgo + 10000000);
    ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM);
    BackUp();
    const auto entry = FileEntry("sub\\a.txt");
    EXPECT_EQ(kLongAgo, entry["modified"]);
    EXPECT_LT(0, entry["created"].get<std::int64_t>());
    EXPECT_EQ(FILE_ATTRIBUTE_READONLY | FILE_ATTRIBUTE_HIDDEN | FILE_ATTRIBUTE_SYSTEM,
              entry["attributes"].get<DWORD>() & 7U);
    EXPECT_EQ(kLongAgo + 10000000, DirectoryEntry("sub")["modified"]);
    EXPECT_EQ(FILE_ATTRIBUTE_DIRECTORY, DirectoryEntry("sub")["attributes"]);
    EXPECT_FALSE(entry.contains("security"));
}

TEST_F(BackupContentTest, SecurityDescriptorsAreStoredWhereAsked)
{
    live.File(LR"(sub\a.txt)");
    BackUp({L"--security"});
    EXPECT_EQ(0U, FileEntry("sub\\a.txt")["security"].get<std::string>().find("O:S-1-"));
    EXPECT_NE(std::string::npos, DirectoryEntry("sub")["security"].get<std::string>().find("D:("));
}

TEST_F(BackupContentTest, FiltersAndExcludesMakeASelection)
{
    live.Files({L"a.txt", L"b.log", L"c.tmp", LR"(sub\d.txt)", LR"(cache\e.txt)"});
    const auto report = BackUp({L"--filter", L"*.TXT", L"--filter", L"*.log", L"--exclude", L"cache"});
    EXPECT_EQ(3, report["files"]);
    EXPECT_FALSE(PathExists(Copy(L"cache")));
    const auto manifest = Manifest();
    EXPECT_TRUE(manifest["selection"].get<bool>());
    EXPECT_EQ((std::vector<std::string>{"*.TXT", "*.log"}), manifest["filters"]);
    EXPECT_EQ((std::vector<std::string>{"cache"}), manifest["excludes"]);
}

TEST_F(BackupContentTest, APatternThatMatchesNothingWritesNoVersion)
{
    live.File(L"a.txt");
    BackUp();
    const auto report = BackUp({L"--filter", L"*.none"}, 3);
    EXPECT_EQ(1U, report["notes"].size());
    EXPECT_EQ(1U, Versions().size());
}

TEST_F(BackupContentTest, NamesThatDifferOnlyInCaseAreTwoFiles)
{
    // Another system creates them: this one would open the first for the second.
    CreateFromOutside(live.Root(), "name.txt", "lower case");
    CreateFromOutside(live.Root(), "NAME.txt", "UPPER CASE");
    const auto report = BackUp();
    EXPECT_EQ(2, report["files"]);
    const auto upper = FileEntry("NAME.txt");
    const auto lower = FileEntry("name.txt");
    EXPECT_FALSE(upper.contains("stored"));
    ASSERT_EQ("name.txt~2", lower["stored"]);
    EXPECT_EQ("UPPER CASE", ReadFileBytes(Copy(L"NAME.txt")));
    EXPECT_EQ("lower case", ReadFileBytes(Copy(L"name.txt~2")));
    EXPECT_EQ(2, RunForJson({L"verify", Backup()}, 0)["verified"]);
}

TEST_F(BackupContentTest, FilesWithTheAgentsOwnNamesAreOrdinaryFiles)
{
    live.File(L"kestrovane-manifest.json", "not a manifest");
    live.File(LR"(sub\kestrovane-manifest.json)", "nor is this");
    EXPECT_EQ(2, BackUp()["files"]);
    EXPECT_EQ("kestrovane-manifest.json~2", FileEntry("kestrovane-manifest.json")["stored"]);
    ::DeleteFileW(live.Path(L"kestrovane-manifest.json").c_str());
    RunForJson({L"restore", Backup()}, 0);
    EXPECT_EQ("not a manifest", ReadFileBytes(live.Path(L"kestrovane-manifest.json")));
}

TEST_F(BackupContentTest, AFileThatAnotherProcessWritesIsCopiedWithSharing)
{
    const std::wstring log = live.File(L"service.log", "first line\n");
    const FileLockerProcess service(log, GENERIC_WRITE, FILE_SHARE_READ);
    const auto report = BackUp();
    EXPECT_EQ(1, report["copiedInUse"]);
    EXPECT_EQ("first line\n", ReadFileBytes(Copy(L"service.log")));
}

TEST_F(BackupContentTest, AFileInUseIsTriedAgain)
{
    live.File(L"free.txt");
    const std::wstring busy = live.File(L"busy.txt", "busy");
    auto held = std::make_unique<LockedFile>(busy, GENERIC_READ, 0);
    AgentProcess agent({L"backup", live.Root(), Backup(), L"--retry", L"100", L"--wait", L"1"});
    while (Versions().empty() || !PathExists(Copy(L"free.txt"))) {
        ::Sleep(1);
    }
    held.reset();
    EXPECT_EQ(0U, agent.Wait().exitCode);
    EXPECT_EQ("busy", ReadFileBytes(Copy(L"busy.txt")));
}

TEST_F(BackupContentTest, PathsThatAreTooLongAreOneMessageForTheirDirectory)
{
    live.File(L"short.txt");
    const std::wstring directory = std::wstring(80, L'd') + L"\\" + std::wstring(80, L'e');
    live.File(directory + L"\\" + std::wstring(100, L'f') + L"1");
    live.File(directory + L"\\" + std::wstring(100, L'f') + L"2");
    live.File(directory + L"\\fits");
    const auto report = BackUp({}, 3);
    ASSERT_EQ(1U, report["failures"].size());
    EXPECT_EQ(Utf8(live.Path(directory)), report["failures"][0]["file"]);
    EXPECT_EQ(2, report["failed"]);
    EXPECT_EQ(2, report["files"]);
    EXPECT_FALSE(Manifest()["complete"].get<bool>());
}

TEST_F(BackupContentTest, ANameThatNoWindowsVolumeCanHoldIsNamed)
{
    live.File(L"good.txt");
    CreateFromOutside(live.Root(), "nul.txt", "x");
    const auto report = BackUp({}, 3);
    EXPECT_EQ(Utf8(live.Path(L"nul.txt")), report["failures"][0]["file"]);
    EXPECT_NE(std::string::npos, report["failures"][0]["reason"].get<std::string>().find("the name of a device"));
    EXPECT_EQ(1, report["files"]);
}

TEST_F(BackupContentTest, AManifestThatCannotBeWrittenIsNothingDone)
{
    const std::wstring busy = live.File(L"busy.txt");
    auto held = std::make_unique<LockedFile>(busy, GENERIC_READ, 0); // keeps the agent from the manifest
    AgentProcess agent({L"--json", L"backup", live.Root(), Backup(), L"--retry", L"100", L"--wait", L"1"});
    while (Versions().empty()) {
        ::Sleep(1);
    }
    // A directory takes the place of the file that would become the manifest.
    ::CreateDirectoryW(Copy(L"kestrovane-manifest.json.new").c_str(), nullptr);
    held.reset();
    const AgentResult result = agent.Wait();
    EXPECT_EQ(1U, result.exitCode) << result.output;
    EXPECT_NE(std::string::npos, result.output.find("kestrovane-manifest.json"));
}

TEST_F(BackupContentTest, ALinkToADirectoryIsListedAsNotBackedUp)
{
    live.File(L"a.txt");
    store.File(L"elsewhere\\b.txt");
    LinkFromOutside(store.Path(L"elsewhere"), live.Path(L"link"));
    const auto report = BackUp();
    EXPECT_EQ(1, report["files"]);
    EXPECT_EQ((std::vector<std::string>{Utf8(live.Path(L"link"))}), report["notBackedUp"]);
    EXPECT_EQ((std::vector<std::string>{"link"}), Manifest()["notBackedUp"]);
}

TEST_F(BackupContentTest, AnInterruptLeavesAnIncompleteVersion)
{
    constexpr int kFiles = 1000; // enough to be at work still when the interrupt comes
    for (int i = 0; i < kFiles; ++i) {
        live.File(std::to_wstring(i), "content");
    }
    InterruptWhen(UniquePartOf(live.Root()), "[ -e " + OutsidePath(store.Root()) + "/backup/*Z/0 ]");
    AgentProcess agent({L"--json", L"backup", live.Root(), Backup()});
    const AgentResult result = agent.Wait();
    EXPECT_EQ(130U, result.exitCode);
    EXPECT_TRUE(Json::parse(result.output, nullptr, false).value("interrupted", false)) << result.output;
    EXPECT_FALSE(Manifest()["complete"].get<bool>());
    EXPECT_LT(Manifest()["files"].size(), static_cast<std::size_t>(kFiles));
}

TEST_F(BackupContentTest, ADirectoryThatCannotBeCreatedIsOneMessageForItsFiles)
{
    constexpr int kDirectories = 600; // enough to be at work still when the last one is taken
    for (int i = 0; i < kDirectories; ++i) {
        live.Directory(L"d" + std::to_wstring(1000 + i));
    }
    live.Files({L"kept.txt", LR"(last\1)", LR"(last\2)", LR"(last\below\3)"});
    AgentProcess agent({L"--json", L"backup", live.Root(), Backup()});
    while (Versions().empty()) {
        ::Sleep(0);
    }
    WriteFileBytes(Copy(L"last"), "a file in the place of the directory");
    const AgentResult result = agent.Wait();
    EXPECT_EQ(3U, result.exitCode);
    const Json report = Json::parse(result.output, nullptr, false);
    ASSERT_EQ(1U, report["failures"].size()) << result.output;
    EXPECT_EQ(Utf8(Copy(L"last")), report["failures"][0]["file"]);
    EXPECT_EQ(3, report["failed"]);
    EXPECT_EQ(1, report["files"]);
}
