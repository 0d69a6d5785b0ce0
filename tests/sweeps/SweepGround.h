// The files of a sweep: those that calls work on, and others that no call names.

#pragma once

#include "tests/contract/functions/ExportedFunction.h"

#include <map>
#include <string>

// The state of a tree: the content of each file; "/" for a directory.
using TreeContents = std::map<std::wstring, std::string>;

TreeContents ReadTree(const std::wstring& directory);

class SweepGround {
public:
    explicit SweepGround(const CallGround& calls);

    // Checks what one call did to the tree, and restores the tree. Calls that only read have changed nothing. The
    // others have changed no file but those that they name, and created nothing but what they may create.
    void CheckAndRestore(bool callsChange);
    // Restores the tree, whatever was done to it.
    void Clean();
    // The names that calls created below the tree until the last CheckAndRestore.
    [[nodiscard]] const TreeContents& Created() const { return m_created; }

private:
    // What is in the tree now.
    TreeContents Read();
    void CheckKept(const TreeContents& now, bool callsChange) const;
    void CheckCreated(bool callsChange) const;
    void Restore(const TreeContents& now) const;

    const CallGround& m_calls;
    TreeContents m_pristine;
    TreeContents m_created;
};
