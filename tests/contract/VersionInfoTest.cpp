// The version that the DLL's resources give to installers and to people.

#include <windows.h>

#include <gtest/gtest.h>

#include <string>
#include <vector>

namespace {

// The DLL's version resource.
class VersionInfo {
public:
    VersionInfo()
    {
        wchar_t path[MAX_PATH] = {};
        ::GetModuleFileNameW(::GetModuleHandleW(L"Kestrovane.dll"), path, MAX_PATH);
        DWORD unused = 0;
        m_data.resize(::GetFileVersionInfoSizeW(path, &unused));
        EXPECT_TRUE(::GetFileVersionInfoW(path, 0, static_cast<DWORD>(m_data.size()), m_data.data()));
    }

    [[nodiscard]] VS_FIXEDFILEINFO Fixed() const
    {
        const void* value = Query(L"\\");
        return value == nullptr ? VS_FIXEDFILEINFO() : *static_cast<const VS_FIXEDFILEINFO*>(value);
    }

    // A text in US English, the one language there is.
    [[nodiscard]] std::wstring Text(const std::wstring& name) const
    {
        const void* value = Query(LR"(\StringFileInfo\040904B0\)" + name);
        return value == nullptr ? std::wstring() : static_cast<const wchar_t*>(value);
    }

    [[nodiscard]] const void* Query(const std::wstring& block) const
    {
        void* value = nullptr;
        UINT length = 0;
        return ::VerQueryValueW(m_data.data(), block.c_str(), &value, &length) ? value : nullptr;
    }

private:
    std::vector<BYTE> m_data;
};

std::string Dotted(DWORD high, DWORD low)
{
    return std::to_string(HIWORD(high)) + "." + std::to_string(LOWORD(high)) + "." + std::to_string(HIWORD(low)) + "." +
           std::to_string(LOWORD(low));
}

const std::string kVersion = KESTROVANE_VERSION;

} // namespace

TEST(VersionInfo, NumbersAreTheProjectsVersion)
{
    const VS_FIXEDFILEINFO fixed = VersionInfo().Fixed();
    EXPECT_EQ(kVersion + ".0", Dotted(fixed.dwFileVersionMS, fixed.dwFileVersionLS));
    EXPECT_EQ(kVersion + ".0", Dotted(fixed.dwProductVersionMS, fixed.dwProductVersionLS));
    EXPECT_EQ(DWORD{VFT_DLL}, fixed.dwFileType);
}

TEST(VersionInfo, TextsAreTheProjectsVersionAndTheDllsName)
{
    const VersionInfo info;
    const std::wstring version(kVersion.begin(), kVersion.end());
    EXPECT_EQ(version, info.Text(L"FileVersion"));
    EXPECT_EQ(version, info.Text(L"ProductVersion"));
    EXPECT_EQ(L"Kestrovane.dll", info.Text(L"OriginalFilename"));
}

TEST(VersionInfo, TranslationNamesTheLanguageOfTheTexts)
{
    const VersionInfo info;
    const auto* translation = static_cast<const WORD*>(info.Query(LR"(\VarFileInfo\Translation)"));
    ASSERT_NE(nullptr, translation);
    EXPECT_EQ(0x0409, translation[0]);
    EXPECT_EQ(0x04B0, translation[1]);
}
