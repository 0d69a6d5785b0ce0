// A plain restatement of the file copy's steps, and the simulated platform that it and the library work on.

#pragma once

#include "tests/models/CallScript.h"

#include <windows.h>

#include <string>

// One source file, one target file and directories in memory. Every call is added to the script and fails if the script
// says so. The error of a failed call of the runtime library is a number of its own.
class SimulatedFiles {
public:
    SimulatedFiles(std::string content, CallScript::Failures failures)
        : script(std::move(failures)), m_content(std::move(content))
    {
    }

    int Open(const std::wstring& path, int flags);
    int Close(int descriptor);
    bool ReadCurrentDirectory(wchar_t* buffer, int capacity);
    int ChangeDirectory(const std::wstring& directory);
    int CreateDirectory(const std::wstring& directory);
    void Print(const std::wstring& line);
    DWORD Attributes(const std::wstring& path);
    HANDLE CreateFile(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags);
    BOOL Read(HANDLE file, void* buffer, DWORD size, DWORD& read);
    BOOL Write(HANDLE file, const void* buffer, DWORD size, DWORD& written);
    BOOL CloseHandle(HANDLE file);

    [[nodiscard]] const std::string& Written() const { return m_written; }

    CallScript script;

private:
    bool RuntimeSucceeds(std::wstring call);

    std::string m_content;
    std::size_t m_position = 0; // in the content
    std::string m_written;
    std::uintptr_t m_handles = 0;
};

// What the two copy functions do, step by step. The last error, errno and the file manager's last error code live on.
class CopyModel {
public:
    // The code that the library's file manager has recorded last.
    explicit CopyModel(int lastErrorCode) : m_lastErrorCode(lastErrorCode) {}

    int CopyToDirectory(SimulatedFiles& files, const std::wstring& source, const std::wstring& directory);
    int CopyToPath(SimulatedFiles& files, const std::wstring& source, const std::wstring& target);

private:
    int CopyAs(SimulatedFiles& files, const std::wstring& source, const std::wstring& directory,
               const std::wstring& name);
    void CreateDirectories(SimulatedFiles& files, const std::wstring& directory);

    int m_lastErrorCode;
};
