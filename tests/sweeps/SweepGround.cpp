// The files of a sweep: those that calls work on, and others that no call names.

#include "tests/sweeps/SweepGround.h"

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>

namespace {

// What no call names, beside each file and directory that one does.
const StringList kBystanders = {L"bystander.txt",         LR"(doomed.bystander\x.txt)", LR"(sub\bystander.txt)",
                                LR"(1\bystander.txt)",    LR"(1\2\bystander.txt)",      LR"(1\2\3\bystander.txt)",
                                LR"(there\bystander.txt)"};

// Below the tree: what calls delete.
bool MayVanish(const std::wstring& name)
{
    return name == L"doomed" || name.starts_with(LR"(doomed\)") || name == L"cache.tmp";
}

// The directories and files that calls create.
bool MayBeCreated(const std::wstring& name)
{
    // "..\x" as a directory is the parent directory.
    constexpr const wchar_t* kTops[] = {L"new",       L"to",           L"as",           LR"(1\2\new)",  LR"(1\2\to)",
                                        LR"(1\2\as)", LR"(1\2\3\new)", LR"(1\2\a.txt)", LR"(1\2\b.txt)"};
    return std::any_of(std::begin(kTops), std::end(kTops),
                       [&](const std::wstring& top) { return name == top || name.starts_with(top + L"\\"); }) ||
           (name.starts_with(L"kvt") && name.ends_with(L".tmp"));
}

void AddTree(const std::wstring& directory, const std::wstring& prefix, TreeContents& contents)
{
    for (const WIN32_FIND_DATAW& entry : EntriesOf(directory)) {
        const std::wstring path = directory + L"\\" + entry.cFileName;
        const std::wstring name = prefix + entry.cFileName;
        if ((entry.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0) {
            contents[name] = "/";
            AddTree(path, name + L"\\", contents);
        } else {
            contents[name] = ReadFileBytes(path);
        }
    }
}

// The long form of paths: it reaches names that end with dots or blanks.
std::wstring LongForm(const std::wstring& path)
{
    return LR"(\\?\)" + path;
}

} // namespace

TreeContents ReadTree(const std::wstring& directory)
{
    TreeContents contents;
    AddTree(LongForm(directory), L"", contents);
    return contents;
}

SweepGround::SweepGround(const CallGround& calls) : m_calls(calls)
{
    m_calls.Build();
    for (const std::wstring& bystander : kBystanders) {
        m_calls.tree.File(bystander, "no call names " + Utf8(bystander));
    }
    m_pristine = ReadTree(m_calls.tree.Root());
}

void SweepGround::CheckAndRestore(bool callsChange)
{
    const TreeContents now = Read();
    if (now == m_pristine) {
        return;
    }
    CheckKept(now, callsChange);
    CheckCreated(callsChange);
    Restore(now);
}

void SweepGround::Clean()
{
    const TreeContents now = Read();
    if (now != m_pristine) {
        Restore(now);
    }
}

TreeContents SweepGround::Read()
{
    TreeContents now = ReadTree(m_calls.tree.Root());
    m_created.clear();
    std::set_difference(now.begin(), now.end(), m_pristine.begin(), m_pristine.end(),
                        std::inserter(m_created, m_created.end()), m_pristine.value_comp());
    return now;
}

void SweepGround::CheckKept(const TreeContents& now, bool callsChange) const
{
    for (const auto& [name, content] : m_pristine) {
        const auto found = now.find(name);
        if (found == now.end()) {
            EXPECT_TRUE(callsChange && MayVanish(name)) << Utf8(name) << " was deleted";
        } else {
            EXPECT_EQ(content, found->second) << Utf8(name) << " was changed";
        }
    }
}

void SweepGround::CheckCreated(bool callsChange) const
{
    for (const auto& [name, content] : m_created) {
        EXPECT_TRUE(callsChange && MayBeCreated(name)) << Utf8(name) << " was created";
    }
}

void SweepGround::Restore(const TreeContents& now) const
{
    for (auto entry = m_created.rbegin(); entry != m_created.rend(); ++entry) { // contents before their directory
        const std::wstring path = LongForm(m_calls.tree.Path(entry->first));
        EXPECT_TRUE(entry->second == "/" ? ::RemoveDirectoryW(path.c_str()) : ::DeleteFileW(path.c_str()))
            << Utf8(path) << " is still open, error " << ::GetLastError();
    }
    for (const auto& [name, content] : m_pristine) {
        const auto found = now.find(name);
        if (found != now.end() && found->second == content) {
            continue;
        }
        if (content == "/") {
            m_calls.tree.Directory(name);
        } else {
            m_calls.tree.File(name, content);
        }
    }
}
