// The names that the DLL exports: hosts are linked against them, so each change of the list breaks some host.
// A new function is added to exports.txt, in the order of its code units, and to the table in tests/contract/functions.

#include "tests/contract/functions/ExportedFunction.h"

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

std::set<void*> AddressesInTheTable()
{
    std::set<void*> addresses;
    for (const ExportedFunction& function : AllFunctions()) {
        EXPECT_TRUE(addresses.insert(function.address).second) << function.name << " has two rows";
    }
    return addresses;
}

// The name as in the sources: "_Z11GetFileName..." holds its length.
std::string PlainName(const std::string& mangled)
{
    std::size_t digits = 0;
    const std::size_t length = std::stoul(mangled.substr(2), &digits);
    return mangled.substr(2 + digits, length);
}

} // namespace

TEST(Exports, AreExactlyTheListedNames)
{
    EXPECT_EQ(CheckedInNames(), NamesInTheDll());
}

TEST(Exports, AreExactlyThoseOfTheReadme)
{
    std::set<std::string> exported;
    for (const char* name : kExportedNames) {
        exported.insert(PlainName(name));
    }
    const std::set<std::string> described(std::begin(kReadmeFunctions), std::end(kReadmeFunctions));
    EXPECT_EQ(described, exported);
    EXPECT_EQ(described.size(), std::size(kReadmeFunctions)) << "a function is named twice";
}

TEST(Exports, ListedNamesAreSorted)
{
    const std::vector<std::string> names = CheckedInNames();
    EXPECT_TRUE(std::is_sorted(names.begin(), names.end()));
}

TEST(Exports, AllHaveNames)
{
    EXPECT_EQ(ExportDirectory().NumberOfNames, ExportDirectory().NumberOfFunctions);
}

TEST(Exports, HaveARowEachInTheTableOfFunctions)
{
    std::set<void*> exported;
    for (const char* name : kExportedNames) {
        exported.insert(reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"Kestrovane.dll"), name)));
    }
    EXPECT_EQ(0U, exported.count(nullptr)) << "a name does not resolve";
    EXPECT_EQ(exported, AddressesInTheTable()) << "a function has no row in tests/contract/functions";
    EXPECT_EQ(kDeclaredFunctions, exported.size()) << "the header declares another number";
}
