// The calls of the sweeps.

#include "tests/sweeps/SweepCalls.h"

#include "tests/support/FileTools.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

namespace {

// The directory of temporary files for one scope.
class TemporaryDirectory {
public:
    explicit TemporaryDirectory(const std::wstring& directory) : m_before(kCapacity, L'\0')
    {
        m_before.resize(::GetEnvironmentVariableW(L"TMP", m_before.data(), kCapacity));
        ::SetEnvironmentVariableW(L"TMP", directory.c_str());
    }
    ~TemporaryDirectory() { ::SetEnvironmentVariableW(L"TMP", m_before.empty() ? nullptr : m_before.c_str()); }
    TemporaryDirectory(const TemporaryDirectory&) = delete;
    TemporaryDirectory& operator=(const TemporaryDirectory&) = delete;

private:
    static constexpr DWORD kCapacity = 1024; // characters
    std::wstring m_before;
};

void ExpectTold(const std::wstring& path, const std::vector<std::wstring>& told)
{
    EXPECT_TRUE(std::any_of(told.begin(), told.end(), [&](const std::wstring& name) { return IsEqual(name, path); }))
        << Utf8(path) << " was created, and the caller was not told";
}

// Each cache file of the tree must be one that the caller was told of.
void ExpectCacheFilesAmong(const CallGround& ground, const std::vector<std::wstring>& told)
{
    for (const WIN32_FIND_DATAW& entry : EntriesOf(ground.tree.Root() + LR"(\to)")) {
        ExpectTold(ground.tree.Path(LR"(to\)") + entry.cFileName, told);
    }
    for (const WIN32_FIND_DATAW& entry : EntriesOf(ground.tree.Root())) {
        if (std::wstring(entry.cFileName).starts_with(L"kvt")) {
            ExpectTold(ground.tree.Path(entry.cFileName), told);
        }
    }
}

void CreateTemporaryCacheFile(const CallGround& ground, const RunCall& run)
{
    const TemporaryDirectory temporary(ground.tree.Root());
    const std::wstring live = ground.tree.Path(L"a.txt");
    std::wstring cacheFile;
    run([&] { CreateCacheFile(live, cacheFile, L"kvt", true, true); });
    ExpectCacheFilesAmong(ground, {cacheFile});
}

void CreateEmptyCacheFile(const CallGround& ground, const RunCall& run)
{
    const std::wstring live = ground.tree.Path(LR"(to\live.txt)");
    std::wstring cacheFile;
    run([&] { CreateCacheFile(live, cacheFile, L"kvt", false, false); });
    ExpectCacheFilesAmong(ground, {cacheFile});
}

void CacheTwoFiles(const CallGround& ground, const RunCall& run)
{
    std::vector<std::wstring> files = {ground.tree.Path(L"a.txt"), ground.tree.Path(LR"(to\new.txt)")};
    std::map<std::wstring, std::wstring> map;
    std::wstring prefix = L"kvt";
    run([&] { CreateCacheFileList(std::move(files), L'\0', std::move(prefix), false, map, false); });
    std::vector<std::wstring> told;
    for (const auto& [live, cacheFile] : map) {
        told.push_back(cacheFile);
    }
    ExpectCacheFilesAmong(ground, told);
}

void ChangeOwnersBelowALink(const CallGround& /*ground*/, const RunCall& run)
{
    run([] { ChangeObjectOwner(LR"(C:\kestrovane-links\linked)", L"SYSTEM"); });
}

void CompareDirectories(const CallGround& /*ground*/, const RunCall& run)
{
    std::wstring path = LR"(C:\Data)";
    std::wstring spec = L"*.txt";
    run([&] { IsFileDescMatch(path, spec, false, path, spec, false); });
}

void ExpandTooMuch(const CallGround& /*ground*/, const RunCall& run)
{
    std::wstring tooMuch;
    for (int i = 0; i < 50; ++i) {
        tooMuch += L"%SystemRoot%";
    }
    CComBSTR string(tooMuch.c_str());
    run([&] { DoExpandEnvironmentStrings(string); });
}

const std::multimap<std::string, SampleCall> kMoreCalls = {
    {"CreateCacheFile", {"temporary", &CreateTemporaryCacheFile}},
    {"CreateCacheFile", {"empty", &CreateEmptyCacheFile}},
    {"CreateCacheFileList", {"two files", &CacheTwoFiles}},
    {"ChangeObjectOwner", {"below a link", &ChangeOwnersBelowALink}},
    {"IsFileDescMatch", {"not recursive", &CompareDirectories}},
    {"DoExpandEnvironmentStrings", {"too long", &ExpandTooMuch}},
};

} // namespace

std::vector<SampleCall> SweepCalls(const ExportedFunction& function)
{
    std::vector<SampleCall> calls = function.calls;
    const auto [first, last] = kMoreCalls.equal_range(function.name);
    for (auto more = first; more != last; ++more) {
        calls.push_back(more->second);
    }
    return calls;
}
