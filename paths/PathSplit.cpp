// The four parts of a path: drive, directory, name and extension.

#include "paths/PathSplit.h"

#include <cstddef>
#include <cstdlib>

namespace {

constexpr std::size_t kDriveRoom = 3;         // characters, terminator included
constexpr std::size_t kLongestPart = 256 - 1; // characters

void EndAtTerminator(std::wstring& text)
{
    text.resize(text.find(L'\0'));
}

void CutToLongestPart(std::wstring& part)
{
    if (part.size() > kLongestPart) {
        part.resize(kLongestPart);
    }
}

} // namespace

PathParts SplitPath(const std::wstring& path)
{
    // The runtime's splitter gives no part at all when one does not fit, so each gets room for the whole path.
    const std::size_t room = path.size() + 1;
    PathParts parts{std::wstring(kDriveRoom, L'\0'), std::wstring(room, L'\0'), std::wstring(room, L'\0'),
                    std::wstring(room, L'\0')};
    ::_wsplitpath_s(path.c_str(), parts.drive.data(), kDriveRoom, parts.directory.data(), room, parts.name.data(), room,
                    parts.extension.data(), room);
    EndAtTerminator(parts.drive);
    EndAtTerminator(parts.directory);
    EndAtTerminator(parts.name);
    EndAtTerminator(parts.extension);
    return parts;
}

PathParts SplitPathForValidation(const std::wstring& path)
{
    PathParts parts = SplitPath(path);
    CutToLongestPart(parts.directory);
    CutToLongestPart(parts.name);
    CutToLongestPart(parts.extension);
    return parts;
}
