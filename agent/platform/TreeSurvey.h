// What a command that works through a tree would touch.

#pragma once

#include <cstdint>
#include <string>
#include <utility>
#include <vector>

namespace agent {

constexpr int kDeepestSurvey = 128; // levels of directories

struct SurveyOptions {
    std::wstring filter;      // not empty: only files of the directory itself that match
    bool followLinks = false; // enters links to directories
};

struct TreeSurvey {
    std::vector<std::wstring> files;                             // full paths
    std::vector<std::wstring> readOnly;                          // those of them that cannot be deleted as they are
    std::vector<std::wstring> links;                             // directories that are links
    std::vector<std::pair<std::wstring, std::wstring>> failures; // directory and reason
    std::int64_t directories = 0;
    std::int64_t bytes = 0;
    bool tooDeep = false; // the walk stopped at kDeepestSurvey levels
};

TreeSurvey SurveyTree(const std::wstring& directory, const SurveyOptions& options);

} // namespace agent
