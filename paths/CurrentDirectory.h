// The process's current directory, as far as the library reads it, and its restoration.

#pragma once

#include <string>

// The current directory; empty when it has 260 characters or more.
std::wstring ReadCurrentDirectory();

// Changes the process's current directory; errno and the last error tell why not.
bool ChangeCurrentDirectory(const std::wstring& directory);

// Remembers the process's current directory and goes back to it at the end of the scope, which leaves errno and
// the thread's last error alone.
class CurrentDirectoryGuard {
public:
    CurrentDirectoryGuard();
    ~CurrentDirectoryGuard();
    CurrentDirectoryGuard(const CurrentDirectoryGuard&) = delete;
    CurrentDirectoryGuard& operator=(const CurrentDirectoryGuard&) = delete;

    // As ReadCurrentDirectory gave it at the start of the scope.
    const std::wstring& Saved() const noexcept { return m_saved; }

private:
    std::wstring m_saved;
    std::wstring m_overlong; // the directory that Saved() has no room for
};
