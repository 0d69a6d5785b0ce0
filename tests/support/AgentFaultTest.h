// The fixture of tests that make each call of Windows fail that a command of the agent makes. Simulations.

#pragma once

#include "tests/support/AgentFaults.h"
#include "tests/support/AgentTest.h"

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <functional>

class AgentFaultTest : public AgentTest {
protected:
    using Prepare = std::function<void()>;
    // What must hold after a run, and the import that failed in it (empty: none).
    using Check = std::function<void(const AgentResult& result, const std::string& failing)>;

    // Runs a command as it is, and then with the first and the last call of each import failing, and with all of them.
    // KESTROVANE_EVERY_CALL makes that each of the first 20 calls.
    static void Sweep(const char* what, std::vector<std::wstring> arguments, const Prepare& prepare, const Check& check)
    {
        arguments.insert(arguments.begin(), L"--json");
        prepare();
        const AgentFaultRun usual = RunAgentWithout(nullptr, arguments);
        check(usual.result, {});
        int imports = 0;
        int failures = 0;
        for (std::size_t i = 0; i < usual.calls.size(); ++i) {
            imports += usual.calls[i] > 0 ? 1 : 0;
            for (const auto& [first, last] : CallsToFail(usual.calls[i])) {
                Fail({i, first, last}, arguments, prepare, check);
                ++failures;
            }
        }
        EXPECT_LT(3, imports) << "the sweep has reached too little";
        std::printf("failing calls in %s (simulated): %d imports, %d failures, %s\n", what, imports, failures,
                    HasFailure() ? "FINDINGS" : "no finding");
    }

    // The files of a directory with their content; the names are relative.
    static std::vector<std::pair<std::wstring, std::string>> Snapshot(const std::wstring& directory)
    {
        std::vector<std::pair<std::wstring, std::string>> files;
        std::error_code error;
        for (const auto& entry : std::filesystem::recursive_directory_iterator(directory, error)) {
            const std::wstring path = entry.path().wstring();
            files.emplace_back(path.substr(directory.size()), IsDirectory(path) ? "/" : ReadFileBytes(path));
        }
        std::sort(files.begin(), files.end());
        return files;
    }

private:
    static std::vector<std::pair<int, int>> CallsToFail(int calls)
    {
        constexpr int kMostCalls = 20;
        constexpr int kForEver = 1000000;
        std::vector<std::pair<int, int>> failing;
        if (calls <= 0) {
            return failing;
        }
        const bool every = std::getenv("KESTROVANE_EVERY_CALL") != nullptr;
        for (int call = 1; call <= std::min(calls, kMostCalls); ++call) {
            if (every || call == 1) {
                failing.emplace_back(call, call);
            }
        }
        if (calls > (every ? kMostCalls : 1)) {
            failing.emplace_back(calls, calls);
        }
        if (calls > 1) {
            failing.emplace_back(1, kForEver);
        }
        return failing;
    }

    static void Fail(const PlannedAgentFailure& failure, const std::vector<std::wstring>& arguments,
                     const Prepare& prepare, const Check& check)
    {
        const std::string name = FailingAgentCalls()[failure.import].name;
        SCOPED_TRACE(name + " fails in its calls " + std::to_string(failure.first) + " to " +
                     std::to_string(failure.last));
        prepare();
        const AgentResult result = RunAgentWithout(&failure, arguments).result;
        ExpectDocumented(result, name);
        check(result, name);
        if (::testing::Test::HasFailure()) {
            std::printf("exit code %lu\n%s%s\n", result.exitCode, result.output.c_str(), result.messages.c_str());
        }
    }

    // A documented exit code, and one JSON object with it, unless the output itself or the command line failed. What is
    // not done is told.
    static void ExpectDocumented(const AgentResult& result, const std::string& failing)
    {
        EXPECT_LE(result.exitCode, 4U);
        const bool isOutput =
            failing == "WriteFile" || failing == "DuplicateHandle" || failing == "WideCharToMultiByte";
        const Json report = Json::parse(result.output, nullptr, false);
        if (report.is_object()) {
            EXPECT_EQ(result.exitCode, report.value("exitCode", 99U));
        } else {
            EXPECT_EQ(1U, result.exitCode);
            EXPECT_TRUE(isOutput || failing == "CommandLineToArgvW");
        }
        const bool isUndone = result.exitCode >= 1 && result.exitCode <= 3;
        EXPECT_FALSE(isUndone && result.messages.empty() && !isOutput) << "nothing is told";
    }
};
