// Giving restored files and folders to an account: as their owner, and with full access.

#include <Kestrovane.h>

#include "frame/ModuleState.h"
#include "frame/UniqueResource.h"

#include <windows.h>

#include <aclapi.h>
#include <shlwapi.h>

#include <cstddef>
#include <cwchar>
#include <memory>
#include <optional>
#include <stack>
#include <string_view>

namespace {

constexpr int kKeepAliveThreshold = 570; // whole seconds; the host waits for 600
constexpr int kLongWait = 10800;         // seconds: Windows may carry a folder's new list to a whole tree

struct AccessListTraits {
    using Value = PACL;
    static Value None() noexcept { return nullptr; }
    static void Free(Value list) noexcept { ::LocalFree(list); }
};
using UniqueAccessList = UniqueResource<AccessListTraits>;

using Sid = std::unique_ptr<std::byte[]>;

void KeepHostAlive()
{
    g_pfnLogger(g_detailLevel, "clock ticks = %d, CLOCKS_PER_SEC = %d, timeout = %d",
                TicksSince(g_keepAliveStamp, std::clock()), kClockTicksPerSecond, kKeepAliveThreshold);
    if (TicksSince(g_keepAliveStamp, std::clock()) / kClockTicksPerSecond > kKeepAliveThreshold) {
        g_keepAliveStamp = std::clock();
        LogSendKaLocation();
        g_pfnKeepAlive(kKeepAlivePeriod);
    }
}

// The name as Windows looks it up.
std::wstring NormalizedAccount(std::wstring account)
{
    constexpr std::wstring_view kThisMachine = LR"(.\)";
    if (account == L"LocalSystem") {
        account = LR"(NT AUTHORITY\SYSTEM)";
    }
    if (account.starts_with(kThisMachine)) {
        account.erase(0, kThisMachine.size());
    }
    return account;
}

// Null after a failure, which is logged.
Sid LookUpSid(const std::wstring& account)
{
    g_pfnLogger(kProgressLevel, "Getting SID for user %S.\n", account.c_str());
    DWORD sidSize = 0;      // bytes
    DWORD domainLength = 0; // characters
    SID_NAME_USE use = SidTypeUnknown;
    if (!::LookupAccountNameW(nullptr, account.c_str(), nullptr, &sidSize, nullptr, &domainLength, &use)) {
        const DWORD error = ::GetLastError();
        if (error != ERROR_INSUFFICIENT_BUFFER) {
            g_pfnLogger(g_detailLevel,
                        "Error calling LookupAccountName( ) to get size of SID for account %S - error %u.\n",
                        account.c_str(), static_cast<unsigned>(error));
            return nullptr;
        }
    }
    auto sid = std::make_unique<std::byte[]>(sidSize);
    std::wstring domain(domainLength, L'\0'); // Windows wants to tell it
    if (!::LookupAccountNameW(nullptr, account.c_str(), sid.get(), &sidSize, domain.data(), &domainLength, &use)) {
        const DWORD error = ::GetLastError();
        g_pfnLogger(g_detailLevel, "Error calling LookupAccountName( ) to get SId for account %S - error %u.\n",
                    account.c_str(), static_cast<unsigned>(error));
        return nullptr;
    }
    return sid;
}

// The access list of an object, which may be null; nothing after a failure, which is logged with the thread's last
// error. The list lies in a security descriptor that is never freed, because Windows is not asked for its address.
std::optional<PACL> ReadAccessList(const std::wstring& path, const char* failureFormat)
{
    g_pfnLogger(kProgressLevel, "Getting DACL for file/folder %S.\n", path.c_str());
    PACL list = nullptr;
    if (::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &list,
                                nullptr, nullptr) == ERROR_SUCCESS) {
        return list;
    }
    const DWORD error = ::GetLastError();
    g_pfnLogger(g_detailLevel, failureFormat, path.c_str(), static_cast<unsigned>(error));
    return std::nullopt;
}

