// Whether a directory can be entered, and whether the process's user may read and write it.

#include "frame/FileManager.h"

#include "paths/CurrentDirectory.h"
#include "win32/UniqueResource.h"

#include <windows.h>

#include <cstdlib>

namespace {

constexpr SECURITY_INFORMATION kOwnerGroupAndDacl =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// The process token. Kept for compatibility: it is closed even if it could not be opened, and the last error is then
// that of the close.
class ProcessToken {
public:
    ProcessToken() noexcept = default;
    ~ProcessToken() { ::CloseHandle(m_token); }
    ProcessToken(const ProcessToken&) = delete;
    ProcessToken& operator=(const ProcessToken&) = delete;

    [[nodiscard]] HANDLE Get() const noexcept { return m_token; }
    HANDLE* Receive() noexcept { return &m_token; }

private:
    HANDLE m_token = nullptr;
};

// Returns the security descriptor of a file or directory; null if it cannot be read.
UniqueCrtMemory ReadSecurityDescriptor(const std::wstring& path)
{
    DWORD size = 0;
    if (::GetFileSecurityW(path.c_str(), kOwnerGroupAndDacl, nullptr, 0, &size) ||
        ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return nullptr;
    }
    UniqueCrtMemory descriptor(std::malloc(size));
    if (descriptor == nullptr || !::GetFileSecurityW(path.c_str(), kOwnerGroupAndDacl, descriptor.get(), size, &size)) {
        return nullptr;
    }
    return descriptor;
}

UniqueToken DuplicateForImpersonation(HANDLE token)
{
    HANDLE duplicate = nullptr;
    return UniqueToken(::DuplicateToken(token, SecurityImpersonation, &duplicate) ? duplicate : nullptr);
}

bool GrantsReadAndWrite(PSECURITY_DESCRIPTOR descriptor, HANDLE token)
{
    GENERIC_MAPPING mapping = {FILE_GENERIC_READ, FILE_GENERIC_WRITE, FILE_GENERIC_EXECUTE, FILE_ALL_ACCESS};
    DWORD wanted = GENERIC_READ | GENERIC_WRITE;
    ::MapGenericMask(&wanted, &mapping);
    PRIVILEGE_SET privileges = {};
    DWORD privilegesSize = sizeof(privileges);
    DWORD granted = 0;
    BOOL status = FALSE;
    return ::AccessCheck(descriptor, token, wanted, &mapping, &privileges, &privilegesSize, &granted, &status) &&
           status == TRUE;
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::isDirectoryExists(const std::wstring& path)
{
    if (!BeginOperation(path)) {
        return false;
    }
    std::wstring directory = path;
    if (!NormalizeDirectoryPath(directory)) {
        return false;
    }
    const CurrentDirectoryGuard currentDirectory;
    return currentDirectory.Enter(directory);
}

bool CVssFileManager::isDirectoryReadWritable(const std::wstring& path, std::uint32_t /*accessMask*/)
{
    if (!BeginOperation(path)) {
        return false;
    }
    const UniqueCrtMemory descriptor = ReadSecurityDescriptor(path);
    if (descriptor == nullptr) {
        return false;
    }
    constexpr DWORD kTokenAccess = TOKEN_DUPLICATE | TOKEN_IMPERSONATE | TOKEN_QUERY | READ_CONTROL;
    ProcessToken processToken;
    if (!::OpenProcessToken(::GetCurrentProcess(), kTokenAccess, processToken.Receive())) {
        return false;
    }
    const UniqueToken token = DuplicateForImpersonation(processToken.Get());
    return token && GrantsReadAndWrite(descriptor.get(), token.Get());
}

} // namespace quorvantavss

bool isDirectoryExists(const std::wstring& path)
{
    return g_fileManager.isDirectoryExists(path);
}

bool isDirectoryReadWritable(const std::wstring& path)
{
    constexpr std::uint32_t kReadAndWrite = GENERIC_READ | GENERIC_WRITE;
    return g_fileManager.isDirectoryReadWritable(path, kReadAndWrite);
}
