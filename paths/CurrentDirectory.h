// The process's current directory: reading, changing and restoring it.

#pragma once

#include <optional>
#include <string>

// Returns the current directory; nothing if it cannot be read or has 260 characters or more.
[[nodiscard]] std::optional<std::wstring> ReadCurrentDirectory();

// Changes the process's current directory. On failure, errno and the last error are those of the attempt.
bool ChangeCurrentDirectory(const std::wstring& directory);

// Restores the process's current directory at the end of the scope. errno and the thread's last error are unchanged.
class CurrentDirectoryGuard {
public:
    CurrentDirectoryGuard();
    ~CurrentDirectoryGuard();
    CurrentDirectoryGuard(const CurrentDirectoryGuard&) = delete;
    CurrentDirectoryGuard& operator=(const CurrentDirectoryGuard&) = delete;

    // False if the current directory could not be read. It must not be changed then.
    [[nodiscard]] bool CanRestore() const noexcept { return m_saved.has_value(); }

    // Changes the process's current directory, and returns whether that succeeded. If there is no directory to go back
    // to, because the current one cannot be read, nothing is changed and the attributes of `directory` decide.
    [[nodiscard]] bool Enter(const std::wstring& directory) const;

private:
    std::optional<std::wstring> m_saved;
};
