// A full disk, simulated: a library that is loaded into a process and makes its writes fail. Below the directory
// KESTROVANE_FULL_BELOW, so many operations as KESTROVANE_FULL_AFTER that take space succeed. The next write stores half of its
// bytes, and everything after it fails with ERROR_DISK_FULL.

#include "tests/support/ImportSlots.h"

#include <windows.h>

#include <atomic>
#include <cstring>
#include <cwchar>
#include <string>
#include <utility>

namespace {

std::wstring g_below;
std::atomic<long> g_left;

std::wstring Variable(const wchar_t* name)
{
    wchar_t value[MAX_PATH] = {};
    ::GetEnvironmentVariableW(name, value, MAX_PATH);
    return value;
}

bool IsBelow(std::wstring path)
{
    constexpr const wchar_t* kPrefix = LR"(\\?\)";
    if (path.rfind(kPrefix, 0) == 0) {
        path.erase(0, std::wcslen(kPrefix));
    }
    return path.size() > g_below.size() && ::_wcsnicmp(path.c_str(), g_below.c_str(), g_below.size()) == 0;
}

bool IsBelow(HANDLE file)
{
    wchar_t path[MAX_PATH] = {};
    return ::GetFileType(file) == FILE_TYPE_DISK && ::GetFinalPathNameByHandleW(file, path, MAX_PATH, 0) != 0 &&
           IsBelow(std::wstring(path));
}

// Takes space. @return whether there was some.
bool TakeSpace()
{
    if (g_left.fetch_sub(1) > 0) {
        return true;
    }
    ::SetLastError(ERROR_DISK_FULL);
    return false;
}

BOOL WINAPI WriteToFullDisk(HANDLE file, LPCVOID bytes, DWORD size, LPDWORD written, LPOVERLAPPED overlapped)
{
    if (!IsBelow(file) || TakeSpace()) {
        return ::WriteFile(file, bytes, size, written, overlapped);
    }
    if (g_left == -1 && size > 1) {
        return ::WriteFile(file, bytes, size / 2, written, overlapped);
    }
    *written = 0;
    ::SetLastError(ERROR_DISK_FULL);
    return FALSE;
}

HANDLE WINAPI CreateOnFullDisk(LPCWSTR path, DWORD access, DWORD share, LPSECURITY_ATTRIBUTES security, DWORD how,
                               DWORD flags, HANDLE like)
{
    const bool creates =
        (how == CREATE_NEW || how == CREATE_ALWAYS || how == OPEN_ALWAYS) && IsBelow(std::wstring(path));
    if (creates && ::GetFileAttributesW(path) == INVALID_FILE_ATTRIBUTES && !TakeSpace()) {
        return INVALID_HANDLE_VALUE;
    }
    return ::CreateFileW(path, access, share, security, how, flags, like);
}

BOOL WINAPI CreateDirectoryOnFullDisk(LPCWSTR path, LPSECURITY_ATTRIBUTES security)
{
    return (!IsBelow(std::wstring(path)) || TakeSpace()) && ::CreateDirectoryW(path, security);
}

BOOL WINAPI CreateLinkOnFullDisk(LPCWSTR link, LPCWSTR target, LPSECURITY_ATTRIBUTES security)
{
    return (!IsBelow(std::wstring(link)) || TakeSpace()) && ::CreateHardLinkW(link, target, security);
}

void PatchImports(HMODULE module)
{
    const std::pair<const char*, void*> replacements[] = {
        {"WriteFile", reinterpret_cast<void*>(&WriteToFullDisk)},
        {"CreateFileW", reinterpret_cast<void*>(&CreateOnFullDisk)},
        {"CreateDirectoryW", reinterpret_cast<void*>(&CreateDirectoryOnFullDisk)},
        {"CreateHardLinkW", reinterpret_cast<void*>(&CreateLinkOnFullDisk)}};
    VisitImports(module, [&](const char* /*library*/, const char* function, void** slot) {
        for (const auto& [name, replacement] : replacements) {
            if (std::strcmp(name, function) == 0) {
                ExchangeImport(slot, replacement);
            }
        }
    });
}

} // namespace

extern "C" BOOL WINAPI DllMain(HINSTANCE /*instance*/, DWORD reason, LPVOID /*reserved*/)
{
    if (reason == DLL_PROCESS_ATTACH) {
        g_below = Variable(L"KESTROVANE_FULL_BELOW") + L"\\";
        g_left = std::wcstol(Variable(L"KESTROVANE_FULL_AFTER").c_str(), nullptr, 10);
        PatchImports(::GetModuleHandleW(nullptr));
        PatchImports(::GetModuleHandleW(L"Kestrovane.dll"));
    }
    return TRUE;
}
