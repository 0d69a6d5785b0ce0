// Rows of the functions of strings, lists and maps.

#include "tests/contract/functions/ExportedFunction.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <cwchar>

namespace {

using StringMap = std::map<std::wstring, std::wstring>;

constexpr wchar_t kMark = L'\x1234'; // in none of the strings

// Too long for a string object's own buffer.
const std::wstring kLong = L"a string that needs memory";

} // namespace

const std::vector<ExportedFunction> kStringFunctions = {
    {"IsEqual",
     AddressOf(&IsEqual),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring first = kLong;
           std::wstring second = kLong;
           run([&] { IsEqual(std::move(first), std::move(second)); });
       }}},
     {{"first and second", Effect::kReads,
       [](const CallGround&, const std::wstring& string) { EXPECT_TRUE(IsEqual(string, string)); }}}},
    {"FindStringInList",
     AddressOf(&FindStringInList),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringList list = {L"other", kLong};
           std::wstring string = kLong;
           run([&] { FindStringInList(std::move(string), std::move(list)); });
       }}},
     {{"text and list", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_TRUE(FindStringInList(string, {L"other", string}));
       }}}},
    {"FindMatchStringInList",
     AddressOf(&FindMatchStringInList),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringList list = {L"other", kLong};
           std::wstring string = kLong;
           run([&] { FindMatchStringInList(std::move(string), std::move(list)); });
       }}},
     {{"text and list", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_TRUE(FindMatchStringInList(L"<" + string + L">", {string}));
       }}}},
    {"WStringAfterWCHAR",
     AddressOf(&WStringAfterWCHAR),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring string = L"|" + kLong;
           run([&] { WStringAfterWCHAR(std::move(string), L'|'); });
       }}},
     {{"text", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_EQ(string, WStringAfterWCHAR(kMark + string, kMark));
       }}}},
    {"WStringBeforeWCHAR",
     AddressOf(&WStringBeforeWCHAR),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           std::wstring string = kLong + L"|";
           run([&] { WStringBeforeWCHAR(std::move(string), L'|'); });
       }}},
     {{"text", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_EQ(string, WStringBeforeWCHAR(string + kMark, kMark));
       }}}},
    {"WString2UpperCase",
     AddressOf(&WString2UpperCase),
     Throws::kBadAlloc,
     {{"", [](const CallGround&, const RunCall& run) { run([] { WString2UpperCase(kLong); }); }}},
     {{"text", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           const std::wstring upper = WString2UpperCase(string);
           EXPECT_EQ(string.size(), upper.size());
           EXPECT_EQ(upper, WString2UpperCase(upper));
       }}}},
    {"DoExpandEnvironmentStrings",
     AddressOf(&DoExpandEnvironmentStrings),
     Throws::kAtlException,
     {{"",
       [](const CallGround&, const RunCall& run) {
           CComBSTR string(L"%SystemRoot%\\a");
           run([&] { DoExpandEnvironmentStrings(string); });
       }}},
     {{"text", Effect::kReads,
       [](const CallGround&, const std::wstring& text) {
           const std::wstring given = L"%" + text;
           CComBSTR string(given.c_str());
           DoExpandEnvironmentStrings(string);
           EXPECT_GE(std::wcslen(given.c_str()), string.Length()) << "no variable has such a name";
       }}}},
    {"PrintStringVector",
     AddressOf(&PrintStringVector),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringList list = {L"other", kLong};
           run([&] { PrintStringVector("title", std::move(list)); });
       }}},
     {{"list", Effect::kReads,
       [](const CallGround&, const std::wstring& string) { PrintStringVector("title", {string}); }}}},
    {"PrintStringMap",
     AddressOf(&PrintStringMap),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringMap map = {{L"other", kLong}};
           run([&] { PrintStringMap("title", std::move(map)); });
       }}},
     {{"map", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           PrintStringMap("title", {{string, string}});
       }}}},
    {"FindStringValueInMap",
     AddressOf(&FindStringValueInMap),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringMap map = {{L"key", kLong}};
           run([&] { FindStringValueInMap(L"KEY", std::move(map)); });
       }}},
     {{"key and map", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_EQ(L"value", FindStringValueInMap(string, {{string, L"value"}}));
       }}}},
    {"FindStringKeyInMap",
     AddressOf(&FindStringKeyInMap),
     Throws::kBadAlloc,
     {{"",
       [](const CallGround&, const RunCall& run) {
           StringMap map = {{L"key", kLong}};
           std::wstring value = kLong;
           run([&] { FindStringKeyInMap(std::move(value), std::move(map)); });
       }}},
     {{"value and map", Effect::kReads,
       [](const CallGround&, const std::wstring& string) {
           EXPECT_EQ(string, FindStringKeyInMap(string, {{L"key", string}}));
       }}}},
};
