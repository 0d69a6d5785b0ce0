// The fixture of the agent's tests: two directories on C: and D:, and results as JSON.

#pragma once

#include "tests/support/AgentProcess.h"
#include "tests/support/TestDirectory.h"

#include <nlohmann/json.hpp>

#include <gtest/gtest.h>

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

    TestDirectory live;
    TestDirectory store{L"D:\\"};
};
