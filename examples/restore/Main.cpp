// Restores the files of a backup to a directory, through mappings to other places. A file in use is replaced at the next
// reboot:
//
//   restore-files BACKUP DIRECTORY [FROM=TO...]
//
// FROM is a directory at or below DIRECTORY; its files, and those below it, go to TO. The exit code is 0 if all files were
// restored, 4 if some will be at the next reboot, 1 if one was not, and 2 after wrong usage.

#include <Kestrovane.h>

#include <algorithm>
#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>
#include <vector>

namespace {

enum class Outcome { kRestored, kAtReboot, kFailed };

void Print(const std::wstring& line)
{
    const int length = static_cast<int>(line.size());
    std::string utf8(line.size() * 3, '\0'); // one UTF-16 code unit takes up to three bytes
    utf8.resize(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, line.c_str(), length, utf8.data(),
                                                               static_cast<int>(utf8.size()), nullptr, nullptr)));
    std::printf("%s\n", utf8.c_str());
}

// Level 2 is progress. Level 0 holds the details of failures.
int __cdecl Log(int level, const char* format, ...)
{
    if (level != 0) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return printed;
}

// A console program has no supervisor that waits for a sign. A service reports its progress here.
int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// A copy that ends with a read error reports success and leaves a shortened target, so the sizes are compared.
bool CopyCompletely(std::wstring source, std::wstring target)
{
    return DoCopyComponentFile(source, target) == 1 && getFileSize(source) == getFileSize(target) &&
           isFileExists(target);
}

// A cache file beside the file in use, and therefore on its volume: Windows moves nothing between volumes at a reboot. It is
// deleted at the end of the scope, unless it is kept.
class CacheFile {
public:
    explicit CacheFile(const std::wstring& liveFile)
    {
        m_created = CreateCacheFile(liveFile, m_path, L"rst", false, false);
    }
    ~CacheFile()
    {
        if (!m_kept && !m_path.empty()) { // a failed creation may leave a file, too
            std::vector<std::wstring> paths = {m_path};
            DeleteCacheFileList(paths);
        }
    }
    CacheFile(const CacheFile&) = delete;
    CacheFile& operator=(const CacheFile&) = delete;

    [[nodiscard]] bool IsCreated() const { return m_created; }
    [[nodiscard]] const std::wstring& Path() const { return m_path; }
    void Keep() { m_kept = true; }

private:
    std::wstring m_path;
    bool m_created = false;
    bool m_kept = false;
};

// On a share, a replacement would be registered, and nothing would happen at the reboot.
bool IsOnLocalVolume(const std::wstring& path)
{
    return GetUniqueVolumeNameForPath(path).starts_with(L"\\\\?\\Volume{");
}

Outcome ReplaceAtReboot(const std::wstring& source, std::wstring target)
{
    if (!IsOnLocalVolume(target)) {
        return Outcome::kFailed;
    }
    CacheFile cache(target);
    if (!cache.IsCreated() || !CopyCompletely(source, cache.Path()) || !MoveCacheFile(cache.Path(), target)) {
        return Outcome::kFailed;
    }
    cache.Keep();
    return Outcome::kAtReboot;
}

Outcome RestoreFile(const std::wstring& source, std::wstring target)
{
    if (IsCanReplaceFile(target)) { // also true for a file that does not exist
        return CopyCompletely(source, target) ? Outcome::kRestored : Outcome::kFailed;
    }
    return ReplaceAtReboot(source, target);
}

// The mappings cover directories: the path of the file is split, mapped and joined again.
std::wstring MappedPath(const std::wstring& path, std::vector<VSS_ALTERNATE_MAPPING>& mappings)
{
    std::wstring directory = GetPathFileName(path);
    std::wstring name = GetFileName(path);
    MapRestorePath1(directory, name, mappings); // leaves the directory as it is if no mapping covers the file
    return AppendBackslash(directory) + name;
}

int RestoreBackup(const std::wstring& backup, const std::wstring& directory,
                  std::vector<VSS_ALTERNATE_MAPPING> mappings)
{
    std::vector<Outcome> outcomes;
    for (const std::wstring& name : ListFilesFilterRecursive(backup, L"*", false)) {
        const std::wstring target = MappedPath(AppendBackslash(directory) + name, mappings);
        outcomes.push_back(RestoreFile(AppendBackslash(backup) + name, target));
        constexpr const wchar_t* kWords[] = {L"restored  ", L"at reboot ", L"FAILED    "};
        Print(kWords[static_cast<int>(outcomes.back())] + target);
    }
    const auto has = [&](Outcome outcome) { return std::count(outcomes.begin(), outcomes.end(), outcome) != 0; };
    if (outcomes.empty() || has(Outcome::kFailed)) { // the list of a directory that cannot be searched is empty
        return 1;
    }
    return has(Outcome::kAtReboot) ? 4 : 0;
}

// The first mapping that covers a file is used, not the most specific one: longer paths come first.
std::vector<VSS_ALTERNATE_MAPPING> ParseMappings(const std::vector<std::wstring>& arguments)
{
    std::vector<VSS_ALTERNATE_MAPPING> mappings;
    for (const std::wstring& argument : arguments) {
        mappings.push_back({WStringBeforeWCHAR(argument, L'='), WStringAfterWCHAR(argument, L'='), L"*", true});
    }
    std::stable_sort(mappings.begin(), mappings.end(),
                     [](const auto& left, const auto& right) { return left.path.size() > right.path.size(); });
    return mappings;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    const std::vector<std::wstring> mappings(arguments + std::min(count, 3), arguments + count);
    const auto isMapping = [](const std::wstring& argument) { return argument.find(L'=') != std::wstring::npos; };
    if (count < 3 || !std::all_of(mappings.begin(), mappings.end(), isMapping)) {
        Print(L"usage: restore-files BACKUP DIRECTORY [FROM=TO...]");
        return 2;
    }
    SetVssFileManagerLogger(&Log, &KeepAlive, &Log); // before any other call
    try {
        return RestoreBackup(arguments[1], arguments[2], ParseMappings(mappings));
    } catch (const CAtlException& error) {
        std::fprintf(stderr, "error 0x%08lX\n", static_cast<unsigned long>(error.m_hr));
    } catch (const std::exception& error) { // std::bad_alloc
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
