// The fixture of the suites that hold for every exported function.

#pragma once

#include "tests/contract/functions/ExportedFunction.h"
#include "tests/support/LibraryTest.h"
#include "tests/support/SilentHost.h"
#include "tests/support/WorkingDirectory.h"

#include <algorithm>
#include <cctype>
#include <ostream>

inline BOOL WINAPI RegisterNoMove(const wchar_t* /*source*/, const wchar_t* /*target*/, DWORD /*flags*/)
{
    return TRUE;
}

inline int __cdecl PrintNothing(const char* /*format*/, ...)
{
    return 0;
}

class EveryFunctionTest : public LibraryTest, public ::testing::WithParamInterface<ExportedFunction> {
protected:
    // The first exception of a process may cost it handles for good; it is thrown before the handles are counted.
    static void SetUpTestSuite() { EXPECT_THROW(throw 0, int); }

    void SetUp() override
    {
        LibraryTest::SetUp();
        RegisterSilentHost(); // a recorder would keep every line
        ground.Build();
    }

    // Calls the function once, as `run` has it, from the directory `home` of the ground.
    void Make(const SampleCall& call, const RunCall& run) const
    {
        const WorkingDirectory in(ground.home);
        call.make(ground, run);
    }

    // For messages.
    static std::string Title(const SampleCall& call)
    {
        return std::string(GetParam().name) + (*call.circumstances == '\0' ? "" : ", ") + call.circumstances;
    }

    const CallGround ground{tree};

private:
    // What is registered for the next reboot belongs to other tests at the same time.
    const ImportPatch m_noMoves{"MoveFileExW", &RegisterNoMove};
    // Messages of failed creations and look-ups. To capture them would also capture what the tests report.
    const ImportPatch m_noMessages{"printf", &PrintNothing};
};

inline void PrintTo(const ExportedFunction& function, std::ostream* out)
{
    *out << function.name;
}

// The name of a function as a part of its test's name.
inline std::string TestNameOf(const ::testing::TestParamInfo<ExportedFunction>& info)
{
    std::string name = info.param.name;
    std::erase_if(name, [](unsigned char character) { return std::isalnum(character) == 0; });
    return name;
}
