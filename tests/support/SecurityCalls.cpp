// The calls of an owner change, written into the transcript of its host.

#include "tests/support/SecurityCalls.h"
#include "tests/support/UniqueResource.h"

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <sddl.h>
#include <shlwapi.h>

#include <cstdlib>
#include <stdexcept>

namespace {

SecurityCalls* g_calls = nullptr;

std::uint32_t g_start = 0;       // clock ticks when the recording began
std::uint32_t g_lastReading = 0; // of this or an earlier recording

std::wstring SidText(PSID sid)
{
    wchar_t* text = nullptr;
    if (sid == nullptr || !::ConvertSidToStringSidW(sid, &text)) {
        return L"none";
    }
    const UniqueLocalMemory<wchar_t> owner(text);
    return text;
}

} // namespace

// Replacements of the library's imports.
struct ReplacedSecurityFunctions {
    static BOOL WINAPI LookUp(LPCWSTR system, LPCWSTR account, PSID sid, LPDWORD sidSize, LPWSTR domain,
                              LPDWORD domainLength, PSID_NAME_USE use)
    {
        EXPECT_EQ(nullptr, system) << "the local machine is meant";
        EXPECT_EQ(sid == nullptr, domain == nullptr);
        if (sid == nullptr) {
            EXPECT_EQ(0U, *sidSize);
            EXPECT_EQ(0U, *domainLength);
        } else {
            g_calls->m_sid = sid;
            g_calls->m_domain = domain;
        }
        g_calls->Write(std::wstring(L"LookupAccountNameW(") + account + (sid == nullptr ? L", sizes)" : L", SID)"));
        const auto* const fault = g_calls->Meet(L"LookupAccountNameW", account);
        const wchar_t* const name = g_calls->m_standIn.empty() ? account : g_calls->m_standIn.c_str();
        const BOOL done = ::LookupAccountNameW(nullptr, name, sid, sidSize, domain, domainLength, use);
        if (fault != nullptr) {
            ::SetLastError(fault->lastError);
            return fault->result == ERROR_SUCCESS;
        }
        return done;
    }

    static DWORD WINAPI Get(LPCWSTR path, SE_OBJECT_TYPE type, SECURITY_INFORMATION information, PSID* owner,
                            PSID* group, PACL* list, PACL* systemList, PSECURITY_DESCRIPTOR* descriptor)
    {
        EXPECT_EQ(1, type);
        EXPECT_EQ(4U, information);
        EXPECT_TRUE(owner == nullptr && group == nullptr && systemList == nullptr && descriptor == nullptr);
        g_calls->m_pathPointer = path;
        g_calls->Write(std::wstring(L"GetNamedSecurityInfoW(") + path + L")");
        if (const auto* const fault = g_calls->Meet(L"GetNamedSecurityInfoW", path); fault != nullptr) {
            ::SetLastError(fault->lastError);
            return fault->result;
        }
        const DWORD result =
            ::GetNamedSecurityInfoW(path, type, information, owner, group, list, systemList, descriptor);
        g_calls->m_errorAfterRead = ::GetLastError();
        g_calls->m_read = *list;
        return result;
    }

    static DWORD WINAPI Add(ULONG count, PEXPLICIT_ACCESSW entry, PACL list, PACL* made)
    {
        const TRUSTEEW& trustee = entry->Trustee;
        g_calls->m_entries.push_back({static_cast<unsigned>(count), static_cast<unsigned>(entry->grfAccessPermissions),
                                      entry->grfAccessMode, static_cast<unsigned>(entry->grfInheritance),
                                      trustee.pMultipleTrustee != nullptr, trustee.MultipleTrusteeOperation,
                                      trustee.TrusteeForm, trustee.TrusteeType, SidText(trustee.ptstrName),
                                      list == g_calls->m_read});
        g_calls->Write(L"SetEntriesInAclW()");
        if (const auto* const fault = g_calls->Meet(L"SetEntriesInAclW", {}); fault != nullptr) {
            ::SetLastError(fault->lastError);
            return fault->result;
        }
        const DWORD result = ::SetEntriesInAclW(count, entry, list, made);
        g_calls->m_made = *made;
        return result;
    }

    static DWORD WINAPI Set(LPWSTR path, SE_OBJECT_TYPE type, SECURITY_INFORMATION information, PSID owner, PSID group,
                            PACL list, PACL systemList)
    {
        g_calls->m_writes.push_back({path, type, static_cast<unsigned>(information), SidText(owner), group != nullptr,
                                     list != nullptr && list == g_calls->m_made, systemList != nullptr});
        g_calls->Write(std::wstring(L"SetNamedSecurityInfoW(") + path + L")");
        if (const auto* const fault = g_calls->Meet(L"SetNamedSecurityInfoW", path); fault != nullptr) {
            ::SetLastError(fault->lastError);
            return fault->result;
        }
        return ::SetNamedSecurityInfoW(path, type, information, owner, group, list, systemList);
    }

