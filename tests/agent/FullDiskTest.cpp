// A disk that becomes full at each write of a backup and of a restore. It is simulated: the agent's imports are replaced.

#include "tests/support/AgentTest.h"

#include <string>

class FullDiskTest : public AgentTest {
protected:
    static constexpr int kMostWrites = 200; // a sweep ends long before

    // The operating system's own words, as the agent prints them.
    static std::string DiskFull()
    {
        wchar_t* text = nullptr;
        ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, ERROR_DISK_FULL,
                         LANG_USER_DEFAULT, reinterpret_cast<LPWSTR>(&text), 0, nullptr);
        const UniqueLocalMemory<wchar_t> owner(text);
        const std::string line = Utf8(text);
        return line.substr(0, line.find_first_of(".\r\n"));
    }

    static AgentResult RunOnFullDisk(std::vector<std::wstring> arguments, const std::wstring& below, int writes)
    {
        arguments.insert(arguments.begin(), L"--json");
        ::SetEnvironmentVariableW(L"KESTROVANE_FULL_BELOW", below.c_str());
        ::SetEnvironmentVariableW(L"KESTROVANE_FULL_AFTER", std::to_wstring(writes).c_str());
        AgentProcess agent(arguments, BesideTheAgent(L"kestrovane-full-disk.dll"));
        return agent.Wait();
    }

    // Its exit code is that of a failure, and the true reason is told.
    static Json ExpectFailure(const AgentResult& result)
    {
        const Json report = Json::parse(result.output, nullptr, false);
        EXPECT_TRUE(report.is_object()) << result.output;
        EXPECT_TRUE(result.exitCode == 1 || result.exitCode == 3) << result.exitCode;
        EXPECT_NE(std::string::npos, result.messages.find(DiskFull())) << result.messages;
        EXPECT_LE(1, report.value("failed", 0));
        return report;
    }

    void MakeSmallTree(unsigned seed) const
    {
        live.File(L"a.txt", SampleBytes(100, seed));
        live.File(L"b.bin", SampleBytes(20000, seed));
        live.File(LR"(sub\c.txt)", SampleBytes(300, seed));
    }

    static bool IsOfTree(const std::wstring& directory, unsigned seed)
    {
        return ReadFileBytes(directory + L"\\a.txt") == SampleBytes(100, seed) &&
               ReadFileBytes(directory + L"\\b.bin") == SampleBytes(20000, seed) &&
               ReadFileBytes(directory + LR"(\sub\c.txt)") == SampleBytes(300, seed);
    }
};

TEST_F(FullDiskTest, LeavesTheOlderVersionsOfABackupAsTheyWere)
{
    MakeSmallTree(1);
    MakeBackup();
    const std::wstring first = Backup() + L"\\" + Versions()[0];
    const std::string manifest = ReadFileBytes(first + L"\\kestrovane-manifest.json");
    MakeSmallTree(22);
    int failed = 0;
    for (int writes = 0; writes < kMostWrites; ++writes) {
        SCOPED_TRACE("full after " + std::to_string(writes) + " writes");
        const AgentResult result = RunOnFullDisk({L"backup", live.Root(), Backup()}, store.Root(), writes);
        EXPECT_TRUE(IsOfTree(first, 1));
        EXPECT_EQ(manifest, ReadFileBytes(first + L"\\kestrovane-manifest.json"));
        if (result.exitCode == 0) {
            break;
        }
        ++failed;
        ExpectFailure(result);
        const std::string last = ReadFileBytes(ManifestPath());
        EXPECT_TRUE(last.empty() || Versions().size() == 1U || !Json::parse(last, nullptr, false)["complete"])
            << "a version that is not whole counts as complete";
    }
    EXPECT_LT(5, failed) << "the sweep has not reached the files";
    EXPECT_TRUE(IsOfTree(Copy(L"."), 22));
    RunForJson({L"verify", Backup()}, 0);
    std::printf("full disk in a backup (simulated): at each of %d writes, %s\n", failed,
                HasFailure() ? "FINDINGS" : "older versions unchanged, the true reason told");
}

TEST_F(FullDiskTest, MakesTheVersionUselessWhereTheManifestCannotBeWritten)
{
    live.File(L"a.txt", "hello");
    const AgentResult result =
        RunOnFullDisk({L"backup", live.Root(), Backup()}, store.Root(), 3); // folder, file, bytes
    EXPECT_EQ(1U, result.exitCode);
    const Json report = ExpectFailure(result);
    EXPECT_EQ(Utf8(ManifestPath()), report["failures"][0]["file"]);
    EXPECT_FALSE(PathExists(ManifestPath()));
    EXPECT_FALSE(PathExists(ManifestPath() + L".new"));
}

TEST_F(FullDiskTest, LeavesEachFileOfARestoreTheOldOrTheNewOne)
{
    MakeSmallTree(1);
    MakeBackup();
    int failed = 0;
    for (int writes = 0; writes < kMostWrites; ++writes) {
        SCOPED_TRACE("full after " + std::to_string(writes) + " writes");
        MakeSmallTree(22);
        const AgentResult result = RunOnFullDisk({L"restore", Backup()}, live.Root(), writes);
        for (const auto& [name, size] :
             {std::pair(L"a.txt", 100), std::pair(L"b.bin", 20000), std::pair(LR"(sub\c.txt)", 300)}) {
            const std::string bytes = ReadFileBytes(live.Path(name));
            const auto length = static_cast<std::size_t>(size);
            EXPECT_TRUE(bytes == SampleBytes(length, 1) || bytes == SampleBytes(length, 22)) << Utf8(name);
        }
        EXPECT_EQ(3U, EntriesOf(live.Root()).size()) << "an unfinished file is left";
        if (result.exitCode == 0) {
            break;
        }
        ++failed;
        ExpectFailure(result);
    }
    EXPECT_LE(6, failed) << "a new file and its bytes for each of three files";
    EXPECT_TRUE(IsOfTree(live.Root(), 1));
    std::printf("full disk in a restore (simulated): at each of %d writes, %s\n", failed,
                HasFailure() ? "FINDINGS" : "each file whole, the true reason told");
}
