// Named streams.

#include "agent/platform/Streams.h"

#include "agent/platform/Handles.h"

#include <windows.h>

namespace agent {

std::vector<std::wstring> ListNamedStreams(const std::wstring& path)
{
    constexpr std::wstring_view kContent = L"::$DATA"; // the file's own content
    std::vector<std::wstring> names;
    WIN32_FIND_STREAM_DATA stream = {};
    const UniqueSearch search = OwnSearch(::FindFirstStreamW(path.c_str(), FindStreamInfoStandard, &stream, 0));
    for (bool found = search != nullptr; found; found = ::FindNextStreamW(search.get(), &stream) != FALSE) {
        if (stream.cStreamName != kContent) {
            names.emplace_back(stream.cStreamName);
        }
    }
    return names;
}

} // namespace agent
