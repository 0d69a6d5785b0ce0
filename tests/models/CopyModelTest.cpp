// The file copy beside its model: random paths, sizes and failures of a simulated platform.

#include "tests/models/CopyModel.h"
#include "tests/models/RandomRounds.h"
#include "tests/support/ImportPatch.h"
#include "tests/support/SilentHost.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <algorithm>
#include <cerrno>
#include <cstdarg>
#include <cstring>

namespace {

SimulatedFiles* g_files = nullptr;

int __cdecl Open(const wchar_t* path, int flags, ...)
{
    return g_files->Open(path, flags);
}
int __cdecl Close(int descriptor)
{
    return g_files->Close(descriptor);
}
wchar_t* __cdecl ReadCurrentDirectory(wchar_t* buffer, int capacity)
{
    return g_files->ReadCurrentDirectory(buffer, capacity) ? buffer : nullptr;
}
int __cdecl ChangeDirectory(const wchar_t* directory)
{
    return g_files->ChangeDirectory(directory);
}
int __cdecl CreateOneDirectory(const wchar_t* directory)
{
    return g_files->CreateDirectory(directory);
}
int __cdecl Print(const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    std::wstring line(format, format + std::strlen(format));
    line += line.find(L'%') == std::wstring::npos ? L"" : std::wstring(L" | ") + va_arg(arguments, const wchar_t*);
    va_end(arguments);
    g_files->Print(line);
    return 0;
}
DWORD WINAPI Attributes(const wchar_t* path)
{
    return g_files->Attributes(path);
}
HANDLE WINAPI OpenHandle(const wchar_t* path, DWORD access, DWORD share, SECURITY_ATTRIBUTES* security,
                         DWORD disposition, DWORD flags, HANDLE model)
{
    EXPECT_EQ(nullptr, security);
    EXPECT_EQ(nullptr, model);
    return g_files->CreateFile(path, access, share, disposition, flags);
}
BOOL WINAPI Read(HANDLE file, void* buffer, DWORD size, DWORD* read, OVERLAPPED* /*overlapped*/)
{
    return g_files->Read(file, buffer, size, *read);
}
BOOL WINAPI Write(HANDLE file, const void* buffer, DWORD size, DWORD* written, OVERLAPPED* /*overlapped*/)
{
    return g_files->Write(file, buffer, size, *written);
}
BOOL WINAPI CloseFile(HANDLE file)
{
    return g_files->CloseHandle(file);
}

std::wstring RandomDirectory(RandomInput& input)
{
    constexpr std::size_t kDeepest = 4;
    std::wstring directory = LR"(Q:\)";
    for (std::size_t left = input.Below(kDeepest); left > 0; --left) {
        directory += L"d" + input.Of(L"ab. \xE9", 3) + (input.OneIn(10) ? L"\\\\" : L"\\"); // seldom an empty component
    }
    return directory;
}

std::string RandomContent(RandomInput& input)
{
    constexpr std::size_t kBlock = 8192; // bytes that a copy moves at a time
    constexpr std::size_t kMostBlocks = 3;
    const std::size_t blocks = input.Below(kMostBlocks + 1) * kBlock;
    const std::size_t odd = input.OneIn(3) ? 0 : input.Below(input.OneIn(2) ? 2 : kBlock);
    std::string content(blocks + odd, '\0');
    for (std::size_t i = 0; i < content.size(); i += 97) {
        content[i] = static_cast<char>(input.Below(256));
    }
    return content;
}

// One call of either function.
struct Call {
    std::wstring source;
    std::wstring directory; // with its trailing backslash
    std::wstring name;      // empty: the name of the source is kept
    std::string content;
    CallScript::Failures failures;
};

Call RandomCall(RandomInput& input)
{
    constexpr std::size_t kCallsThatMayFail = 25;
    Call call;
    call.source = input.OneIn(20) ? L"" : RandomDirectory(input) + L"s" + input.Of(L"xyz.", 3);
    call.directory = RandomDirectory(input);
    call.name = input.OneIn(2) ? L"" : L"t" + input.Of(L"xyz.", 3);
    call.content = RandomContent(input);
    call.failures = RandomFailures(input, kCallsThatMayFail);
    return call;
}

struct Outcome {
    int result;
    DWORD lastError;
    int errnoCode;

