// Security descriptors as strings (SDDL).

#include "agent/platform/Security.h"

#include "agent/platform/Errors.h"
#include "agent/platform/Handles.h"

#include <windows.h>

#include <sddl.h>

#include <vector>

namespace agent {

namespace {

constexpr SECURITY_INFORMATION kOwnerAndGroup = OWNER_SECURITY_INFORMATION | GROUP_SECURITY_INFORMATION;
constexpr SECURITY_INFORMATION kAll = kOwnerAndGroup | DACL_SECURITY_INFORMATION;

} // namespace

std::optional<std::wstring> ReadSecurity(const std::wstring& path)
{
    DWORD size = 0; // bytes
    ::GetFileSecurityW(path.c_str(), kAll, nullptr, 0, &size);
    std::vector<BYTE> descriptor(size);
    wchar_t* allocated = nullptr;
    if (size == 0 || !::GetFileSecurityW(path.c_str(), kAll, descriptor.data(), size, &size) ||
        !::ConvertSecurityDescriptorToStringSecurityDescriptorW(descriptor.data(), SDDL_REVISION_1, kAll, &allocated,
                                                                nullptr)) {
        return std::nullopt;
    }
    const UniqueLocal<wchar_t> string(allocated);
    return std::wstring(string.get());
}

std::optional<std::wstring> WriteSecurity(const std::wstring& path, const std::wstring& security)
{
    PSECURITY_DESCRIPTOR allocated = nullptr;
    if (!::ConvertStringSecurityDescriptorToSecurityDescriptorW(security.c_str(), SDDL_REVISION_1, &allocated,
                                                                nullptr)) {
        return L"its security descriptor in the manifest is invalid: " + LastReason();
    }
    const UniqueLocal<void> descriptor(allocated);
    std::optional<std::wstring> reason;
    if (!::SetFileSecurityW(path.c_str(), kOwnerAndGroup, descriptor.get())) {
        reason = L"its owner cannot be set: " + LastReason();
    }
    if (!::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor.get())) {
        reason = L"its DACL cannot be set: " + LastReason();
    }
    return reason;
}

} // namespace agent
