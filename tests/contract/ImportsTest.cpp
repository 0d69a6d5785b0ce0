// The functions that the DLL imports: each is a dependency on the systems that hosts run on, and has a user.
//
// A new import is added to imports.txt, in the order of its code units, with its user.

#include <tests/contract/ImportedNames.h>

#include <windows.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <iterator>
#include <set>
#include <string>

namespace {

using Names = std::set<std::string>;

const BYTE* Library()
{
    return reinterpret_cast<const BYTE*>(::GetModuleHandleW(L"Kestrovane.dll"));
}

const IMAGE_IMPORT_DESCRIPTOR* FirstImportedLibrary()
{
    const auto* dos = reinterpret_cast<const IMAGE_DOS_HEADER*>(Library());
    const auto* headers = reinterpret_cast<const IMAGE_NT_HEADERS*>(Library() + dos->e_lfanew);
    const DWORD offset = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT].VirtualAddress;
    return reinterpret_cast<const IMAGE_IMPORT_DESCRIPTOR*>(Library() + offset);
}

std::string LowerCase(std::string name)
{
    std::transform(name.begin(), name.end(), name.begin(),
                   [](unsigned char character) { return static_cast<char>(std::tolower(character)); });
    return name;
}

void AddFunctions(const IMAGE_IMPORT_DESCRIPTOR& library, Names& names)
{
    const std::string prefix = LowerCase(reinterpret_cast<const char*>(Library() + library.Name)) + "!";
    const auto* function = reinterpret_cast<const IMAGE_THUNK_DATA*>(Library() + library.OriginalFirstThunk);
    for (; function->u1.AddressOfData != 0; ++function) {
        ASSERT_FALSE(IMAGE_SNAP_BY_ORDINAL(function->u1.Ordinal)) << prefix << " has an import without a name";
        const auto* byName = reinterpret_cast<const IMAGE_IMPORT_BY_NAME*>(Library() + function->u1.AddressOfData);
        names.insert(prefix + reinterpret_cast<const char*>(byName->Name));
    }
}

Names NamesInTheDll()
{
    Names names;
    for (const auto* library = FirstImportedLibrary(); library->Name != 0; ++library) {
        AddFunctions(*library, names);
    }
    return names;
}

Names CheckedInNames()
{
    Names names;
    for (const ListedImport& import : kListedImports) {
        names.insert(import.name);
    }
    return names;
}

bool IsOfWindows(const std::string& name)
{
    constexpr const char* kLibraries[] = {"advapi32.dll!", "kernel32.dll!", "oleaut32.dll!", "shlwapi.dll!",
                                          "user32.dll!"};
    return std::any_of(std::begin(kLibraries), std::end(kLibraries),
                       [&](const char* library) { return name.starts_with(library); });
}

// Unoptimised and checked code calls more of the runtime libraries, and another C runtime has other names: there, only the
// imports from Windows are compared.
Names Compared(Names names)
{
#if !defined(NDEBUG) || defined(_UCRT) || defined(_GLIBCXX_ASSERTIONS)
    std::erase_if(names, [](const std::string& name) { return !IsOfWindows(name); });
#endif
    return names;
}

Names Difference(const Names& first, const Names& second)
{
    Names difference;
    std::set_difference(first.begin(), first.end(), second.begin(), second.end(),
                        std::inserter(difference, difference.end()));
    return difference;
}

} // namespace

TEST(Imports, AreAllListed)
{
    EXPECT_EQ(Names(), Difference(Compared(NamesInTheDll()), CheckedInNames())) << "not in imports.txt";
}

TEST(Imports, ListedNamesAreAllImported)
{
    EXPECT_EQ(Names(), Difference(Compared(CheckedInNames()), NamesInTheDll())) << "in imports.txt for nothing";
}

TEST(Imports, ComeFromWindowsAndTheRuntimesAlone)
{
    for (const std::string& name : NamesInTheDll()) {
        EXPECT_TRUE(IsOfWindows(name) || name.starts_with("msvcrt.dll!") || name.starts_with("api-ms-win-crt-") ||
                    name.starts_with("libstdc++-6.dll!") || name.starts_with("libgcc_s_seh-1.dll!") ||
                    name.starts_with("libssp-0.dll!") || name.starts_with("libwinpthread-1.dll!"))
            << name;
    }
}

TEST(Imports, ListedNamesAreSortedAndHaveAUser)
{
    EXPECT_TRUE(std::is_sorted(
        std::begin(kListedImports), std::end(kListedImports),
        [](const ListedImport& first, const ListedImport& second) { return std::string(first.name) < second.name; }));
    for (const ListedImport& import : kListedImports) {
        EXPECT_STRNE("", import.user) << import.name;
    }
}
