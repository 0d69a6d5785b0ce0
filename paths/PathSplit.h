// The four parts of a path: drive, directory, name and extension.

#pragma once

#include <string>

struct PathParts {
    std::wstring drive;     // with its colon; empty for a path without one
    std::wstring directory; // up to and with the last separator
    std::wstring name;
    std::wstring extension; // with its dot
};

// Splits a path as the runtime library does, up to a terminator inside it, whatever the length of its parts.
PathParts SplitPath(const std::wstring& path);

// Splits a path and cuts directory, name and extension to the 255 characters that path validation looks at.
PathParts SplitPathForValidation(const std::wstring& path);
