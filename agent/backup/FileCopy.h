// The copy of one file into a backup.

#pragma once

#include <windows.h>

#include <string>

namespace agent {

struct CopyResult {
    bool isCopied = false;
    bool isShared = false;       // another process had the file open
    DWORD error = ERROR_SUCCESS; // of a failed copy, of which nothing is left
};

// The library's copy, which opens the source exclusively; where that fails, CopyWithSharing.
CopyResult CopyFileIntoBackup(const std::wstring& source, const std::wstring& target);

// A copy of a file that other processes may have open for reading and writing. Unlike that of the library, it also
// fails when the source cannot be read to its end.
CopyResult CopyWithSharing(const std::wstring& source, const std::wstring& target);

} // namespace agent
