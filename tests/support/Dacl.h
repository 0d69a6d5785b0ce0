// The DACL of a file or directory, as SDDL.

#pragma once

#include "tests/support/UniqueResource.h"

#include <gtest/gtest.h>

#include <windows.h>

#include <sddl.h>

#include <string>

constexpr const wchar_t* kEveryoneMayRead = L"D:(A;;FR;;;WD)";
constexpr const wchar_t* kEveryoneMayAll = L"D:(A;OICI;FA;;;WD)";

// Replaces the DACL of a directory.
inline void SetDacl(const std::wstring& path, const wchar_t* sddl)
{
    PSECURITY_DESCRIPTOR descriptor = nullptr;
    ASSERT_TRUE(::ConvertStringSecurityDescriptorToSecurityDescriptorW(sddl, SDDL_REVISION_1, &descriptor, nullptr));
    const UniqueLocalMemory<void> owner(descriptor);
    EXPECT_TRUE(::SetFileSecurityW(path.c_str(), DACL_SECURITY_INFORMATION, descriptor)) << ::GetLastError();
}
