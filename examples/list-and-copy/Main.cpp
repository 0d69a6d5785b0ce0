// Lists the files of a component and copies them below another directory:
//
//   list-and-copy COMPONENT TARGET [PATTERN]
//
// The exit code is 0 if every file was copied, 1 if one was not, and 2 after wrong usage.

#include <Kestrovane.h>

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <string>

namespace {

void Print(const std::wstring& line)
{
    const int length = static_cast<int>(line.size());
    std::string utf8(line.size() * 3, '\0'); // one UTF-16 code unit takes up to three bytes
    utf8.resize(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, line.c_str(), length, utf8.data(),
                                                               static_cast<int>(utf8.size()), nullptr, nullptr)));
    std::printf("%s\n", utf8.c_str());
}

// Level 2 is progress. Level 0 holds the details of failures.
int __cdecl Log(int level, const char* format, ...)
{
    if (level != 0) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return printed;
}

// A console program has no supervisor that waits for a sign. A service reports its progress here.
int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// A copy that ends with a read error reports success and leaves a shortened target, so the sizes are compared.
bool CopyCompletely(std::wstring source, std::wstring target)
{
    return DoCopyComponentFile(source, target) == 1 && getFileSize(source) == getFileSize(target) &&
           isFileExists(target);
}

int CopyComponent(const std::wstring& component, const std::wstring& target, const std::wstring& pattern)
{
    if (!isDirectoryExists(component)) { // its list would be empty, as that of an empty directory
        Print(L"no such directory: " + component);
        return 1;
    }
    int failures = 0;
    const auto names = ListFilesFilterRecursive(component, pattern, false); // relative to the component
    for (const std::wstring& name : names) {
        const bool copied = CopyCompletely(AppendBackslash(component) + name, AppendBackslash(target) + name);
        Print((copied ? L"copied " : L"FAILED ") + name);
        failures += copied ? 0 : 1;
    }
    Print(std::to_wstring(names.size()) + L" files, " + std::to_wstring(failures) + L" failed");
    return failures == 0 ? 0 : 1;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 3 || count > 4) {
        Print(L"usage: list-and-copy COMPONENT TARGET [PATTERN]");
        return 2;
    }
    SetVssFileManagerLogger(&Log, &KeepAlive, &Log); // before any other call
    try {
        return CopyComponent(arguments[1], arguments[2], count == 4 ? arguments[3] : L"*");
    } catch (const std::exception& error) { // std::bad_alloc
        std::fprintf(stderr, "%s\n", error.what());
        return 1;
    }
}
