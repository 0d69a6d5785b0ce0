// What only the system outside this platform's layer can create: names that differ only in case, names that Windows
// takes for something else, and links.

#pragma once

#include "tests/support/FileTools.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <string>

// The path as the system outside writes it; empty where there is no such system.
inline std::string OutsidePath(const std::wstring& path)
{
    using GetOutsidePath = char*(__cdecl*)(const wchar_t*);
    const auto function = reinterpret_cast<GetOutsidePath>(
        reinterpret_cast<void*>(::GetProcAddress(::GetModuleHandleW(L"kernel32"), "wine_get_unix_file_name")));
    if (function == nullptr) {
        return {};
    }
    char* const name = function(path.c_str());
    std::string result = name == nullptr ? "" : name;
    ::HeapFree(::GetProcessHeap(), 0, name);
    return result;
}

// Creates a file with exactly this name.
inline void CreateFromOutside(const std::wstring& directory, const std::string& name, const std::string& bytes)
{
    const std::string root = OutsidePath(directory);
    ASSERT_NE("", root) << "no way to the system outside";
    std::string path = R"(\\?\unix)" + root + "/" + name;
    std::replace(path.begin(), path.end(), '/', '\\');
    const HANDLE file = ::CreateFileW(std::wstring(path.begin(), path.end()).c_str(), GENERIC_WRITE, 0, nullptr,
                                      CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr);
    ASSERT_NE(INVALID_HANDLE_VALUE, file) << path << " error " << ::GetLastError();
    DWORD written = 0;
    ::WriteFile(file, bytes.data(), static_cast<DWORD>(bytes.size()), &written, nullptr);
    ::CloseHandle(file);
}

// Starts a program of the system outside; nothing tells when it ends.
inline void RunOutside(const std::wstring& program, std::wstring command)
{
    STARTUPINFOW startup = {};
    startup.cb = sizeof(startup);
    PROCESS_INFORMATION process = {};
    ASSERT_TRUE(::CreateProcessW((LR"(\\?\unix\bin\)" + program).c_str(), command.data(), nullptr, nullptr, FALSE, 0,
                                 nullptr, nullptr, &startup, &process))
        << "error " << ::GetLastError();
    ::CloseHandle(process.hProcess);
    ::CloseHandle(process.hThread);
}

// Presses Ctrl-C for an agent as soon as a condition of the shell holds. There is no console that could do it. Called
// before the agent starts, because finding a process takes longer than much of its work: `unique` is a string that no
// other command line has.
inline void InterruptWhen(const std::wstring& unique, const std::string& condition)
{
    const std::wstring pattern = L"[" + unique.substr(0, 1) + L"]" + unique.substr(1); // does not match itself
    const std::wstring find =
        L"n=0; a=; while [ x$a = x ] && [ $n -lt 1000 ]; do n=$((n+1)); for f in $(grep -las '" + pattern +
        L"' /proc/[0-9]*/cmdline); do p=${f#/proc/}; p=${p%/cmdline}; [ $p = $$ ] || a=$p; done; done; ";
    const std::wstring wait = L"while kill -0 $a && ! { " + std::wstring(condition.begin(), condition.end()) +
                              L"; }; do :; done 2>/dev/null; kill -INT $a";
    RunOutside(L"sh", L"sh -c \"" + find + wait + L"\"");
}

// Creates a link to a directory. The paths have no blanks.
inline void LinkFromOutside(const std::wstring& target, const std::wstring& link)
{
    const std::string parent = OutsidePath(link.substr(0, link.rfind(L'\\')));
    const std::wstring name = link.substr(link.rfind(L'\\') + 1);
    const std::string arguments = "ln -s " + OutsidePath(target) + " " + parent + "/" + Utf8(name);
    RunOutside(L"ln", std::wstring(arguments.begin(), arguments.end()));
    constexpr int kPatience = 5000; // milliseconds
    for (int waited = 0; !IsDirectory(link) && waited < kPatience; ++waited) {
        ::Sleep(1);
    }
    ASSERT_TRUE(IsDirectory(link)) << Utf8(link);
}
