// The library before a host has registered anything: its lines go to standard output.

#include "tests/support/CapturedOutput.h"
#include "tests/support/ExportPatch.h"
#include "tests/support/FileTools.h"
#include "tests/support/LoadedLibrary.h"
#include "tests/support/TestDirectory.h"

#include <gtest/gtest.h>

#include <ctime>
#include <string>

namespace {

constexpr const char* kSendKaLine = "Kestrovane: frame/FileManager.cpp::154::SendKA\n";

// Windows' text for an error, as narrow text; its own line end comes as "\n".
std::string SystemText(DWORD error)
{
    wchar_t* text = nullptr;
    ::FormatMessageW(FORMAT_MESSAGE_ALLOCATE_BUFFER | FORMAT_MESSAGE_FROM_SYSTEM, nullptr, error, 0x400,
                     reinterpret_cast<wchar_t*>(&text), 0, nullptr);
    const UniqueLocalMemory<wchar_t> owner(text);
    std::string narrow = Utf8(text);
    std::erase(narrow, '\r');
    return narrow;
}

std::clock_t g_now = 0; // of FakeClock, ticks

std::clock_t __cdecl FakeClock()
{
    return g_now;
}

// Calls the library while its own initialisers run.
std::clock_t __cdecl ClockThatCallsSendKA()
{
    Exported<decltype(SendKA)>(::GetModuleHandleA("Kestrovane.dll"), "_Z6SendKAPKc")(nullptr);
    return 0;
}

} // namespace

TEST(BuiltInSinks, PrintTheLinesOfFreeFunctionsWithThePrefix)
{
    const LoadedLibrary library;
    CapturedOutput output;
    library.SendKA();
    EXPECT_EQ(kSendKaLine, output.Text());
}

TEST(BuiltInSinks, PrintWideTextsOfARestoreMapping)
{
    const LoadedLibrary library;
    std::wstring path = LR"(C:\Data)";
    std::wstring spec = L"a.txt";
    std::vector<VSS_ALTERNATE_MAPPING> mappings = {{LR"(C:\Data)", LR"(D:\New)", L"*", true}};
    CapturedOutput output;
    EXPECT_TRUE(library.MapRestorePath(path, spec, mappings));
    EXPECT_EQ("Kestrovane: <query>   'C:\\DATA\\', Spec = 'A.TXT',Recursive='false'\n "
              "Kestrovane: <mapping> 'C:\\DATA\\', Spec = '*',Recursive='true'\n "
              "Kestrovane: Condition 1\n"
              "Kestrovane: Condition 2\n",
              output.Text());
}

TEST(BuiltInSinks, PrintEachLineOfAFailureReportWithThePrefix)
{
    const LoadedLibrary library;
    CapturedOutput output;
    ::SetLastError(ERROR_ACCESS_DENIED);
    EXPECT_FALSE(library.isDirectoryExists(L""));
    EXPECT_EQ("Kestrovane:    - : 5\n"
              "Kestrovane:    - Returned HRESULT = 0x80070005\n"
              "Kestrovane:    - Error text: " +
                  SystemText(ERROR_ACCESS_DENIED) + "\n",
              output.Text());
}

TEST(BuiltInSinks, PrintTheProgressOfAListing)
{
    const LoadedLibrary library;
    const TestDirectory tree;
    tree.File(L"a.txt");
    CapturedOutput output;
    library.ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ("Kestrovane: file =  a.txt\n", output.Text());
}

// The clock is a simulation: the listing is due to keep the host alive, and there is no host.
TEST(BuiltInSinks, TakeAKeepAliveInSilence)
{
    g_now = 0;
    const ExportPatch clock("msvcrt.dll", "clock", &FakeClock);
    const LoadedLibrary library;
    const TestDirectory tree;
    g_now = 600001;
    CapturedOutput output;
    library.ListFilesFilter(tree.Root(), L"*", false);
    EXPECT_EQ("", output.Text());
}

// The clock is a simulation. It is the first that the library's initialisers call.
TEST(BuiltInSinks, ArePlacedBeforeAnyCodeOfTheLibraryRuns)
{
    const ExportPatch clock("msvcrt.dll", "clock", &ClockThatCallsSendKA);
    CapturedOutput output;
    {
        const LoadedLibrary library;
    }
    EXPECT_EQ(std::string(kSendKaLine) + kSendKaLine, output.Text()) << "one for each of two readings of the clock";
}
