// Rows of the deletions and the copies.

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

// A longer path ends the process; kestrovane-cleaner shows that.
constexpr std::size_t kLongestForCleanup = 260; // characters

void Copy(const RunCall& run, const std::wstring& source, const std::wstring& target)
{
    run([&] { DoCopyComponentFile(source, target); });
}

void CopyToDirectory(const RunCall& run, const std::wstring& source, const std::wstring& directory)
{
    run([&] { DoCopyComponentFileToDir(source, directory); });
}

} // namespace

const std::vector<ExportedFunction> kDeletionFunctions = {
    {"DeleteFilesFilter",
     AddressOf(&DeleteFilesFilter),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring directory = ground.tree.Path(L"doomed");
           run([&] { DeleteFilesFilter(directory, L"*"); });
       }},
      {"missing",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring missing = ground.tree.Path(L"missing");
           run([&] { DeleteFilesFilter(missing, L"*"); });
       }}},
     {{"directory", Effect::kChanges,
       [](const CallGround&, const std::wstring& directory) { DeleteFilesFilter(directory, L"*"); }},
      {"filter", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& filter) {
           DeleteFilesFilter(ground.tree.Path(L"doomed"), filter);
       }}}},
    {"DeleteDirectoryRecursive",
     AddressOf(&DeleteDirectoryRecursive),
     Throws::kNothing,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring directory = ground.tree.Path(L"doomed");
           run([&] { DeleteDirectoryRecursive(directory.c_str()); });
       }},
      {"null", [](const CallGround&, const RunCall& run) { run([] { DeleteDirectoryRecursive(nullptr); }); }}},
     {{"directory", Effect::kChanges,
       [](const CallGround&, const std::wstring& directory) { DeleteDirectoryRecursive(directory.c_str()); }}}},
    {"CleanupDirectory",
     AddressOf(&CleanupDirectory),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring directory = ground.tree.Path(L"doomed");
           run([&] { CleanupDirectory(directory); });
       }}},
     {{"directory", Effect::kChanges,
       [](const CallGround&, const std::wstring& directory) {
           if (directory.size() <= kLongestForCleanup) {
               CleanupDirectory(directory);
           }
       }}}},
};

const std::vector<ExportedFunction> kCopyFunctions = {
    {"DoCopyComponentFileToDir",
     AddressOf(&DoCopyComponentFileToDir),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground,
              const RunCall& run) { CopyToDirectory(run, ground.tree.Path(L"a.txt"), ground.tree.Path(L"to")); }},
      {"climbing", [](const CallGround& ground,
                      const RunCall& run) { CopyToDirectory(run, ground.tree.Path(L"a.txt"), LR"(..\to)"); }},
      {"missing", [](const CallGround& ground,
                     const RunCall& run) { CopyToDirectory(run, L"missing", ground.tree.Path(L"to")); }}},
     {{"source", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& source) {
           EXPECT_EQ(0, DoCopyComponentFileToDir(source, ground.tree.Path(L"to")));
       }},
      {"directory", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& directory) {
           DoCopyComponentFileToDir(ground.tree.Path(L"a.txt"), directory);
       }}}},
    {"DoCopyComponentFile",
     AddressOf(&DoCopyComponentFile),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground,
              const RunCall& run) { Copy(run, ground.tree.Path(L"a.txt"), ground.tree.Path(LR"(as\b.txt)")); }},
      {"climbing",
       [](const CallGround& ground, const RunCall& run) { Copy(run, ground.tree.Path(L"a.txt"), LR"(..\as\b.txt)"); }},
      {"below a file",
       [](const CallGround& ground, const RunCall& run) {
           Copy(run, ground.tree.Path(L"a.txt"), ground.tree.Path(LR"(a.txt\b)"));
       }}},
     {{"source", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& source) {
           EXPECT_EQ(0, DoCopyComponentFile(source, ground.tree.Path(LR"(to\a)")));
       }},
      {"target", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& target) {
           DoCopyComponentFile(ground.tree.Path(L"a.txt"), target);
       }}}},
};
