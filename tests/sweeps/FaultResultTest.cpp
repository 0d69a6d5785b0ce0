// What the functions return while calls of the platform fail: a documented result, which agrees with the files.
// Simulations, like all failures of the sweeps.

#include "tests/contract/EveryFunctionFixture.h"
#include "tests/sweeps/CallOutcome.h"
#include "tests/sweeps/ImportFaults.h"
#include "tests/sweeps/SweepGround.h"

#include <cmath>
#include <cstdio>
#include <map>

namespace {

using StringMap = std::map<std::wstring, std::wstring>;

const std::string kContent = "x"; // of every file
constexpr int kMostCalls = 3;     // of one import that fail in turn

// Makes one call and returns whether its result is a documented one, for the files as they are then.
struct ResultRule {
    const char* name;
    bool (*holds)(const CallGround& ground);
};

void PrintTo(const ResultRule& rule, std::ostream* out)
{
    *out << rule.name;
}

bool IsEmptyOr(const std::wstring& expected, const std::wstring& result)
{
    return result.empty() || result == expected;
}

// Whether a list has elements of another one alone.
bool IsPartOf(const StringList& whole, const StringList& part)
{
    return std::all_of(part.begin(), part.end(), [&](const std::wstring& element) {
        return std::find(whole.begin(), whole.end(), element) != whole.end();
    });
}

bool CopyHolds(int result, const std::wstring& target)
{
    // A read error ends a copy with success, too.
    return result == 0 || (result == 1 && PathExists(target) && kContent.starts_with(ReadFileBytes(target)));
}

bool MappingHolds(bool (*map)(std::wstring&, std::wstring&, std::vector<VSS_ALTERNATE_MAPPING>&))
{
    std::wstring path = LR"(C:\Live\Sub)";
    std::wstring spec = L"a.txt";
    std::vector<VSS_ALTERNATE_MAPPING> mappings = {{LR"(C:\Live)", LR"(D:\Restore)", L"*", true}};
    const Outcome outcome = OutcomeOf([&] { map(path, spec, mappings); });
    return path == (outcome == Outcome::kReturned ? LR"(D:\Restore\Sub)" : LR"(C:\Live\Sub)");
}

bool CacheFileHolds(const CallGround& ground)
{
    std::wstring cacheFile;
    const bool created = CreateCacheFile(ground.tree.Path(L"a.txt"), cacheFile, L"kvt", false, true);
    return (!created && cacheFile.empty()) || PathExists(cacheFile);
}

bool CacheListHolds(const CallGround& ground)
{
    const std::wstring live = ground.tree.Path(L"a.txt");
    StringMap map;
    const bool created = CreateCacheFileList({live}, L'\0', L"kvt", false, map, true);
    return created ? map.size() == 1 && PathExists(map.begin()->second) : map.empty();
}

// The listing that the platform's failures cut short.
bool ListingHolds(const CallGround& ground, const StringList& listed, const std::wstring& directory)
{
    StringList files;
    for (const WIN32_FIND_DATAW& entry : EntriesOf(ground.tree.Path(directory))) {
        files.push_back(ground.tree.Path(directory) + L"\\" + entry.cFileName);
    }
    return IsPartOf(files, listed) && std::is_sorted(listed.begin(), listed.end());
}

const ResultRule kRules[] = {
    {"GetFileName", [](const CallGround&) { return IsEmptyOr(L"x", GetFileName(LR"(..\x)")); }},
    {"GetPathFileName",
     [](const CallGround& ground) { return IsEmptyOr(ground.home + LR"(\a)", GetPathFileName(LR"(a\x)")); }},
    {"GetVolume", [](const CallGround&) { return IsEmptyOr(L"C", GetVolume(L"x")); }},
    {"IsDirectoryExists", [](const CallGround& ground) { return !isDirectoryExists(ground.tree.Path(L"missing")); }},
    {"IsFileExists", [](const CallGround& ground) { return !isFileExists(ground.tree.Path(L"missing")); }},
    {"GetFileSize",
     [](const CallGround& ground) {
         std::wstring file = ground.tree.Path(L"a.txt");
         const std::int64_t size = getFileSize(file);
         return size == 0 || size == static_cast<std::int64_t>(ReadFileBytes(file).size());
     }},
    {"RecursivelyCreateDirectory",
     [](const CallGround& ground) { return RecursivelyCreateDirectory(ground.tree.Path(LR"(new\a)")); }},
    {"ListFilesFilter",
     [](const CallGround& ground) {
         return ListingHolds(ground, ListFilesFilter(ground.tree.Path(L"sub"), L"*", true), L"sub");
     }},
    {"ListDirecoriesRecursive",
     [](const CallGround& ground) {
         return ListingHolds(ground, ListDirecoriesRecursive(ground.tree.Path(L"sub")), L"sub");
     }},
    {"DeleteFilesFilter",
     [](const CallGround& ground) {
         const bool deleted = DeleteFilesFilter(ground.tree.Path(L"doomed"), L"*");
         // True as well if the directory could not be searched; false leaves the file.
         return deleted || PathExists(ground.tree.Path(LR"(doomed\x.txt)"));
     }},
    {"DeleteDirectoryRecursive",
     [](const CallGround& ground) {
         const std::wstring doomed = ground.tree.Path(L"doomed");
         return (DeleteDirectoryRecursive(doomed.c_str()) == 0) == PathExists(doomed);
     }},
    {"CleanupDirectory",
     [](const CallGround& ground) {
         const std::wstring doomed = ground.tree.Path(L"doomed");
         return CleanupDirectory(doomed) != PathExists(doomed);
     }},
    {"DoCopyComponentFile",
     [](const CallGround& ground) {
         const std::wstring target = ground.tree.Path(LR"(as\b.txt)");
         return CopyHolds(DoCopyComponentFile(ground.tree.Path(L"a.txt"), target), target);
     }},
    {"DoCopyComponentFileToDir",
     [](const CallGround& ground) {
         const int copied = DoCopyComponentFileToDir(ground.tree.Path(L"a.txt"), ground.tree.Path(L"to"));
         return CopyHolds(copied, ground.tree.Path(LR"(to\a.txt)"));
     }},
    {"GetUniqueVolumeNameForPath",
     [](const CallGround&) {
         const std::wstring name = GetUniqueVolumeNameForPath(L"C:");
         return name.empty() || name == LR"(C:\)" || name.starts_with(LR"(\\?\Volume{)");
     }},
    {"GetUniqueVolumeNameForPathNoThrow",
     [](const CallGround&) {
         std::wstring name = L"before";
         return GetUniqueVolumeNameForPathNoThrow(L"C:", name) != (name == L"before");
     }},
    {"GetDisplayNameForVolumeNoThrow",
     [](const CallGround&) {
         std::wstring name = L"before";
         const bool found =
             GetDisplayNameForVolumeNoThrow(LR"(\\?\Volume{00000000-0000-0000-0000-000000000043}\)", name);
         return name == (found ? LR"(C:\)" : L"before");
     }},
    {"EnumVolumes",
     [](const CallGround&) {
         return IsPartOf({LR"(C:\)", LR"(D:\)"}, EnumVolumes());
     }},
    {"GetVolumeMaxFreeSpace",
     [](const CallGround&) {
         return IsPartOf({L"", LR"(C:\)", LR"(D:\)"}, {GetVolumeMaxFreeSpace()});
     }},
    {"GetAvailableVolumeSpace",
     [](const CallGround&) {
         const double space = GetAvailableVolumeSpace(LR"(C:\)");
         return std::isfinite(space) && space >= 0.0;
     }},
    {"BuildSnapshotFilePath",
     [](const CallGround&) {
         CComBSTR path;
         StringMap snapshots;
         bool built = false;
         return OutcomeOf([&] { built = BuildSnapshotFilePath(LR"(C:\a)", path, snapshots); }) != Outcome::kReturned ||
                built;
     }},
    {"IsRunsOnWinXP", [](const CallGround&) { return IsRunsOnWinXP() == 0; }},
    {"IsRunOnWin2003SP1Up", [](const CallGround&) { return IsRunOnWin2003SP1Up() == 1; }},
    {"MapRestorePath", [](const CallGround&) { return MappingHolds(&MapRestorePath); }},
    {"MapRestorePath1", [](const CallGround&) { return MappingHolds(&MapRestorePath1); }},
    {"CreateCacheFile", &CacheFileHolds},
    {"CreateCacheFileList", &CacheListHolds},
    {"DeleteCacheFileList",
     [](const CallGround& ground) {
         StringMap map = {{L"live", ground.tree.Path(L"cache.tmp")}};
         return DeleteCacheFileList(map, L'\0');
     }},
    {"RestoreFileListCache",
     [](const CallGround& ground) {
         StringMap map = {{ground.tree.Path(LR"(to\live)"), ground.tree.Path(L"cache.tmp")}};
         return !RestoreFileListCache(map) || PathExists(ground.tree.Path(LR"(to\cache.tmp)"));
     }},
};

std::string NameOfRule(const ::testing::TestParamInfo<ResultRule>& info)
{
    return info.param.name;
}

int g_failures = 0; // injected, over all rules

class FaultResultTest : public LibraryTest, public ::testing::WithParamInterface<ResultRule> {
protected:
    // The first exception of a process, and the first failure that Windows describes, may cost it handles for good.
    static void SetUpTestSuite()
    {
        EXPECT_THROW(throw 0, int);
        RegisterSilentHost();
        ::SetLastError(ERROR_ACCESS_DENIED);
        GetFileName(L"*");
    }
    static void TearDownTestSuite() { std::printf("Results: %d failures injected.\n", g_failures); }

