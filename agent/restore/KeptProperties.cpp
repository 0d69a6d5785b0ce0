// What a file keeps when its content is replaced.

#include "agent/restore/KeptProperties.h"

#include "agent/platform/Errors.h"
#include "agent/platform/FileCopy.h"
#include "agent/platform/Streams.h"

#include <windows.h>

#include <vector>

namespace agent {

namespace {

constexpr SECURITY_INFORMATION kOwnerAndGroup = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kKept = kOwnerAndGroup | DACL_SECURITY_INFORMATION;

// Empty when it cannot be read; the last error tells why.
std::vector<BYTE> ReadDescriptor(const std::wstring& path)
{
    constexpr DWORD kUsualSize = 1024; // bytes
    std::vector<BYTE> descriptor(kUsualSize);
    DWORD size = 0;
    BOOL read = ::GetFileSecurityW(path.c_str(), kKept, descriptor.data(), kUsualSize, &size);
    if (!read && ::GetLastError() == ERROR_INSUFFICIENT_BUFFER) {
        descriptor.resize(size);
        read = ::GetFileSecurityW(path.c_str(), kKept, descriptor.data(), size, &size);
    }
    descriptor.resize(read ? size : 0);
    return descriptor;
}

std::optional<std::wstring> KeepSecurity(const std::wstring& target, const std::wstring& fresh)
{
    std::vector<BYTE> kept = ReadDescriptor(target);
    if (kept.empty()) {
        return L"its DACL cannot be read: " + LastReason();
    }
    if (kept == ReadDescriptor(fresh)) {
        return std::nullopt;
    }
    // Best effort: the owner can be set by few accounts, and decides less than the DACL.
    ::SetFileSecurityW(fresh.c_str(), kOwnerAndGroup, kept.data());
    if (!::SetFileSecurityW(fresh.c_str(), DACL_SECURITY_INFORMATION, kept.data())) {
        return L"its DACL cannot be kept: " + LastReason();
    }
    return std::nullopt;
}

} // namespace

std::optional<std::wstring> KeepProperties(const std::wstring& target, const std::wstring& fresh)
{
    for (const std::wstring& stream : ListNamedStreams(target)) {
        const CopyResult result = CopyAndDigest(target + stream, fresh + stream);
        if (!result.digest) {
            return L"its stream " + stream + L" cannot be kept: " + SystemReason(result.error);
        }
    }
    return KeepSecurity(target, fresh);
}

} // namespace agent
