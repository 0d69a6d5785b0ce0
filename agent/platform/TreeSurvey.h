// What a command that works through a tree would touch.

#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace agent {

constexpr int kDeepestSurvey = 128; // levels of directories

struct TreeSurvey {
    std::vector<std::wstring> files;    // full paths
    std::vector<std::wstring> readOnly; // those of them that cannot be deleted as they are
    std::vector<std::wstring> links;    // directories that are links
    std::int64_t directories = 0;
    std::int64_t bytes = 0;
    bool tooDeep = false; // the walk stopped at kDeepestSurvey levels
};

// Without a filter the whole tree, with one the files of the directory alone. Links are entered only with `followLinks`.
TreeSurvey SurveyTree(const std::wstring& directory, const std::wstring& filter, bool followLinks);

} // namespace agent