    void SetUp() override
    {
        RegisterSilentHost();
        LibraryTest::SetUp();
        m_faults.SetHome(m_ground.home);
    }

    // Returns how often each import was called.
    std::vector<int> Check(const std::vector<PlannedFailure>& failures)
    {
        {
            const WorkingDirectory in(m_ground.home);
            m_faults.Arm(failures);
            const bool holds = GetParam().holds(m_ground);
            g_failures += m_faults.Injected();
            m_faults.Disarm();
            EXPECT_TRUE(holds) << "not a documented result";
        }
        m_files.Clean();
        return m_faults.Calls();
    }

private:
    const ImportPatch m_noMoves{"MoveFileExW", &RegisterNoMove};
    const ImportPatch m_noMessages{"printf", &PrintNothing};
    const CallGround m_ground{tree};
    SweepGround m_files{m_ground};
    ImportFaults m_faults;
};

} // namespace

TEST_P(FaultResultTest, IsDocumentedWhicheverCallFails)
{
    const std::vector<int> ordinary = Check({});
    for (std::size_t import = 0; import < ordinary.size(); ++import) {
        const int most = FailingImports()[import].canFail ? std::min(kMostCalls, ordinary[import]) : 0;
        for (int number = 1; number <= most; ++number) {
            for (const bool thenOn : {false, true}) {
                SCOPED_TRACE(std::string(FailingImports()[import].name) + " " + std::to_string(number) +
                             (thenOn ? " and later" : ""));
                Check({{import, number, thenOn}});
            }
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Every, FaultResultTest, ::testing::ValuesIn(kRules), &NameOfRule);