    bool operator==(const Outcome&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Outcome& outcome)
{
    return out << "result " << outcome.result << ", last error " << outcome.lastError << ", errno "
               << outcome.errnoCode;
}

template <typename Function>
Outcome OutcomeOf(Function function)
{
    ::SetLastError(ERROR_INVALID_DATA);
    errno = 0;
    const int result = function();
    const DWORD lastError = ::GetLastError();
    return {result, lastError, errno};
}

Outcome OfModel(CopyModel& model, SimulatedFiles& files, const Call& call)
{
    return OutcomeOf([&] {
        return call.name.empty() ? model.CopyToDirectory(files, call.source, call.directory)
                                 : model.CopyToPath(files, call.source, call.directory + call.name);
    });
}

std::wstring WithSlashes(std::wstring path, bool slashes)
{
    std::replace(path.begin(), path.end(), L'\\', slashes ? L'/' : L'\\');
    return path;
}

Outcome OfLibrary(SimulatedFiles& files, const Call& call, bool slashes)
{
    g_files = &files;
    RegisterScriptHost(files.script);
    const std::wstring source = WithSlashes(call.source, slashes);
    const std::wstring directory = WithSlashes(call.directory, slashes);
    return OutcomeOf([&] {
        return call.name.empty() ? DoCopyComponentFileToDir(source, directory)
                                 : DoCopyComponentFile(source, directory + call.name);
    });
}

class CopyModelTest : public RandomRounds {
protected:
    void TearDown() override { RegisterSilentHost(); }

private:
    const ImportPatch m_open{"_wopen", &Open};
    const ImportPatch m_close{"_close", &Close};
    const ImportPatch m_current{"_wgetcwd", &ReadCurrentDirectory};
    const ImportPatch m_change{"_wchdir", &ChangeDirectory};
    const ImportPatch m_create{"_wmkdir", &CreateOneDirectory};
    const ImportPatch m_print{"printf", &Print};
    const ImportPatch m_attributes{"GetFileAttributesW", &Attributes};
    const ImportPatch m_handle{"CreateFileW", &OpenHandle};
    const ImportPatch m_read{"ReadFile", &Read};
    const ImportPatch m_write{"WriteFile", &Write};
    const ImportPatch m_closeHandle{"CloseHandle", &CloseFile};
    const ImportPatch m_message{"FormatMessageW", &FormatScriptMessage};
};

// Leaves a known code in the file manager's error state: that of a copy whose target cannot be opened.
int RecordKnownCode()
{
    // _wopen, _close, _wgetcwd, _wchdir, _wmkdir, _wchdir, _wchdir, CreateFileW
    SimulatedFiles files("", {{4, ERROR_ALREADY_EXISTS}});
    const Call call = {LR"(Q:\s)", LR"(Q:\d\)", L"", "", {}};
    EXPECT_EQ(1, OfLibrary(files, call, false).result);
    return ERROR_ALREADY_EXISTS;
}

} // namespace

TEST_F(CopyModelTest, MakesTheSameCallsAsItsModel)
{
    CopyModel model(RecordKnownCode());
    int copied = 0;
    const int rounds = Rounds();
    for (int round = 0; round < rounds && !HasFailure(); ++round) {
        SCOPED_TRACE(Title(round));
        const Call call = RandomCall(input);
        SimulatedFiles expected(call.content, call.failures);
        SimulatedFiles actual(call.content, call.failures);
        const Outcome ofModel = OfModel(model, expected, call);
        const Outcome ofLibrary = OfLibrary(actual, call, input.OneIn(4));
        EXPECT_EQ("", FirstDifference(expected.script, actual.script));
        EXPECT_EQ(ofModel, ofLibrary);
        EXPECT_TRUE(expected.Written() == actual.Written()) << "other bytes were written";
        copied += ofLibrary.result;
    }
    EXPECT_LT(rounds / 10, copied) << "hardly any file is copied";
    EXPECT_GT(rounds * 9 / 10, copied) << "hardly any copy fails";
}
