// Rows of the host functions and of the path functions.

#include "tests/contract/functions/ExportedFunction.h"
#include "tests/support/SilentHost.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

namespace {

std::string Narrowed(const std::wstring& string)
{
    std::string narrow;
    for (const wchar_t character : string) {
        narrow += static_cast<char>(character & 0xFF);
    }
    return narrow;
}

// Cut at its last `mark`, a path is what the library's two functions for that mark return.
void ExpectCutAt(wchar_t mark, const std::wstring& path, const std::wstring& before, const std::wstring& after)
{
    if (path.find(mark) == std::wstring::npos) {
        EXPECT_TRUE(before.empty() && after.empty());
    } else {
        EXPECT_EQ(path, before + mark + after);
        EXPECT_EQ(std::wstring::npos, after.find(mark));
    }
}

// The path as the library makes it absolute. Those with the mark of a volume would be translated, but are absolute.
std::wstring Absolute(const std::wstring& path)
{
    return path.starts_with(LR"(\\h\volume$)") ? path : GetPathFileTranslate(path);
}

} // namespace

const std::vector<ExportedFunction> kFrameFunctions = {
    {"SetVssFileManagerLogger",
     AddressOf(&SetVssFileManagerLogger),
     Throws::kNothing,
     {{"", [](const CallGround&, const RunCall& run) { run(&RegisterSilentHost); }}},
     {}},
    {"SendKA",
     AddressOf(&SendKA),
     Throws::kNothing,
     {{"", [](const CallGround&, const RunCall& run) { run([] { SendKA(nullptr); }); }}},
     {{"unused", Effect::kReads,
       [](const CallGround&, const std::wstring& string) { SendKA(Narrowed(string).c_str()); }}}},
};

const std::vector<ExportedFunction> kPathFunctions = {
    {"GetFileName",
     AddressOf(&GetFileName),
     Throws::kBadAlloc,
     {{"", [](const CallGround&,
              const RunCall& run) { run([] { GetFileName(LR"(..\..\a file with a long name.txt)"); }); }},
      {"rejected", [](const CallGround&, const RunCall& run) { run([] { GetFileName(LR"(..\f*.txt)"); }); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           ExpectCutAt(L'\\', Absolute(path), GetPathFileName(path), GetFileName(path));
       }}}},
    {"GetPathFileName",
     AddressOf(&GetPathFileName),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { GetPathFileName(LR"(..\f.txt)"); }); }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { GetPathFileName(path); }}}},
    {"GetPathFileNameNoVolume",
     AddressOf(&GetPathFileNameNoVolume),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { GetPathFileNameNoVolume(LR"(..\f.txt)"); }); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           ExpectCutAt(L':', Absolute(path), GetVolume(path), GetPathFileNameNoVolume(path));
       }}}},
    {"GetVolume",
     AddressOf(&GetVolume),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { GetVolume(LR"(..\f.txt)"); }); }}},
     {{"path", Effect::kReads, [](const CallGround&, const std::wstring& path) { GetVolume(path); }}}},
    {"GetPathFileTranslate",
     AddressOf(&GetPathFileTranslate),
     Throws::kBadAlloc,
     {{"", [](const CallGround&,
              const RunCall& run) { run([] { GetPathFileTranslate(LR"(..\..\..\..\..\..\f.txt)"); }); }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           EXPECT_EQ(std::wstring::npos, GetPathFileTranslate(path).find(L'/'));
       }}}},
    {"AppendBackslash",
     AddressOf(&AppendBackslash),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring path = LR"(C:\a directory with a long name)";
           run([&] { AppendBackslash(std::move(path)); });
       }}},
     {{"path", Effect::kReads,
       [](const CallGround&, const std::wstring& path) {
           const std::wstring ended = AppendBackslash(path);
           EXPECT_TRUE(ended.starts_with(path) && ended.ends_with(L'\\'));
           EXPECT_EQ(ended, AppendBackslash(ended));
       }}}},
};
