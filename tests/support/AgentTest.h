// The fixture of the agent's tests: two directories on C: and D:, and results as JSON.

#pragma once

#include "tests/support/AgentProcess.h"
#include "tests/support/TestDirectory.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

#include <algorithm>

class AgentTest : public ::testing::Test {
protected:
    using Json = nlohmann::json;

    // Runs the agent with --json. Standard output must hold one object and nothing else.
    static Json RunForJson(std::vector<std::wstring> arguments, DWORD exitCode)
    {
        arguments.insert(arguments.begin(), L"--json");
        const AgentResult result = RunAgent(arguments);
        EXPECT_EQ(exitCode, result.exitCode) << result.output << result.messages;
        const Json object = Json::parse(result.output, nullptr, false);
        EXPECT_TRUE(object.is_object()) << result.output;
        EXPECT_EQ(exitCode, object.value("exitCode", 99U));
        return object;
    }

    // A live tree on C: with names and sizes of all kinds, backed up on D:.
    void MakeLiveTree()
    {
        for (const auto& [name, bytes] : LiveFiles()) {
            live.File(name, bytes);
        }
    }

    static std::vector<std::pair<std::wstring, std::string>> LiveFiles()
    {
        return {{L"a.txt", "hello"},
                {L"empty", ""},
                {L"block.bin", SampleBytes(8192)},
                {LR"(sub\b.log)", SampleBytes(8193)},
                {LR"(sub\deeper\c.txt)", SampleBytes(100000)},
                {L"gr\u00fc\u00dfe \u0436 \U0001F600.txt", "names"}};
    }

    std::wstring Backup() const { return store.Path(L"backup"); }

    void MakeBackup() const { RunForJson({L"backup", live.Root(), Backup()}, 0); }

    // The path component of a test directory that no other test has.
    static std::wstring UniquePartOf(const std::wstring& root) { return root.substr(3, root.find(L'\\', 3) - 3); }

    // The names of the versions, the oldest first.
    StringList Versions() const
    {
        StringList names;
        WIN32_FIND_DATAW entry = {};
        const HANDLE search = ::FindFirstFileW((Backup() + L"\\*").c_str(), &entry);
        if (search != INVALID_HANDLE_VALUE) {
            do {
                if (entry.cFileName[0] != L'.') {
                    names.emplace_back(entry.cFileName);
                }
            } while (::FindNextFileW(search, &entry));
            ::FindClose(search);
        }
        std::sort(names.begin(), names.end());
        return names;
    }

    // A path in the newest version.
    std::wstring Copy(const std::wstring& relative) const
    {
        const StringList versions = Versions();
        return Backup() + L"\\" + (versions.empty() ? L"no version" : versions.back()) + L"\\" + relative;
    }

    std::wstring ManifestPath() const { return Copy(L"kestrovane-manifest.json"); }
    Json Manifest() const { return Json::parse(ReadFileBytes(ManifestPath()), nullptr, false); }

    TestDirectory live;
    TestDirectory store{L"D:\\"};
};
