// Whether a directory can be entered, and whether the process's user may read and write it.

#include "frame/FileManager.h"

#include "frame/UniqueResource.h"
#include "paths/CurrentDirectory.h"

#include <windows.h>

#include <cstdlib>

namespace {

constexpr SECURITY_INFORMATION kOwnerGroupAndAccessList =
    OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION;

// A token that is closed also when it could not be opened: the last error is then that of the close.
class OpenedToken {
public:
    OpenedToken() noexcept = default;
    ~OpenedToken() { ::CloseHandle(m_token); }
    OpenedToken(const OpenedToken&) = delete;
    OpenedToken& operator=(const OpenedToken&) = delete;

    HANDLE Get() const noexcept { return m_token; }
    HANDLE* Receive() noexcept { return &m_token; }

private:
    HANDLE m_token = nullptr;
};

struct TokenTraits {
    using Value = HANDLE;
    static Value None() noexcept { return nullptr; }
    static void Free(Value token) noexcept { ::CloseHandle(token); }
};
using UniqueToken = UniqueResource<TokenTraits>;

// The security descriptor of a file or directory; null when it cannot be read.
UniqueRuntimeMemory ReadSecurityDescriptor(const std::wstring& path)
{
    DWORD size = 0;
    if (::GetFileSecurityW(path.c_str(), kOwnerGroupAndAccessList, nullptr, 0, &size) ||
        ::GetLastError() != ERROR_INSUFFICIENT_BUFFER) {
        return nullptr;
    }
    UniqueRuntimeMemory descriptor(std::malloc(size));
    if (descriptor == nullptr ||
        !::GetFileSecurityW(path.c_str(), kOwnerGroupAndAccessList, descriptor.get(), size, &size)) {
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
    ClearErrorText();
    if (path.empty()) {
        ReportLastError();
        return false;
    }
    std::wstring directory = path;
    if (!NormalizeDirectoryPath(directory)) {
        return false;
    }
    const CurrentDirectoryGuard restore;
    return ChangeCurrentDirectory(directory);
}

bool CVssFileManager::isDirectoryReadWritable(const std::wstring& path)
{
    ClearErrorText();
    if (path.empty()) {
        ReportLastError();
        return false;
    }
    const UniqueRuntimeMemory descriptor = ReadSecurityDescriptor(path);
    if (descriptor == nullptr) {
        return false;
    }
    constexpr DWORD kTokenAccess = TOKEN_DUPLICATE | TOKEN_IMPERSONATE | TOKEN_QUERY | READ_CONTROL;
    OpenedToken processToken;
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
    return g_fileManager.isDirectoryReadWritable(path);
}
