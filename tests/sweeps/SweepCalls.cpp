// The calls of the sweeps.

#include "tests/sweeps/SweepCalls.h"

#include <Kestrovane.h>

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

void CreateTemporaryCacheFile(const CallGround& ground, const RunCall& run)
{
    const TemporaryDirectory temporary(ground.tree.Root());
    const std::wstring live = ground.tree.Path(L"a.txt");
    std::wstring cacheFile;
    run([&] { CreateCacheFile(live, cacheFile, L"kvt", true, true); });
}

void CreateEmptyCacheFile(const CallGround& ground, const RunCall& run)
{
    const std::wstring live = ground.tree.Path(LR"(to\live.txt)");
    std::wstring cacheFile;
    run([&] { CreateCacheFile(live, cacheFile, L"kvt", false, false); });
}

void CacheTwoFiles(const CallGround& ground, const RunCall& run)
{
    const std::vector<std::wstring> files = {ground.tree.Path(L"a.txt"), ground.tree.Path(LR"(to\new.txt)")};
    std::map<std::wstring, std::wstring> map;
    run([&] { CreateCacheFileList(files, L'\0', L"kvt", false, map, false); });
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
