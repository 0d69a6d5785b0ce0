// Volumes, snapshot paths, owners, cache files and loading.

#include "bench/Rows.h"

#include <Kestrovane.h>

#include <windows.h>

#include <aclapi.h>

#include <cwchar>
#include <memory>

namespace bench {

namespace {

using StringMap = std::map<std::wstring, std::wstring>;

volatile std::size_t g_sink; // keeps results alive

std::size_t BareEnumeration()
{
    constexpr DWORD kCapacity = 1024; // characters
    wchar_t name[kCapacity];
    wchar_t path[MAX_PATH];
    wchar_t unique[MAX_PATH];
    DWORD length = 0;
    std::size_t found = 0;
    const HANDLE search = ::FindFirstVolumeW(name, kCapacity);
    do {
        for (int i = 0; i < 2; ++i) { // the library resolves each name twice
            ::GetVolumePathNameW(name, path, MAX_PATH);
            ::GetVolumeNameForVolumeMountPointW(path, unique, MAX_PATH);
        }
        ::GetVolumePathNamesForVolumeNameW(name, path, MAX_PATH, &length);
        found += std::wcslen(path);
    } while (::FindNextVolumeW(search, name, kCapacity));
    ::FindVolumeClose(search);
    return found;
}

Row SnapshotRow()
{
    const auto snapshots = std::make_shared<StringMap>();
    (*snapshots)[GetUniqueVolumeNameForPath(L"C:\\")] = LR"(\\?\GLOBALROOT\Device\Copy1)";
    return {"volumes",
            "BuildSnapshotFilePath",
            [snapshots] {
                CComBSTR result;
                BuildSnapshotFilePath(LR"(C:\Data\Sub\a.txt)", result, *snapshots);
                g_sink = result.Length();
            },
            [snapshots] {
                wchar_t path[MAX_PATH];
                wchar_t name[MAX_PATH];
                ::GetVolumePathNameW(LR"(C:\Data\Sub\a.txt\)", path, MAX_PATH);
                ::GetVolumeNameForVolumeMountPointW(path, name, MAX_PATH);
                g_sink = (*snapshots)[name].size();
            },
            {},
            {},
            {}};
}

void BareOwner(const std::wstring& path, const std::wstring& account)
{
    unsigned char sid[SECURITY_MAX_SID_SIZE];
    wchar_t domain[MAX_PATH];
    DWORD sidSize = 0;
    DWORD domainLength = 0;
    SID_NAME_USE use = SidTypeUnknown;
    ::LookupAccountNameW(nullptr, account.c_str(), nullptr, &sidSize, nullptr, &domainLength, &use);
    ::LookupAccountNameW(nullptr, account.c_str(), sid, &sidSize, domain, &domainLength, &use);
    PACL dacl = nullptr;
    PACL extended = nullptr;
    ::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl, nullptr,
                            nullptr);
    EXPLICIT_ACCESSW entry = {GENERIC_ALL, SET_ACCESS, SUB_CONTAINERS_AND_OBJECTS_INHERIT, {}};
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_USER;
    entry.Trustee.ptstrName = reinterpret_cast<wchar_t*>(sid);
    ::SetEntriesInAclW(1, &entry, dacl, &extended);
    std::wstring changed = path;
    ::SetNamedSecurityInfoW(changed.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION, sid,
                            nullptr, extended, nullptr);
    ::LocalFree(extended);
    ::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl, nullptr,
                            nullptr);
    g_sink = ::GetFileAttributesW(path.c_str());
}

void BareOwners(const std::wstring& directory)
{
    BareOwner(directory, L"SYSTEM");
    WIN32_FIND_DATAW entry = {};
    const HANDLE search = ::FindFirstFileW((directory + LR"(\*.*)").c_str(), &entry);
    do {
        if (std::wcscmp(entry.cFileName, L".") != 0 && std::wcscmp(entry.cFileName, L"..") != 0) {
            BareOwner(directory + L"\\" + entry.cFileName, L"SYSTEM");
        }
    } while (::FindNextFileW(search, &entry));
    ::FindClose(search);
}

Row OwnerRow()
{
    const std::wstring directory = kRoot + LR"(\owners)";
    Row row{"owner",
            "ChangeObjectOwner, 3,000 files",
            [directory] { g_sink = ChangeObjectOwner(directory, L"SYSTEM") ? 1 : 0; },
            [directory] { BareOwners(directory); },
            {},
            {},
            {}};
    row.rounds = kFewRounds;
    return row;
}

constexpr int kCacheFiles = 500;

void CacheFiles()
{
    const std::vector<std::wstring> live(kCacheFiles, kRoot + LR"(\cache\live)");
    StringMap cacheMap;
    std::vector<std::wstring> paths;
    for (const std::wstring& file : live) {
        std::wstring cacheFile;
        CreateCacheFile(file, cacheFile, L"kvb", false, false);
        paths.push_back(cacheFile);
    }
    g_sink = DeleteCacheFileList(paths) ? 1 : 0;
}

void BareCacheFiles()
{
    const std::wstring directory = kRoot + LR"(\cache)";
    std::vector<std::wstring> paths;
    for (int i = 0; i < kCacheFiles; ++i) {
        wchar_t path[MAX_PATH + MAX_PATH];
        g_sink = isDirectoryExists(directory) ? 1 : 0; // four calls of the platform
        ::GetTempFileNameW(directory.c_str(), L"kvb", 0, path);
        paths.emplace_back(path);
    }
    for (const std::wstring& path : paths) {
        ::DeleteFileW(path.c_str());
    }
}

Row CacheRow()
{
    Row row{"cache", "500 cache files, created and deleted", &CacheFiles, &BareCacheFiles, {}, {}, {}};
    row.rounds = kFewRounds;
    return row;
}

void LoadAndUnload(const wchar_t* name)
{
    ::FreeLibrary(::LoadLibraryW(name));
}

Row LoadRow()
{
    return {"load",
            "LoadLibrary and FreeLibrary",
            [] { LoadAndUnload(L"kestrovane-bench-copy.dll"); },
            [] { LoadAndUnload(L"kestrovane-bench-plain.dll"); },
            {},
            {},
            {}};
}

} // namespace

std::vector<Row> ServiceRows()
{
    return {{"volumes",
             "EnumVolumes",
             [] { g_sink = EnumVolumes().size(); },
             [] { g_sink = BareEnumeration(); },
             {},
             {},
             {}},
            SnapshotRow(),
            OwnerRow(),
            CacheRow(),
            LoadRow()};
}

} // namespace bench
