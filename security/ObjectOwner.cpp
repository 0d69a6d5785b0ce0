// The owner change of restored files and folders: an account becomes the owner and gets full access.

#include <Kestrovane.h>

#include "frame/ModuleState.h"
#include "security/FolderWalk.h"
#include "win32/LifoStack.h"
#include "win32/UniqueResource.h"

#include <windows.h>

#include <aclapi.h>
#include <shlwapi.h>

#include <algorithm>
#include <cstddef>
#include <cwchar>
#include <memory>
#include <optional>
#include <string_view>
#include <utility>

namespace {

constexpr int kKeepAliveThreshold = 570; // whole seconds; the host waits for 600
constexpr int kLongWait = 10800;         // seconds; Windows may propagate a folder's new DACL to a whole tree

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

// Returns the name as Windows looks it up.
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

// Returns null after a failure, which is logged.
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
    std::wstring domain(domainLength, L'\0'); // required by Windows, not used
    if (!::LookupAccountNameW(nullptr, account.c_str(), sid.get(), &sidSize, domain.data(), &domainLength, &use)) {
        const DWORD error = ::GetLastError();
        g_pfnLogger(g_detailLevel, "Error calling LookupAccountName( ) to get SId for account %S - error %u.\n",
                    account.c_str(), static_cast<unsigned>(error));
        return nullptr;
    }
    return sid;
}

// Returns the DACL of an object, which may be null; nothing after a failure, which is logged with the thread's last
// error. Kept for compatibility: the security descriptor that holds the DACL is never freed, because Windows is not
// asked for its address.
std::optional<PACL> ReadDacl(const std::wstring& path, const char* failureFormat)
{
    g_pfnLogger(kProgressLevel, "Getting DACL for file/folder %S.\n", path.c_str());
    PACL dacl = nullptr;
    if (::GetNamedSecurityInfoW(path.c_str(), SE_FILE_OBJECT, DACL_SECURITY_INFORMATION, nullptr, nullptr, &dacl,
                                nullptr, nullptr) == ERROR_SUCCESS) {
        return dacl;
    }
    const DWORD error = ::GetLastError();
    g_pfnLogger(g_detailLevel, failureFormat, path.c_str(), static_cast<unsigned>(error));
    return std::nullopt;
}

// Returns `dacl` with full access for an account, inherited by everything below; null after a failure, which is logged.
std::optional<UniqueLocalMemory<ACL>> WithFullAccess(PACL dacl, PSID sid, const std::wstring& path)
{
    EXPLICIT_ACCESSW entry = {};
    entry.grfAccessPermissions = GENERIC_ALL;
    entry.grfAccessMode = SET_ACCESS;
    entry.grfInheritance = SUB_CONTAINERS_AND_OBJECTS_INHERIT;
    entry.Trustee.TrusteeForm = TRUSTEE_IS_SID;
    entry.Trustee.TrusteeType = TRUSTEE_IS_USER;
    entry.Trustee.ptstrName = static_cast<wchar_t*>(sid);
    PACL extended = nullptr;
    const DWORD error = ::SetEntriesInAclW(1, &entry, dacl, &extended);
    if (error != ERROR_SUCCESS) {
        // Deliberately the path first, although the format takes the error alone: hosts know the arguments of this
        // line.
        g_pfnLogger(g_detailLevel, "Error creating new DACL for file/folder to include new owner - error %u.\n",
                    path.c_str(), static_cast<unsigned>(error));
        return std::nullopt;
    }
    return UniqueLocalMemory<ACL>(extended);
}

// After a failure, which is logged, the host keeps the long wait.
bool WriteOwnerAndDacl(std::wstring& path, const std::wstring& account, PSID sid, PACL dacl)
{
    g_pfnKeepAlive(kLongWait);
    const DWORD error =
        ::SetNamedSecurityInfoW(path.data(), SE_FILE_OBJECT, OWNER_SECURITY_INFORMATION | DACL_SECURITY_INFORMATION,
                                sid, nullptr, dacl, nullptr);
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
    const auto dacl = ReadDacl(path, "Error getting DACL for %S - error %u.\n");
    if (!dacl) {
        return false;
    }
    g_pfnLogger(kProgressLevel, "Modifying DACL to include new ACE for user %S.\n", account.c_str());
    const auto extended = WithFullAccess(*dacl, sid.get(), path);
    return extended && WriteOwnerAndDacl(path, account, sid.get(), extended->get());
}

// Changes one object without what is below it, and normalises `account`.
bool ChangeOneObject(std::wstring& path, std::wstring& account)
{
    KeepHostAlive();
    account = NormalizedAccount(std::move(account));
    return GiveToAccount(path, account) && ReadDacl(path, "Error getting DACL %S - error %u.\n").has_value();
}

// The folders from the top to the current object. They are on the heap: a tree can be deeper than the stack allows.
using OpenFolders = LifoStack<FolderWalk>;

void EnterIfFolder(const std::wstring& path, const std::wstring& account, OpenFolders& open)
{
    if (::PathIsDirectoryW(path.c_str())) {
        open.Push(FolderWalk(path, account));
    }
}

// Whether an entry is a reparse point that leads back to a folder on the way down: entered, it would lead there without
// end. A folder without a readable identity counts as one.
bool LeadsToOpenFolder(const FolderWalk& folder, const std::wstring& path, OpenFolders& open)
{
    if (!folder.IsAtReparsePoint()) {
        return false;
    }
    const std::optional<FileIdentity> identity = ReadFileIdentity(path);
    return !identity || std::any_of(open.begin(), open.end(), [&identity](FolderWalk& openFolder) {
        return !openFolder.Identity() || openFolder.Identity() == identity;
    });
}

void ChangeEntry(const FolderWalk& folder, OpenFolders& open)
{
    std::wstring path = folder.EntryPath();
    // Deliberately normalised once more at every level: an account named .\LocalSystem is another one below.
    std::wstring account = folder.Account();
    if (ChangeOneObject(path, account) && !LeadsToOpenFolder(folder, path, open)) {
        EnterIfFolder(path, account, open);
    }
}

} // namespace

bool ChangeObjectOwner(std::wstring path, std::wstring account)
{
    // Windows reads the path up to its first NUL. With characters after it, a folder would be found inside itself.
    path.resize(std::wcslen(path.c_str()));
    if (!ChangeOneObject(path, account)) {
        return false;
    }
    OpenFolders open;
    EnterIfFolder(path, account, open);
    while (!open.IsEmpty()) {
        FolderWalk& folder = open.Top();
        if (folder.Next()) {
            ChangeEntry(folder, open);
        } else {
            open.Pop();
        }
    }
    return true;
}
