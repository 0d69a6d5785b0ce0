// Running the console agent as a user does.

#include "tests/support/AgentProcess.h"

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

namespace {

constexpr DWORD kPatience = 120000; // milliseconds
constexpr DWORD kPause = 100;       // milliseconds
constexpr int kAttempts = 5;

// A file takes the output, so that neither side ever waits for the other.
HANDLE TemporaryFile()
{
    wchar_t path[MAX_PATH] = {};
    ::GetTempFileNameW(L"C:\\windows\\temp", L"agt", 0, path); // tests steer the temporary directory
    SECURITY_ATTRIBUTES inheritable = {sizeof(inheritable), nullptr, TRUE};
    return ::CreateFileW(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                         &inheritable, CREATE_ALWAYS, FILE_FLAG_DELETE_ON_CLOSE, nullptr);
}

std::string ReadFromStart(HANDLE file)
{
    LARGE_INTEGER size = {};
    ::GetFileSizeEx(file, &size);
    ::SetFilePointer(file, 0, nullptr, FILE_BEGIN);
    std::string text(static_cast<std::size_t>(size.QuadPart), '\0');
    DWORD read = 0;
    ::ReadFile(file, text.data(), static_cast<DWORD>(text.size()), &read, nullptr);
    text.resize(read);
    std::erase(text, '\r');
    return text;
}

// Quoted so that the started program sees the same text, whatever backslashes and quotation marks are in it.
std::wstring Quoted(const std::wstring& argument)
{
    std::wstring quoted = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t character : argument) {
        if (character == L'"') {
            quoted.append(backslashes + 1, L'\\');
        }
        backslashes = character == L'\\' ? backslashes + 1 : 0;
        quoted += character;
    }
    return quoted.append(backslashes, L'\\') + L"\"";
}

} // namespace

std::wstring BesideTheAgent(const std::wstring& name)
{
    wchar_t path[MAX_PATH] = {};
    ::GetModuleFileNameW(nullptr, path, MAX_PATH);
    const std::wstring program = path;
    return program.substr(0, program.rfind(L'\\') + 1) + name;
}

std::wstring AgentProgram()
{
    return BesideTheAgent(L"kestrovane-agent.exe");
}

AgentProcess::AgentProcess(const std::vector<std::wstring>& arguments)
    : m_output(TemporaryFile()), m_messages(TemporaryFile())
{
    Start(arguments, m_output);
}

AgentProcess::AgentProcess(const std::vector<std::wstring>& arguments, HANDLE output)
    : m_output(TemporaryFile()), m_messages(TemporaryFile())
{
    Start(arguments, output);
}

AgentProcess::AgentProcess(const std::vector<std::wstring>& arguments, const std::wstring& library)
    : m_output(TemporaryFile()), m_messages(TemporaryFile())
{
    Start(arguments, m_output, CREATE_SUSPENDED);
    Load(library);
    ::ResumeThread(m_process.hThread);
}

void AgentProcess::Start(const std::vector<std::wstring>& arguments, HANDLE output, DWORD flags)
{
    std::wstring command = Quoted(AgentProgram());
    for (const std::wstring& argument : arguments) {
        command += L" " + Quoted(argument);
    }
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdError = m_messages;
    const auto create = [&] {
        return ::CreateProcessW(nullptr, command.data(), nullptr, nullptr, TRUE, CREATE_NEW_PROCESS_GROUP | flags,
                                nullptr, nullptr, &startup, &m_process) != FALSE;
    };
    bool isCreated = create();
    // Wine cannot start a process now and then on a busy machine, about once in a thousand times.
    for (int attempt = 1; !isCreated && ::GetLastError() == ERROR_INTERNAL_ERROR && attempt < kAttempts; ++attempt) {
        ::Sleep(kPause);
        isCreated = create();
    }
    ASSERT_TRUE(isCreated) << "error " << ::GetLastError();
}

void AgentProcess::Load(const std::wstring& library)
{
    const SIZE_T size = (library.size() + 1) * sizeof(wchar_t);
    void* const path = ::VirtualAllocEx(m_process.hProcess, nullptr, size, MEM_COMMIT | MEM_RESERVE, PAGE_READWRITE);
    ASSERT_TRUE(::WriteProcessMemory(m_process.hProcess, path, library.c_str(), size, nullptr));
    const auto load = reinterpret_cast<LPTHREAD_START_ROUTINE>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), "LoadLibraryW")));
    const UniqueHandle thread(::CreateRemoteThread(m_process.hProcess, nullptr, 0, load, path, 0, nullptr));
    ASSERT_NE(nullptr, thread) << "error " << ::GetLastError();
    ASSERT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(thread.get(), kPatience));
    DWORD loaded = 0;
    ::GetExitCodeThread(thread.get(), &loaded);
    ASSERT_NE(0U, loaded) << Utf8(library) << " cannot be loaded";
}

AgentProcess::~AgentProcess()
{
    if (::WaitForSingleObject(m_process.hProcess, 0) != WAIT_OBJECT_0) {
        Kill();
    }
    ::CloseHandle(m_process.hProcess);
    ::CloseHandle(m_process.hThread);
    ::CloseHandle(m_output);
    ::CloseHandle(m_messages);
}

void AgentProcess::Kill()
{
    ::TerminateProcess(m_process.hProcess, 1);
    ::WaitForSingleObject(m_process.hProcess, kPatience);
}

AgentResult AgentProcess::Wait()
{
    EXPECT_EQ(WAIT_OBJECT_0, ::WaitForSingleObject(m_process.hProcess, kPatience)) << "the agent does not end";
    AgentResult result;
    ::GetExitCodeProcess(m_process.hProcess, &result.exitCode);
    result.output = ReadFromStart(m_output);
    result.messages = ReadFromStart(m_messages);
    return result;
}

AgentResult RunAgent(const std::vector<std::wstring>& arguments)
{
    return AgentProcess(arguments).Wait();
}
