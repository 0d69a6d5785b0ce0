// The record of a running restore.

#include "agent/restore/RestoreRecord.h"

#include "agent/platform/Directories.h"
#include "agent/platform/Encoding.h"
#include "agent/platform/Errors.h"
#include "agent/platform/Paths.h"
#include "agent/restore/RecordFormat.h"

#include <random>

namespace agent {

namespace {

// Long enough that nobody else's file has the name.
std::wstring RandomToken()
{
    constexpr const wchar_t* kDigits = L"0123456789abcdef";
    std::random_device random;
    std::wstring token;
    while (token.size() < kTokenLength) {
        token += kDigits[random() % 16U];
    }
    return token;
}

} // namespace

bool IsCacheFileName(const std::wstring& name)
{
    constexpr std::size_t kPrefixLength = 3;
    constexpr std::wstring_view kExtension = L".tmp";
    const std::wstring_view view = name;
    if (view.size() <= kPrefixLength + kExtension.size() ||
        !EqualIgnoringCase(view.substr(0, kPrefixLength), kCacheFilePrefix) ||
        !EqualIgnoringCase(view.substr(view.size() - kExtension.size()), kExtension)) {
        return false;
    }
    const auto number = view.substr(kPrefixLength, view.size() - kPrefixLength - kExtension.size());
    return number.find_first_not_of(L"0123456789abcdefABCDEF") == std::wstring_view::npos;
}

std::wstring StagingDirectoryFor(const std::wstring& path, const std::wstring& bound)
{
    if (IsTooLong(path)) {
        return {};
    }
    std::wstring directory = ParentOf(path);
    while (IsTooLong(Join(directory, StagingName(std::wstring(kTokenLength, L'0'), kMostStagedFiles - 1)))) {
        directory = ParentOf(directory);
        if (!IsSameOrBelow(directory, bound)) {
            return {};
        }
    }
    return directory;
}

RestoreRecord::RestoreRecord(const DirectorySet& directories) : m_token(RandomToken())
{
    const std::wstring folder = RecordFolder();
    const auto reason =
        folder.empty() ? std::optional<std::wstring>(L"LOCALAPPDATA is not set") : EnsureDirectory(folder);
    if (reason) {
        m_problem = *reason;
        return;
    }
    m_path = Join(folder, m_token + kRecordExtension);
    m_file = Own(::CreateFileW(m_path.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr, CREATE_NEW,
                               FILE_ATTRIBUTE_NORMAL, nullptr));
    if (m_file == nullptr) {
        m_problem = LastReason();
    }
    for (const std::wstring& directory : directories) {
        Append(kDirectoryLine, directory);
    }
}

RestoreRecord::~RestoreRecord()
{
    if (m_file != nullptr) {
        m_file.reset();
        ::DeleteFileW(m_path.c_str());
    }
}

std::wstring RestoreRecord::NextStagingPath(const std::wstring& directory)
{
    return Join(directory, StagingName(m_token, m_staged++ % kMostStagedFiles));
}

void RestoreRecord::NoteCacheDirectory(const std::wstring& directory)
{
    Append(kCacheDirectoryLine, directory);
}

void RestoreRecord::NoteCacheFile(const std::wstring& path)
{
    Append(kCacheFileLine, path);
}

void RestoreRecord::Append(wchar_t kind, const std::wstring& path)
{
    const std::string line = Utf8(kind + path + L"\n");
    DWORD written = 0;
    if (m_file != nullptr &&
        !::WriteFile(m_file.get(), line.data(), static_cast<DWORD>(line.size()), &written, nullptr)) {
        m_problem = LastReason();
    }
}

} // namespace agent
