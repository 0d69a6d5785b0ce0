// The entries of a folder whose owner is changed, and the identity of folders.

#include "security/FolderWalk.h"

#include "win32/FindData.h"

#include <Kestrovane.h>

#include <utility>

std::optional<FileIdentity> ReadFileIdentity(const std::wstring& path)
{
    constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;
    const LastErrorGuard keepLastError;
    const UniqueFileHandle opened(
        ::CreateFileW(path.c_str(), 0, kShareAll, nullptr, OPEN_EXISTING, FILE_FLAG_BACKUP_SEMANTICS, nullptr));
    BY_HANDLE_FILE_INFORMATION information = {};
    if (!opened || !::GetFileInformationByHandle(opened.Get(), &information)) {
        return std::nullopt;
    }
    const auto high = static_cast<std::uint64_t>(information.nFileIndexHigh) << 32U;
    return FileIdentity{information.dwVolumeSerialNumber, high | information.nFileIndexLow};
}

FolderWalk::FolderWalk(std::wstring folder, std::wstring account)
    : m_folder(std::move(folder)), m_account(std::move(account))
{
}

bool FolderWalk::Next()
{
    do {
        if (!(m_search ? ::FindNextFileW(m_search.Get(), &m_entry) != FALSE : Open())) {
            return false;
        }
    } while (IsDotEntry(m_entry) || NameHasSeparator(EntryName(m_entry)));
    return true;
}

std::wstring FolderWalk::EntryPath() const
{
    return AppendBackslash(m_folder).append(EntryName(m_entry));
}

bool FolderWalk::IsAtReparsePoint() const noexcept
{
    return IsReparsePoint(m_entry);
}

const std::optional<FileIdentity>& FolderWalk::Identity()
{
    if (!std::exchange(m_hasReadIdentity, true)) {
        m_identity = ReadFileIdentity(m_folder);
    }
    return m_identity;
}

bool FolderWalk::Open()
{
    m_search.Reset(::FindFirstFileW((m_folder + LR"(\*.*)").c_str(), &m_entry));
    return static_cast<bool>(m_search);
}
