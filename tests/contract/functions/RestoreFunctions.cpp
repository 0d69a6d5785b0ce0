// Rows of the restore mapping and the cache files.

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

using StringMap = std::map<std::wstring, std::wstring>;
using Mappings = std::vector<VSS_ALTERNATE_MAPPING>;

template <typename Function>
void MapSample(const RunCall& run, Function* function)
{
    std::wstring path = LR"(C:\Data\a directory with a long name)";
    std::wstring spec = L"a.txt";
    Mappings mappings = {{LR"(C:\Data)", LR"(D:\Restore)", L"*", true}};
    run([&] { function(path, spec, mappings); });
}

constexpr const wchar_t* kPrefix = L"kvt";

} // namespace

const std::vector<ExportedFunction> kRestoreFunctions = {
    {"IsFileDescMatch",
     AddressOf(&IsFileDescMatch),
     Throws::kAtlException,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring path = LR"(C:\Data)";
           std::wstring spec = L"*.txt";
           run([&] { IsFileDescMatch(path, spec, true, path, spec, false); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = string;
           std::wstring spec = L"*";
           EXPECT_TRUE(IsFileDescMatch(path, spec, false, path, spec, false)) << "a description overlaps itself";
           EXPECT_TRUE(IsFileDescMatch(path, spec, true, path, spec, true));
           EXPECT_EQ(string, path);
       }},
      {"spec", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = L"C:";
           std::wstring spec = string.substr(0, 2000); // two patterns of 32,000 stars take seconds
           EXPECT_TRUE(IsFileDescMatch(path, spec, false, path, spec, false)) << "a description overlaps itself";
       }}}},
    {"MapRestorePath",
     AddressOf(&MapRestorePath),
     Throws::kAtlException,
     {{"", [](const CallGround&, const RunCall& run) { MapSample(run, &MapRestorePath); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = string;
           std::wstring spec = L"a";
           Mappings mappings = {{string, L"D:", L"*", true}};
           EXPECT_TRUE(MapRestorePath(path, spec, mappings)) << "a directory covers itself";
           EXPECT_EQ(L"D:", path);
       }},
      {"alternate location", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = LR"(C:\x)";
           std::wstring spec = L"a";
           Mappings mappings = {{L"C:", string, L"*", true}};
           EXPECT_TRUE(MapRestorePath(path, spec, mappings));
           const std::wstring untilNul(string, 0, string.find(L'\0'));
           EXPECT_EQ(untilNul + LR"(\x)", path) << "up to an embedded NUL";
       }},
      {"spec", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = LR"(C:\x)";
           std::wstring spec = string;
           Mappings mappings = {{L"C:", L"D:", L"*", true}};
           EXPECT_TRUE(MapRestorePath(path, spec, mappings)) << "a star covers everything";
       }}}},
    {"MapRestorePath1",
     AddressOf(&MapRestorePath1),
     Throws::kAtlException,
     {{"", [](const CallGround&, const RunCall& run) { MapSample(run, &MapRestorePath1); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           std::wstring path = string;
           std::wstring spec = L"a";
           Mappings mappings = {{L"C:", string, L"*", false}, {string, L"D:", L"*", true}};
           EXPECT_TRUE(MapRestorePath1(path, spec, mappings)) << "a directory covers itself";
       }}}},
};

const std::vector<ExportedFunction> kCacheFunctions = {
    {"CreateCacheFile",
     AddressOf(&CreateCacheFile),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring live = ground.tree.Path(L"a.txt");
           std::wstring cacheFile;
           std::wstring prefix = kPrefix;
           run([&] { CreateCacheFile(live, cacheFile, std::move(prefix), false, true); });
       }}},
     {{"liveFile", Effect::kChanges,
       [](const CallGround&, const std::wstring& live) {
           std::wstring cacheFile;
           CreateCacheFile(live, cacheFile, kPrefix, false, true);
       }},
      {"prefix", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& prefix) {
           std::wstring cacheFile;
           CreateCacheFile(ground.tree.Path(LR"(sub\b.txt)"), cacheFile, prefix, false, false);
       }}}},
    {"MoveCacheFile",
     AddressOf(&MoveCacheFile),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           const std::wstring cacheFile = ground.tree.Path(L"cache.tmp");
           std::wstring target = ground.tree.Path(LR"(new\live)");
           run([&] { MoveCacheFile(cacheFile, target); });
       }}},
     {{"cacheFile", Effect::kReads,
       [](const CallGround& ground, const std::wstring& cacheFile) {
           std::wstring target = ground.tree.Path(L"a.txt");
           MoveCacheFile(cacheFile, target);
       }},
      {"target", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& string) {
           std::wstring target = string;
           MoveCacheFile(ground.tree.Path(L"cache.tmp"), target);
           EXPECT_EQ(string, target);
       }}}},
    {"CreateCacheFileList",
     AddressOf(&CreateCacheFileList),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           StringList files = {L"FILE|" + ground.tree.Path(L"a.txt"), L"XML|x"};
           std::wstring prefix = kPrefix;
           StringMap map;
           run([&] { CreateCacheFileList(std::move(files), L'|', std::move(prefix), false, map, true); });
       }}},
     {{"files", Effect::kChanges,
       [](const CallGround&, const std::wstring& file) {
           StringMap map;
           CreateCacheFileList({file}, L'\0', kPrefix, false, map, false);
       }},
      {"files, after the separator", Effect::kChanges,
       [](const CallGround&, const std::wstring& file) {
           StringMap map;
           CreateCacheFileList({L"FILE|" + file}, L'|', kPrefix, false, map, false);
       }}}},
    {"DeleteCacheFileList, a map",
     AddressOf(static_cast<bool (*)(StringMap&, wchar_t)>(&DeleteCacheFileList)),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           StringMap map = {{L"live", L"CACHE|" + ground.tree.Path(L"cache.tmp")}};
           run([&] { DeleteCacheFileList(map, L'|'); });
       }}},
     {{"cacheMap", Effect::kChanges,
       [](const CallGround&, const std::wstring& path) {
           StringMap map = {{L"live", path}, {path, L"CACHE|" + path}};
           EXPECT_TRUE(DeleteCacheFileList(map, L'|'));
       }}}},
    {"DeleteCacheFileList, a list",
     AddressOf(static_cast<bool (*)(StringList&)>(&DeleteCacheFileList)),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           StringList paths = {ground.tree.Path(L"cache.tmp")};
           run([&] { DeleteCacheFileList(paths); });
       }}},
     {{"paths", Effect::kChanges,
       [](const CallGround&, const std::wstring& path) {
           StringList paths = {path};
           EXPECT_TRUE(DeleteCacheFileList(paths));
       }}}},
    {"RestoreFileListCache",
     AddressOf(&RestoreFileListCache),
     Throws::kNothingAtAll,
     {{"",
       [](const CallGround& ground, const RunCall& run) {
           StringMap map = {{ground.tree.Path(LR"(to\live)"), ground.tree.Path(L"cache.tmp")}};
           run([&] { RestoreFileListCache(map); });
       }}},
     {{"live file of cacheMap", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& live) {
           StringMap map = {{live, ground.tree.Path(L"cache.tmp")}};
           RestoreFileListCache(map);
       }},
      {"cache file of cacheMap", Effect::kChanges,
       [](const CallGround& ground, const std::wstring& cacheFile) {
           StringMap map = {{ground.tree.Path(LR"(to\live)"), cacheFile}};
           EXPECT_FALSE(RestoreFileListCache(map)) << "no such file";
       }}}},
};
