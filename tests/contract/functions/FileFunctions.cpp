// Rows of the checks, the creation of directories and the listings.

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

std::string Narrowed(const std::wstring& string)
{
    return {string.begin(), string.end()};
}

void Create(const RunCall& run, const std::wstring& path)
{
    run([&] { RecursivelyCreateDirectory(path); });
}

void Check(const RunCall& run, const std::wstring& path)
{
    run([&] { isDirectoryExists(path); });
}

} // namespace

const std::vector<ExportedFunction> kFileFunctions = {
    {"isDirectoryExists",
     AddressOf(&isDirectoryExists),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground, const RunCall& run) { Check(run, ground.tree.Root()); }},
      {"relative", [](const CallGround&, const RunCall& run) { Check(run, LR"(..\..)"); }},
      {"missing", [](const CallGround& ground, const RunCall& run) { Check(run, ground.tree.Path(L"missing")); }},
      {"a file", [](const CallGround& ground, const RunCall& run) { Check(run, ground.tree.Path(L"a.txt")); }},
      {"rejected", [](const CallGround&, const RunCall& run) { Check(run, LR"(..\a*)"); }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { isDirectoryExists(path); }}}},
    {"isDirectoryReadWritable",
     AddressOf(&isDirectoryReadWritable),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground,
              const RunCall& run) { run([&] { isDirectoryReadWritable(ground.tree.Root()); }); }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { isDirectoryReadWritable(path); }}}},
    {"RecursivelyCreateDirectory",
     AddressOf(&RecursivelyCreateDirectory),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground, const RunCall& run) { Create(run, ground.tree.Path(LR"(new\a\b)")); }},
      {"relative", [](const CallGround&, const RunCall& run) { Create(run, LR"(new\a)"); }},
      {"climbing", [](const CallGround&, const RunCall& run) { Create(run, LR"(..\new)"); }},
      {"below a file",
       [](const CallGround& ground, const RunCall& run) { Create(run, ground.tree.Path(LR"(a.txt\b)")); }},
      {"a share", [](const CallGround&, const RunCall& run) { Create(run, LR"(\\alpha\missing\a)"); }},
      {"rejected", [](const CallGround&, const RunCall& run) { Create(run, L"a?b"); }}},
     {{"path", Effect::kChanges,
       [](const CallGround&, const std::wstring& path) { RecursivelyCreateDirectory(path); }}}},
    {"isFileExists",
     AddressOf(&isFileExists),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { isFileExists(LR"(..\..\..\a.txt)"); }); }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { EXPECT_FALSE(isFileExists(path)); }}}},
    {"IsFileExistsSnap",
     AddressOf(&IsFileExistsSnap),
     Throws::kNothing,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::string path = Narrowed(ground.tree.Path(L"a.txt"));
           run([&] { IsFileExistsSnap(path.data()); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { IsFileExistsSnap(Narrowed(path).data()); }}}},
    {"IsCanReplaceFile",
     AddressOf(&IsCanReplaceFile),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Path(L"a.txt");
           run([&] { IsCanReplaceFile(path); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = string;
           EXPECT_TRUE(IsCanReplaceFile(path)) << "no such file";
           EXPECT_EQ(string, path);
       }}}},
    {"getFileSize",
     AddressOf(&getFileSize),
     Throws::kNothing,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           std::wstring path = ground.tree.Path(L"a.txt");
           run([&] { getFileSize(path); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = string;
           EXPECT_EQ(0, getFileSize(path));
           EXPECT_EQ(string, path);
       }}}},
};

const std::vector<ExportedFunction> kListingFunctions = {
    {"ListFilesFilter",
     AddressOf(&ListFilesFilter),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground,
              const RunCall& run) { run([&] { ListFilesFilter(ground.tree.Root(), L"*", true); }); }},
      {"climbing",
       [](const CallGround&, const RunCall& run) { run([] { ListFilesFilter(LR"(..\..)", L"*", true); }); }},
      {"missing",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring missing = ground.tree.Path(L"missing");
           run([&] { ListFilesFilter(missing, L"*", true); });
       }}},
     {{"directory", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { ListFilesFilter(path, L"*", true); }},
      {"filter", Effect::kReads,
       [](const CallGround& ground, const std::wstring& filter) {
           ListFilesFilter(ground.tree.Root(), filter, false);
       }}}},
    {"ListFilesFilterRecursive",
     AddressOf(&ListFilesFilterRecursive),
     Throws::kBadAlloc,
     {{"", [](const CallGround& ground,
              const RunCall& run) { run([&] { ListFilesFilterRecursive(ground.tree.Root(), L"*", false); }); }},
      {"missing",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring missing = ground.tree.Path(L"missing");
           run([&] { ListFilesFilterRecursive(missing, L"*", false); });
       }}},
     {{"directory", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { ListFilesFilterRecursive(path, L"*", false); }},
      {"filter", Effect::kReads,
       [](const CallGround& ground, const std::wstring& filter) {
           ListFilesFilterRecursive(ground.tree.Root(), filter, true);
       }}}},
    {"ListDirecoriesRecursive",
     AddressOf(&ListDirecoriesRecursive),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround& ground, const RunCall& run) { run([&] { ListDirecoriesRecursive(ground.tree.Root()); }); }},
      {"climbing", [](const CallGround&, const RunCall& run) { run([] { ListDirecoriesRecursive(LR"(..\..)"); }); }}},
     {{"directory", Effect::kReads,
       [](const CallGround&, const std::wstring& path) { ListDirecoriesRecursive(path); }}}},
};
