// A copy of one file, which is hashed while it is copied.

#pragma once

#include "agent/platform/Digest.h"

#include <windows.h>

#include <optional>
#include <string>

namespace agent {

struct CopyResult {
    std::optional<FileDigest> digest; // of the content; nothing when the copy failed
    bool isShared = false;            // another process had the source open
    bool isSourceError = false;       // whether `error` is about the source
    DWORD error = ERROR_SUCCESS;
};

// Copies the source, which is opened exclusively, or, where another process has it open, with the widest sharing.
// Nothing is left of a failed copy. Unlike the library's copy, this fails when the source cannot be read to its end, and
// reads each byte once for the copy and its digest.
CopyResult CopyAndDigest(const std::wstring& source, const std::wstring& target);

// Copies the source, which is opened with the widest sharing, into an open file. A failed copy leaves what it wrote.
CopyResult CopyInto(HANDLE target, const std::wstring& source);

} // namespace agent
