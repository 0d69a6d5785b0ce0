// A backup that is damaged at random bytes.

#include "tests/support/AgentTest.h"

#include <cstdlib>
#include <random>

class DamagedBackupTest : public AgentTest {
protected:
    static int Rounds()
    {
        constexpr int kEveryRun = 12;
        const char* const rounds = std::getenv("KESTROVANE_DAMAGES");
        return rounds == nullptr ? kEveryRun : std::atoi(rounds);
    }

    // One byte of the file becomes another one.
    static void Damage(const std::wstring& path, std::mt19937& random)
    {
        std::string bytes = ReadFileBytes(path);
        const std::size_t place = random() % bytes.size();
        bytes[place] = static_cast<char>(bytes[place] ^ static_cast<char>(1U + random() % 255U));
        WriteFileBytes(path, bytes);
    }

    // Every file that was restored is whole, and no other file is there.
    void ExpectOnlyWholeFiles(const std::wstring& directory, const std::wstring& damaged) const
    {
        for (const auto& [name, bytes] : LiveFiles()) {
            const std::wstring path = directory + L"\\" + name;
            if (PathExists(path)) {
                EXPECT_EQ(bytes, ReadFileBytes(path)) << Utf8(name);
                EXPECT_NE(name, damaged) << "a damaged file was placed";
            }
        }
    }

    void RunRound(const std::wstring& name, int round)
    {
        const std::wstring restored = store.Path(L"restored" + std::to_wstring(round));
        const AgentResult verified = RunAgent({L"verify", Backup()});
        EXPECT_TRUE(verified.exitCode == 1 || verified.exitCode == 3) << verified.exitCode;
        EXPECT_NE(std::string::npos, verified.messages.find(Utf8(name))) << verified.messages;
        const AgentResult result = RunAgent({L"restore", Backup(), L"--to", restored});
        EXPECT_TRUE(result.exitCode == 1 || result.exitCode == 3) << result.exitCode;
        EXPECT_NE(std::string::npos, result.messages.find(Utf8(name))) << result.messages;
        ExpectOnlyWholeFiles(restored, name);
    }
};

TEST_F(DamagedBackupTest, IsReportedByVerifyAndRestoreAndNoDamagedFileIsPlaced)
{
    const unsigned seed = std::random_device()();
    std::mt19937 random(seed);
    MakeLiveTree();
    MakeBackup();
    std::vector<std::wstring> names = {L"kestrovane-manifest.json"};
    for (const auto& [name, bytes] : LiveFiles()) {
        if (!bytes.empty()) {
            names.push_back(name);
        }
    }
    for (int round = 0; round < Rounds(); ++round) {
        const std::wstring& name = names[static_cast<std::size_t>(round) % names.size()];
        SCOPED_TRACE("seed " + std::to_string(seed) + ", round " + std::to_string(round) + ", " + Utf8(name));
        const std::string whole = ReadFileBytes(Copy(name));
        Damage(Copy(name), random);
        RunRound(name, round);
        WriteFileBytes(Copy(name), whole);
    }
    RunForJson({L"verify", Backup()}, 0);
    std::printf("damaged backup: %d bytes, seed %u, %s\n", Rounds(), seed,
                HasFailure() ? "FINDINGS" : "each reported, no damaged file placed");
}

TEST_F(DamagedBackupTest, ThatIsTheNewestVersionIsNoBasisForTheNextOne)
{
    live.File(L"a.txt", "hello");
    MakeBackup();
    std::string manifest = ReadFileBytes(ManifestPath());
    char& digit = manifest[manifest.find("2cf24dba")]; // the digest of "hello" begins so
    digit = '3';
    WriteFileBytes(ManifestPath(), manifest);
    EXPECT_EQ(0, RunForJson({L"backup", live.Root(), Backup()}, 0)["unchanged"]);
    RunForJson({L"verify", Backup()}, 0);
}