    static HLOCAL WINAPI FreeLocal(HLOCAL memory)
    {
        if (memory != nullptr && memory == g_calls->m_made) {
            g_calls->m_made = nullptr;
            g_calls->Write(L"LocalFree(new list)");
        }
        return ::LocalFree(memory);
    }

    static BOOL WINAPI IsDirectory(LPCWSTR path)
    {
        g_calls->Write(std::wstring(L"PathIsDirectoryW(") + path + L")");
        return g_calls->Meet(L"PathIsDirectoryW", path) == nullptr && ::PathIsDirectoryW(path);
    }

    static HANDLE WINAPI FindFirst(LPCWSTR pattern, LPWIN32_FIND_DATAW entry)
    {
        g_calls->Write(std::wstring(L"FindFirstFileW(") + pattern + L")");
        if (const auto* const fault = g_calls->Meet(L"FindFirstFileW", pattern); fault != nullptr) {
            ::SetLastError(fault->lastError);
            return INVALID_HANDLE_VALUE;
        }
        return ::FindFirstFileW(pattern, entry);
    }

    static BOOL WINAPI FindNext(HANDLE search, LPWIN32_FIND_DATAW entry)
    {
        g_calls->Write(L"FindNextFileW()");
        if (const auto* const fault = g_calls->Meet(L"FindNextFileW", {}); fault != nullptr) {
            ::SetLastError(fault->lastError);
            return FALSE;
        }
        return ::FindNextFileW(search, entry);
    }

    static BOOL WINAPI CloseSearch(HANDLE search)
    {
        g_calls->Write(L"FindClose()");
        return ::FindClose(search);
    }

    static std::clock_t __cdecl Clock() { return g_calls->ReadClock(); }

    static void __cdecl Free(void* memory)
    {
        if (g_calls != nullptr) {
            g_calls->NoteFreed(memory);
        }
        std::free(memory);
    }
};

SecurityCalls::SecurityCalls(HostRecorder& host)
    : m_host(host),
      m_lookUp("LookupAccountNameW", &ReplacedSecurityFunctions::LookUp),
      m_get("GetNamedSecurityInfoW", &ReplacedSecurityFunctions::Get),
      m_add("SetEntriesInAclW", &ReplacedSecurityFunctions::Add),
      m_set("SetNamedSecurityInfoW", &ReplacedSecurityFunctions::Set),
      m_localFree("LocalFree", &ReplacedSecurityFunctions::FreeLocal),
      m_isDirectory("PathIsDirectoryW", &ReplacedSecurityFunctions::IsDirectory),
      m_findFirst("FindFirstFileW", &ReplacedSecurityFunctions::FindFirst),
      m_findNext("FindNextFileW", &ReplacedSecurityFunctions::FindNext),
      m_findClose("FindClose", &ReplacedSecurityFunctions::CloseSearch),
      m_clock("clock", &ReplacedSecurityFunctions::Clock),
      m_free("libstdc++-6.dll", "free", &ReplacedSecurityFunctions::Free)
{
    g_calls = this;
    // So much later than the latest reading that a call, which fails at once, sets the module's stamp to the start.
    constexpr std::uint32_t kFarAhead = 10000000; // ticks
    g_start = g_lastReading + kFarAhead;
    ChangeObjectOwner(L"", L"no account of this machine");
    m_calls.clear();
    m_host.Clear();
}

SecurityCalls::~SecurityCalls()
{
    g_calls = nullptr;
}

void SecurityCalls::Fail(const std::wstring& function, int call, DWORD lastError, DWORD result)
{
    m_faults.push_back({function, call, {}, lastError, result, false});
}

void SecurityCalls::FailFor(const std::wstring& function, const std::wstring& path, DWORD result)
{
    m_faults.push_back({function, 0, path, result, result, false});
}

void SecurityCalls::Throw(const std::wstring& function, int call)
{
    m_faults.push_back({function, call, {}, 0, 0, true});
}

const SecurityCalls::Fault* SecurityCalls::Meet(const std::wstring& function, const std::wstring& path)
{
    const int call = ++m_calls[function];
    for (const Fault& fault : m_faults) {
        if (fault.function != function || (fault.call == 0 ? fault.path != path : fault.call != call)) {
            continue;
        }
        if (fault.throws) {
            throw std::runtime_error("a simulated exception");
        }
        return &fault;
    }
    return nullptr;
}

void SecurityCalls::NoteFreed(const void* memory)
{
    if (memory == nullptr) {
        return;
    }
    if (memory == m_sid) {
        m_sid = nullptr;
        Write(L"free(SID)");
    } else if (memory == m_domain) {
        m_domain = nullptr;
        Write(L"free(domain)");
    }
}

std::clock_t SecurityCalls::ReadClock()
{
    const std::int32_t reading = m_readings.front();
    if (m_readings.size() > 1) {
        m_readings.erase(m_readings.begin());
    }
    g_lastReading = g_start + static_cast<std::uint32_t>(reading);
    return static_cast<std::clock_t>(g_lastReading);
}
