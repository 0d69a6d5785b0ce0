// The names that the DLL exports: hosts are linked against them, so each change of the list breaks some host.
// A new function is added to exports.txt, in the order of its code units, and to FunctionsOfTheHeader below.

#include <tests/contract/ExportedNames.h>

#include <Kestrovane.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string>
#include <vector>

namespace {

const BYTE* Library()
{
    return reinterpret_cast<const BYTE*>(::GetModuleHandleW(L"Kestrovane.dll"));
}

const IMAGE_EXPORT_DIRECTORY& ExportDirectory()
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(Library());
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(Library() + dos->e_lfanew);
    const DWORD address = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_EXPORT].VirtualAddress;
    return *reinterpret_cast<const IMAGE_EXPORT_DIRECTORY*>(Library() + address);
}

std::vector<std::string> NamesInTheDll()
{
    const IMAGE_EXPORT_DIRECTORY& directory = ExportDirectory();
    const auto* offsets = reinterpret_cast<const DWORD*>(Library() + directory.AddressOfNames);
    std::vector<std::string> names;
    for (DWORD i = 0; i < directory.NumberOfNames; ++i) {
        names.emplace_back(reinterpret_cast<const char*>(Library() + offsets[i]));
    }
    std::sort(names.begin(), names.end());
    return names;
}

std::vector<std::string> CheckedInNames()
{
    return {std::begin(kExportedNames), std::end(kExportedNames)};
}

template <typename... Functions>
std::set<void*> Addresses(Functions*... functions)
{
    return {reinterpret_cast<void*>(functions)...};
}

// All functions of the public header, as a host calls them.
std::set<void*> FunctionsOfTheHeader()
{
    return Addresses(
        &SetVssFileManagerLogger, &SendKA, &GetFileName, &GetPathFileName, &GetPathFileNameNoVolume, &GetVolume,
        &GetPathFileTranslate, &AppendBackslash, &IsEqual, &FindStringInList, &FindMatchStringInList,
        &WStringAfterWCHAR, &WStringBeforeWCHAR, &WString2UpperCase, &DoExpandEnvironmentStrings, &isDirectoryExists,
        &isDirectoryReadWritable, &RecursivelyCreateDirectory, &isFileExists, &IsFileExistsSnap, &IsCanReplaceFile,
        &getFileSize, &ListFilesFilter, &ListFilesFilterRecursive, &ListDirecoriesRecursive, &DoCopyComponentFileToDir,
        &DoCopyComponentFile, &IsFileDescMatch, &MapRestorePath, &MapRestorePath1, &DeleteFilesFilter,
        &DeleteDirectoryRecursive, &CleanupDirectory, &CreateCacheFile, &MoveCacheFile, &CreateCacheFileList,
        &RestoreFileListCache, static_cast<bool (*)(std::vector<std::wstring>&)>(&DeleteCacheFileList),
        static_cast<bool (*)(std::map<std::wstring, std::wstring>&, wchar_t)>(&DeleteCacheFileList), &PrintStringVector,
        &PrintStringMap, &FindStringValueInMap, &FindStringKeyInMap, &IsVolume, &GetUniqueVolumeNameForPath,
        &GetUniqueVolumeNameForPathNoThrow, &GetNQUniqueVolumeNameForPath, &GetDisplayNameForVolumeNoThrow,
        &EnumVolumes, &GetVolumeMaxFreeSpace, &GetAvailableVolumeSpace, &GetTotalVolumeSpace, &BuildSnapshotFilePath,
        &IsRunsOnWinXP, &IsRunOnWin2003SP1Up, &ChangeObjectOwner);
}

// The name as it stands in the sources: "_Z11GetFileName..." holds its length.
std::string PlainName(const std::string& mangled)
{
    std::size_t digits = 0;
    const std::size_t length = std::stoul(mangled.substr(2), &digits);
    return mangled.substr(2 + digits, length);
}

} // namespace

TEST(Exports, AreExactlyTheCheckedInNames)
{
    EXPECT_EQ(CheckedInNames(), NamesInTheDll());
}

TEST(Exports, AreThoseOfTheReadmesTable)
{
    std::set<std::string> exported;
    for (const char* name : kExportedNames) {
        exported.insert(PlainName(name));
    }
    const std::set<std::string> described(std::begin(kReadmeFunctions), std::end(kReadmeFunctions));
    EXPECT_EQ(described, exported);
    EXPECT_EQ(described.size(), std::size(kReadmeFunctions)) << "a function stands in the table twice";
}

TEST(Exports, CheckedInNamesAreSorted)
{
    const std::vector<std::string> names = CheckedInNames();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(Exports, AllHaveNames)
{
    EXPECT_EQ(ExportDirectory().NumberOfNames, ExportDirectory().NumberOfFunctions);
}

TEST(Exports, EveryFunctionOfTheHeaderIsExported)
{
    std::set<void*> exported;
    for (const char* name : kExportedNames) {
        exported.insert(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"Kestrovane.dll"), name)));
    }
    EXPECT_EQ(0U, exported.count(nullptr)) << "a name does not resolve";
    EXPECT_EQ(exported, FunctionsOfTheHeader());
    EXPECT_EQ(kDeclaredFunctions, exported.size()) << "the list above or the header has a function more";
}
