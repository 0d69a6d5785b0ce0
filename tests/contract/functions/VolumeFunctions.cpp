// Rows of the volumes, the snapshot paths, the Windows versions and the owner change.

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

constexpr const wchar_t* kAccount = L"SYSTEM";

} // namespace

const std::vector<ExportedFunction> kVolumeFunctions = {
    {"IsVolume",
     AddressOf(&IsVolume),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { IsVolume(L"C:"); }); }},
      {"no volume",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Root();
           run([&] { IsVolume(std::move(path)); });
       }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { IsVolume(path); }}}},
    {"GetUniqueVolumeNameForPath",
     AddressOf(&GetUniqueVolumeNameForPath),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Root();
           run([&] { GetUniqueVolumeNameForPath(std::move(path)); });
       }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { GetUniqueVolumeNameForPath(path); }}}},
    {"GetUniqueVolumeNameForPathNoThrow",
     AddressOf(&GetUniqueVolumeNameForPathNoThrow),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Root();
           std::wstring name;
           run([&] { GetUniqueVolumeNameForPathNoThrow(std::move(path), name); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           std::wstring name = L"before";
           const bool found = GetUniqueVolumeNameForPathNoThrow(path, name);
           EXPECT_EQ(!found, name == L"before");
       }}}},
    {"GetNQUniqueVolumeNameForPath",
     AddressOf(&GetNQUniqueVolumeNameForPath),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Root();
           run([&] { GetNQUniqueVolumeNameForPath(std::move(path)); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { GetNQUniqueVolumeNameForPath(path); }}}},
    {"GetDisplayNameForVolumeNoThrow",
     AddressOf(&GetDisplayNameForVolumeNoThrow),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring volume = GetUniqueVolumeNameForPath(L"C:");
           std::wstring name;
           run([&] { GetDisplayNameForVolumeNoThrow(std::move(volume), name); });
       }}},
     {{"volumeName", Effect::kReads,
       [](const CallGround&, const std::wstring& volume) {
           std::wstring name = L"before";
           EXPECT_FALSE(GetDisplayNameForVolumeNoThrow(volume, name));
           EXPECT_EQ(L"before", name);
       }}}},
    {"EnumVolumes",
     AddressOf(&EnumVolumes),
     Throws::kNothingAtAll,
     {{"", [](const CallGround&, const RunCall& run) { run([] { EnumVolumes(); }); }}},
     {}},
    {"GetVolumeMaxFreeSpace",
     AddressOf(&GetVolumeMaxFreeSpace),
     Throws::kNothingAtAll,
     {{"", [](const CallGround&, const RunCall& run) { run([] { GetVolumeMaxFreeSpace(); }); }}},
     {}},
    {"GetAvailableVolumeSpace",
     AddressOf(&GetAvailableVolumeSpace),
     Throws::kNothing,
     {{"", [](const CallGround& ground,
              const RunCall& run) { run([&] { GetAvailableVolumeSpace(ground.tree.Root()); }); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { EXPECT_LE(0.0, GetAvailableVolumeSpace(path)); }}}},
    {"GetTotalVolumeSpace",
     AddressOf(&GetTotalVolumeSpace),
     Throws::kNothing,
     {{"",
       [](const CallGround& ground, const RunCall& run) { run([&] { GetTotalVolumeSpace(ground.tree.Root()); }); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { EXPECT_LE(0.0, GetTotalVolumeSpace(path)); }}}},
    {"BuildSnapshotFilePath",
     AddressOf(&BuildSnapshotFilePath),
     Throws::kBadAllocOrAtlException,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring path = ground.tree.Path(L"a.txt");
           CComBSTR result;
           std::map<std::wstring, std::wstring> snapshots;
           run([&] { BuildSnapshotFilePath(path.c_str(), result, snapshots); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           CComBSTR result;
           std::map<std::wstring, std::wstring> snapshots;
           EXPECT_TRUE(BuildSnapshotFilePath(path.c_str(), result, snapshots));
           EXPECT_EQ(1U, snapshots.size());
       }}}},
    {"IsRunsOnWinXP",
     AddressOf(&IsRunsOnWinXP),
     Throws::kNothing,
     {{"", [](const CallGround&, const RunCall& run) { run([] { IsRunsOnWinXP(); }); }}},
     {}},
    {"IsRunOnWin2003SP1Up",
     AddressOf(&IsRunOnWin2003SP1Up),
     Throws::kNothing,
     {{"", [](const CallGround&, const RunCall& run) { run([] { IsRunOnWin2003SP1Up(); }); }}},
     {}},
};

const std::vector<ExportedFunction> kOwnerFunctions = {
    {"ChangeObjectOwner",
     AddressOf(&ChangeObjectOwner),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Path(L"sub");
           std::wstring account = kAccount;
           run([&] { ChangeObjectOwner(std::move(path), std::move(account)); });
       }},
      {"missing",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Path(L"missing");
           std::wstring account = kAccount;
           run([&] { ChangeObjectOwner(std::move(path), std::move(account)); });
       }}},
     {{"path", Effect::kChanges,
       [](const CallGround&, const std::wstring& path) { ChangeObjectOwner(path, kAccount); }},
      {"account", Effect::kReads,
       [](const CallGround& ground, const std::wstring& account) {
           ChangeObjectOwner(ground.tree.Path(L"a.txt"), account);
       }}}},
};
