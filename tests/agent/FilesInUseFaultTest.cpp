// Files in use, restored while calls of Windows fail, and registrations that are taken back meanwhile.

#include "tests/support/AgentFaultTest.h"
#include "tests/support/PendingList.h"

class FilesInUseFaultTest : public AgentFaultTest {
protected:
    StringList CacheFiles() const
    {
        StringList names;
        for (const WIN32_FIND_DATAW& entry : EntriesOf(live.Root())) {
            if (std::wstring(entry.cFileName) != L"busy") {
                names.push_back(live.Path(entry.cFileName));
            }
        }
        return names;
    }

    void Clear() const
    {
        pending.Write({});
        for (const std::wstring& file : CacheFiles()) {
            ::SetFileAttributesW(file.c_str(), FILE_ATTRIBUTE_NORMAL);
            ::DeleteFileW(file.c_str());
        }
    }

    PendingList pending;
};

TEST_F(FilesInUseFaultTest, WhatIsRegisteredIsWhole)
{
    const std::wstring busy = live.File(L"busy", "backed up");
    MakeBackup();
    WriteFileBytes(busy, "live");
    const LockedFile held(busy, GENERIC_READ, FILE_SHARE_READ);
    Sweep(
        "the restore of a file in use", {L"restore", Backup()}, [this] { Clear(); },
        [&](const AgentResult& result, const std::string& /*failing*/) {
            EXPECT_EQ("live", ReadFileBytes(busy));
            EXPECT_NE(0U, result.exitCode);
            bool isRegistered = false;
            for (const std::wstring& cache : CacheFiles()) {
                const bool replaces = pending.ReplacesAtRestart(cache, busy);
                isRegistered = isRegistered || replaces;
                EXPECT_TRUE(!replaces || ReadFileBytes(cache) == "backed up");
            }
            EXPECT_TRUE(isRegistered || result.exitCode != 4);
        });
}

TEST_F(FilesInUseFaultTest, WhatIsTakenBackIsTakenBackAlone)
{
    const std::wstring busy = live.File(L"busy", "backed up");
    MakeBackup();
    const LockedFile held(busy, GENERIC_READ, FILE_SHARE_READ);
    const std::wstring other = LR"(\??\)" + store.File(L"other");
    Sweep(
        "taking back a registration", {L"pending", L"--cancel", L"--all"},
        [&] {
            Clear();
            RunForJson({L"restore", Backup()}, 4);
            auto entries = pending.Entries();
            entries.emplace_back(other, L"");
            pending.Write(entries);
        },
        [&](const AgentResult& result, const std::string& /*failing*/) {
            EXPECT_TRUE(pending.DeletesAtRestart(store.Path(L"other"))) << "another program's registration is gone";
            EXPECT_TRUE(result.exitCode != 0 || pending.Entries().size() == 1);
        });
}
