// Matching of file descriptions and mapping of restore paths.

#include "bench/Rows.h"

#include <Kestrovane.h>

#include <windows.h>

#include <shlwapi.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <memory>

namespace bench {

namespace {

struct BstrDeleter {
    void operator()(OLECHAR* string) const { ::SysFreeString(string); }
};
using UniqueBstr = std::unique_ptr<OLECHAR, BstrDeleter>;

UniqueBstr UpperCopy(const std::wstring& string)
{
    UniqueBstr copy(::SysAllocString(string.c_str()));
    ::CharUpperBuffW(copy.get(), ::SysStringLen(copy.get()));
    return copy;
}

struct Description {
    std::wstring path;
    std::wstring spec;
    bool recursive;
};

volatile bool g_sink; // keeps results alive

bool Match(Description& first, Description& second)
{
    return IsFileDescMatch(first.path, first.spec, first.recursive, second.path, second.spec, second.recursive);
}

// Looks at each character once.
std::ptrdiff_t CountStars(BSTR pattern)
{
    return std::count(pattern, pattern + ::SysStringLen(pattern), L'*');
}

// What no implementation can avoid: the upper-case copies and one pass over the patterns.
void BareCopies(const Description& first, const Description& second)
{
    const UniqueBstr strings[] = {UpperCopy(first.path), UpperCopy(first.spec), UpperCopy(second.path),
                                  UpperCopy(second.spec)};
    g_sink = CountStars(strings[1].get()) == CountStars(strings[3].get());
    g_sink = std::wcsncmp(strings[0].get(), strings[2].get(), first.path.size()) == 0;
}

// The same with the comparison of two folders that the platform makes.
void BareFolders(const Description& first, const Description& second)
{
    const UniqueBstr strings[] = {UpperCopy(first.path + L"\\"), UpperCopy(first.spec), UpperCopy(second.path + L"\\"),
                                  UpperCopy(second.spec)};
    g_sink = ::VarBstrCmp(strings[0].get(), strings[2].get(), LOCALE_USER_DEFAULT, 0) == VARCMP_EQ;
}

Row MatchRow(const std::string& name, const Description& first, const Description& second)
{
    const auto a = std::make_shared<Description>(first);
    const auto b = std::make_shared<Description>(second);
    const bool comparesFolders = !a->recursive && !b->recursive && Match(*a, *b);
    return {"matching",
            name,
            [a, b] { g_sink = Match(*a, *b); },
            [a, b, comparesFolders] { comparesFolders ? BareFolders(*a, *b) : BareCopies(*a, *b); },
            "PathMatchSpecW",
            [a, b] { g_sink = ::PathMatchSpecW(b->spec.c_str(), a->spec.c_str()) != FALSE; },
            {}};
}

std::wstring Repeated(const std::wstring& piece, int times)
{
    std::wstring repeated;
    for (int i = 0; i < times; ++i) {
        repeated += piece;
    }
    return repeated;
}

using Mappings = std::vector<VSS_ALTERNATE_MAPPING>;

std::shared_ptr<Mappings> MakeMappings(int count, const std::wstring& spec)
{
    auto mappings = std::make_shared<Mappings>();
    for (int i = 0; i + 1 < count; ++i) {
        mappings->push_back({LR"(C:\Data\Component)" + std::to_wstring(i) + L"\\", L"D:\\Restore", spec, true});
    }
    mappings->push_back({L"C:\\Live\\", L"D:\\Restore", L"*", true});
    return mappings;
}

// Two upper-case copies for each mapping, and two for the file.
void BareMapping(const Mappings& mappings, const std::wstring& path)
{
    const UniqueBstr query = UpperCopy(path);
    for (const VSS_ALTERNATE_MAPPING& mapping : mappings) {
        const UniqueBstr copy = UpperCopy(mapping.path);
        const UniqueBstr spec = UpperCopy(mapping.fileSpec);
        g_sink = std::wcsncmp(query.get(), copy.get(), mapping.path.size() - 1) == 0;
    }
}

Row MappingRow(int count, const std::wstring& spec)
{
    const auto mappings = MakeMappings(count, spec);
    const std::string name =
        "MapRestorePath1, " + std::to_string(count) + " mappings" + (spec == L"*" ? " of trees" : " with *.doc");
    return {"mapping",
            name,
            [mappings] {
                std::wstring path = LR"(C:\Live\Sub)";
                std::wstring file = L"a.txt";
                g_sink = MapRestorePath1(path, file, *mappings);
            },
            [mappings] { BareMapping(*mappings, LR"(C:\Live\Sub)"); },
            {},
            {},
            {},
            0,
            count};
}

} // namespace

std::vector<Row> MatchRows()
{
    const std::wstring name = L"a document with a name.txt";
    std::vector<Row> rows = {
        MatchRow("*.txt against a name, same folder", {LR"(C:\Data\Sub)", L"*.txt", false},
                 {LR"(c:\data\sub\)", name, false}),
        MatchRow("*.txt against a name, tree", {LR"(C:\Data)", L"*.txt", true}, {LR"(C:\Data\Sub)", name, false}),
        MatchRow("*.txt against a name, no match", {LR"(C:\Data)", L"*.doc", true}, {LR"(C:\Data\Sub)", name, false}),
        MatchRow("equal names of 200 characters", {LR"(C:\Data)", std::wstring(200, L'a'), true},
                 {LR"(C:\Data\Sub)", std::wstring(200, L'a'), false}),
        MatchRow("260 star-letter pairs against letters", {LR"(C:\Data)", Repeated(L"*a", 260), true},
                 {LR"(C:\Data\Sub)", std::wstring(520, L'a'), false}),
        MatchRow("two patterns of 260 star-letter pairs", {LR"(C:\Data)", Repeated(L"*a", 260), true},
                 {LR"(C:\Data\Sub)", Repeated(L"b*", 260), false}),
    };
    for (const int count : {10, 1000, 100000}) {
        rows.push_back(MappingRow(count, L"*"));
    }
    rows.push_back(MappingRow(1000, L"*.doc"));
    return rows;
}

} // namespace bench
