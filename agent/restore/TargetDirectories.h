// The directories that a restore writes into: each is checked and created once, and gets its times and attributes at
// the end.

#pragma once

#include "agent/console/Report.h"
#include "agent/platform/IgnoringCase.h"
#include "agent/restore/RestorePlan.h"

#include <map>
#include <optional>
#include <string>
#include <vector>

namespace agent {

class TargetDirectories {
public:
    // Creates the directory, where it is missing. @return why no file may be written there.
    std::optional<std::wstring> Prepare(const std::wstring& directory, const std::wstring& bound);

    // The outermost directories that were not there before.
    [[nodiscard]] const std::vector<std::wstring>& Created() const { return m_created; }
    [[nodiscard]] bool IsInCreated(const std::wstring& path) const;

    // Restores times and attributes, and with --security the security descriptors; innermost first, because work in a
    // directory changes its times. Directories that were there already are left alone unless existing files may be
    // overwritten, too.
    void Finish(const std::vector<DirectoryStep>& steps, const RestoreOptions& options, Report& report) const;

private:
    std::optional<std::wstring> Create(const std::wstring& directory, const std::wstring& bound);

    std::map<std::wstring, std::optional<std::wstring>, LessIgnoringCase> m_prepared; // with the reason of a failure
    std::vector<std::wstring> m_created;
};

} // namespace agent