// `list` with full access for an account, inherited by everything below; nothing after a failure, which is logged.
std::optional<UniqueAccessList> WithFullAccess(PACL list, PSID sid, const std::wstring& path)
{
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = GENERIC_ALL;
    entry.grfAccessMode = SET_ACCESS;
    entry.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_USER;
    entry.Trustee.ptstrName = static_cast<wchar_t*>(sid);
    PACL extended = nullptr;
    const DWORD error = ::SetEntriesInAclW(1, &entry, list, &extended);
    if (error != ERROR_SUCCESS) {
        // The path comes before the error on purpose: hosts take the arguments of this line as they are.
        g_pfnLogger(g_detailLevel, "Error creating new DACL for file/folder to include new owner - error %u.\n",
                    path.c_str(), static_cast<unsigned>(error));
        return std::nullopt;
    }
    return UniqueAccessList(extended);
}

// After a failure, which is logged, the host keeps the long wait.
bool WriteOwnerAndAccessList(std::wstring& path, const std::wstring& account, PSID sid, PACL list)
{
    g_pfnKeepAlive(kLongWait);
    const DWORD error =
        ::SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                sid, nullptr, list, nullptr);
    if (error != ERROR_SUCCESS) {
        g_pfnLogger(g_detailLevel, "Error setting owner for account %S to user %S - error %u.\n", path.c_str(),
                    account.c_str(), static_cast<unsigned>(error));
        return false;
    }
    g_pfnLogger(kProgressLevel, "Successfully modified DACL.\n");
    g_pfnKeepAlive(kKeepAlivePeriod);
    return true;
}

bool GiveToAccount(std::wstring& path, const std::wstring& account)
{
    const Sid sid = LookUpSid(account);
    if (sid == nullptr) {
        return false;
    }
    const auto list = ReadAccessList(path, "Error getting DACL for %S - error %u.\n");
    if (!list) {
        return false;
    }
    g_pfnLogger(kProgressLevel, "Modifying DACL to include new ACE for user %S.\n", account.c_str());
    const auto extended = WithFullAccess(*list, sid.get(), path);
    return extended && WriteOwnerAndAccessList(path, account, sid.get(), extended->Get());
}

// One object, without what is below it. `account` is normalised.
bool ChangeOneObject(std::wstring& path, std::wstring& account)
{
    KeepHostAlive();
    account = NormalizedAccount(std::move(account));
    return GiveToAccount(path, account) && ReadAccessList(path, "Error getting DACL %S - error %u.\n").has_value();
}

// A folder whose entries are changed one after the other.
class FolderWalk {
public:
    FolderWalk(std::wstring folder, std::wstring account) : m_folder(std::move(folder)), m_account(std::move(account))
    {
    }

    // Steps to the first or next entry other than "." and ".."; false behind the last one, and in a folder that
    // cannot be searched.
    bool Next()
    {
        do {
            if (!(m_search ? ::FindNextFileW(m_search.Get(), &m_entry) != FALSE : Open())) {
                return false;
            }
        } while (std::wcscmp(m_entry.cFileName, L".") == 0 || std::wcscmp(m_entry.cFileName, L"..") == 0);
        return true;
    }

    std::wstring EntryPath() const { return AppendBackslash(m_folder) + m_entry.cFileName; }
    const std::wstring& Account() const noexcept { return m_account; }

private:
    bool Open()
    {
        m_search.Reset(::FindFirstFileW((m_folder + LR"(\*.*)").c_str(), &m_entry));
        return static_cast<bool>(m_search);
    }

    std::wstring m_folder;
    std::wstring m_account;
    WIN32_FIND_DATAW m_entry = {};
    UniqueFindHandle m_search;
};

// The folders on the way down to the current object, innermost on top. They stand on the heap, because a tree can be
// deeper than the caller's stack.
using OpenFolders = std::stack<FolderWalk>;

void EnterIfFolder(const std::wstring& path, const std::wstring& account, OpenFolders& folders)
{
    if (::PathIsDirectoryW(path.c_str())) {
        folders.emplace(path, account);
    }
}

} // namespace

bool ChangeObjectOwner(std::wstring path, std::wstring account)
{
    if (!ChangeOneObject(path, account)) {
        return false;
    }
    OpenFolders folders;
    EnterIfFolder(path, account, folders);
    while (!folders.empty()) {
        FolderWalk& folder = folders.top();
        if (!folder.Next()) {
            folders.pop();
            continue;
        }
        std::wstring entry = folder.EntryPath();
        // Normalised once more at every level, on purpose: an account named .\LocalSystem is another one below.
        std::wstring entryAccount = folder.Account();
        if (ChangeOneObject(entry, entryAccount)) {
            EnterIfFolder(entry, entryAccount, folders);
        }
    }
    return true;
}
