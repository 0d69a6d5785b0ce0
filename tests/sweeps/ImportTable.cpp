// How each import of the library fails, and which imports cannot.

#include "tests/sweeps/ImportTable.h"

#include <windows.h>

#include <cerrno>

namespace {

constexpr Word kFalse = 0;
constexpr Word kNull = 0;
constexpr Word kMinusOne = ~Word{0}; // INVALID_HANDLE_VALUE, INVALID_FILE_ATTRIBUTES and the runtime's -1

// Results of 32 bits leave the upper half of the register undefined.
int Int(Word result)
{
    return static_cast<int>(static_cast<std::uint32_t>(result));
}

int TrueOpens(Word result, const Word* /*arguments*/)
{
    return Int(result) != 0 ? 1 : 0;
}
int TrueCloses(Word result, const Word* /*arguments*/)
{
    return Int(result) != 0 ? -1 : 0;
}
int ZeroOpens(Word result, const Word* /*arguments*/)
{
    return Int(result) == 0 ? 1 : 0;
}
int ZeroCloses(Word result, const Word* /*arguments*/)
{
    return Int(result) == 0 ? -1 : 0;
}
int HandleOpens(Word result, const Word* /*arguments*/)
{
    return result != kMinusOne ? 1 : 0;
}
int DescriptorOpens(Word result, const Word* /*arguments*/)
{
    return Int(result) != -1 ? 1 : 0;
}
// A null handle is never open.
int HandleCloses(Word result, const Word* arguments)
{
    return arguments[0] != kNull && Int(result) != 0 ? -1 : 0;
}
int PointerOpens(Word result, const Word* /*arguments*/)
{
    return result != kNull ? 1 : 0;
}
int ArgumentCloses(Word /*result*/, const Word* arguments)
{
    return arguments[0] != kNull ? -1 : 0;
}

// The number of bytes that were read or written.
void TransferNothing(const Word* arguments)
{
    *reinterpret_cast<DWORD*>(arguments[3]) = 0;
}

constexpr FailingImport kFailing[] = {
    {"AccessCheck", kFalse, ERROR_INVALID_SECURITY_DESCR, 0},
    {"DuplicateToken", kFalse, ERROR_ACCESS_DENIED, 0, Resource::kHandle, &TrueOpens},
    {"GetFileSecurityW", kFalse, ERROR_ACCESS_DENIED, 0},
    {"GetNamedSecurityInfoW", ERROR_ACCESS_DENIED, 0, 0}, // what it opens is documented to be kept
    {"LookupAccountNameW", kFalse, ERROR_NONE_MAPPED, 0},
    {"OpenProcessToken", kFalse, ERROR_ACCESS_DENIED, 0, Resource::kHandle, &TrueOpens},
    {"SetEntriesInAclW", ERROR_NOT_ENOUGH_MEMORY, 0, 0, Resource::kLocalMemory, &ZeroOpens},
    {"SetNamedSecurityInfoW", ERROR_ACCESS_DENIED, 0, 0},

    {"CloseHandle", kFalse, ERROR_INVALID_HANDLE, 0, Resource::kHandle, &HandleCloses},
    {"CreateFileW", kMinusOne, ERROR_SHARING_VIOLATION, 0, Resource::kHandle, &HandleOpens},
    {"DeleteFileW", kFalse, ERROR_ACCESS_DENIED, 0},
    {"ExpandEnvironmentStringsW", 0, ERROR_NOT_ENOUGH_MEMORY, 0},
    {"FindClose", kFalse, ERROR_INVALID_HANDLE, 0, Resource::kSearch, &TrueCloses},
    {"FindFirstFileW", kMinusOne, ERROR_ACCESS_DENIED, 0, Resource::kSearch, &HandleOpens},
    {"FindFirstVolumeW", kMinusOne, ERROR_ACCESS_DENIED, 0, Resource::kSearch, &HandleOpens},
    {"FindNextFileW", kFalse, ERROR_UNEXP_NET_ERR, 0},
    {"FindNextVolumeW", kFalse, ERROR_NOT_ENOUGH_MEMORY, 0},
    {"FindVolumeClose", kFalse, ERROR_INVALID_HANDLE, 0, Resource::kSearch, &TrueCloses, nullptr, true, true},
    {"FormatMessageW", 0, ERROR_MR_MID_NOT_FOUND, 0, Resource::kLocalMemory, &TrueOpens},
    {"GetDiskFreeSpaceExW", kFalse, ERROR_PATH_NOT_FOUND, 0},
    {"GetFileAttributesA", kMinusOne, ERROR_ACCESS_DENIED, 0},
    {"GetFileAttributesExW", kFalse, ERROR_ACCESS_DENIED, 0},
    {"GetFileAttributesW", kMinusOne, ERROR_ACCESS_DENIED, 0},
    {"GetFileInformationByHandle", kFalse, ERROR_INVALID_FUNCTION, 0},
    {"GetTempFileNameW", 0, ERROR_ACCESS_DENIED, 0},
    {"GetTempPathW", 0, ERROR_FILENAME_EXCED_RANGE, 0},
    {"GetVersionExW", kFalse, ERROR_INSUFFICIENT_BUFFER, 0},
    {"GetVolumeNameForVolumeMountPointW", kFalse, ERROR_NOT_A_REPARSE_POINT, 0},
    {"GetVolumePathNameW", kFalse, ERROR_FILENAME_EXCED_RANGE, 0},
    {"GetVolumePathNamesForVolumeNameW", kFalse, ERROR_MORE_DATA, 0},
    {"LocalFree", kMinusOne, ERROR_INVALID_HANDLE, 0, Resource::kLocalMemory, &ArgumentCloses},
    {"MoveFileExW", kFalse, ERROR_ACCESS_DENIED, 0},
    {"ReadFile", kFalse, ERROR_CRC, 0, Resource::kNone, nullptr, &TransferNothing},
    {"RemoveDirectoryW", kFalse, ERROR_DIR_NOT_EMPTY, 0},
    {"WriteFile", kFalse, ERROR_DISK_FULL, 0, Resource::kNone, nullptr, &TransferNothing},

    {"_close", kMinusOne, ERROR_INVALID_HANDLE, EBADF, Resource::kFileDescriptor, &ZeroCloses},
    {"_findclose", kMinusOne, ERROR_INVALID_HANDLE, EINVAL, Resource::kRuntimeSearch, &ZeroCloses},
    {"_wchdir", kMinusOne, ERROR_ACCESS_DENIED, EACCES},
    {"_wfindfirst64", kMinusOne, ERROR_ACCESS_DENIED, EINVAL, Resource::kRuntimeSearch, &HandleOpens},
    {"_wfindnext64", kMinusOne, ERROR_NOT_ENOUGH_MEMORY, ENOMEM},
    {"_wgetcwd", kNull, 0, ERANGE},
    {"_wmkdir", kMinusOne, ERROR_ACCESS_DENIED, EACCES},
    {"_wopen", kMinusOne, ERROR_SHARING_VIOLATION, EACCES, Resource::kFileDescriptor, &DescriptorOpens},
    {"_wunlink", kMinusOne, ERROR_ACCESS_DENIED, EACCES},
    {"clock", kMinusOne, 0, 0},
    {"calloc", kNull, 0, ENOMEM}, // what it opens is documented to be kept
    {"malloc", kNull, 0, ENOMEM, Resource::kMemory, &PointerOpens},
    {"printf", kMinusOne, 0, EIO},
    {"wctomb", kMinusOne, 0, EILSEQ},

    {"SysAllocString", kNull, 0, 0, Resource::kBstr, &PointerOpens},
    {"SysAllocStringLen", kNull, 0, 0, Resource::kBstr, &PointerOpens},
    {"VarBstrCmp", static_cast<Word>(E_INVALIDARG), 0, 0},
    {"PathIsDirectoryW", kFalse, ERROR_PATH_NOT_FOUND, 0},
    {"wsprintfW", 0, 0, 0},

    {"SysFreeString", 0, 0, 0, Resource::kBstr, &ArgumentCloses, nullptr, false},
    {"free", 0, 0, 0, Resource::kMemory, &ArgumentCloses, nullptr, false},
};

constexpr const char* kReads = "reads memory alone";
constexpr const char* kNoFailure = "has no failing result";
constexpr const char* kStartUp = "start-up and shut-down of the module";

constexpr SoundImport kSound[] = {
    {"MapGenericMask", kNoFailure},
    {"_wsplitpath_s", "fails for small buffers alone; those of the library have the size of the path"},
    {"CharUpperBuffW", kNoFailure},
    {"GetCurrentProcess", kNoFailure},
    {"GetLastError", kNoFailure},
    {"SetLastError", kNoFailure},
    {"SysStringLen", kNoFailure},
    {"_errno", kNoFailure},
    {"towlower", kNoFailure},
    {"toupper", kNoFailure},
    {"memcpy", kNoFailure},
    {"memmove", kNoFailure},
    {"memset", kNoFailure},
    {"strlen", kReads},
    {"strncmp", kReads},
    {"wcschr", kReads},
    {"wcslen", kReads},
    {"_wcsicmp", kReads},
    {"vprintf", "built-in log functions, which the first registration replaces"},
    {"_wrmdir", "removes directories on the way to the end of the process, like TerminateProcess"},
    {"TerminateProcess", "ends the process; tests of CleanupDirectory run it in a program of its own"},
    {"DeleteCriticalSection", kStartUp},
    {"EnterCriticalSection", kStartUp},
    {"InitializeCriticalSection", kStartUp},
    {"LeaveCriticalSection", kStartUp},
    {"Sleep", kStartUp},
    {"TlsGetValue", kStartUp},
    {"VirtualProtect", kStartUp},
    {"VirtualQuery", kStartUp},
    {"__iob_func", kStartUp},
    {"_amsg_exit", kStartUp},
    {"_initterm", kStartUp},
    {"_lock", kStartUp},
    {"_unlock", kStartUp},
    {"abort", kStartUp},
    {"realloc", kStartUp},
    {"fwrite", kStartUp},
    {"vfprintf", kStartUp},
};

} // namespace

std::span<const FailingImport> FailingImports()
{
    return kFailing;
}

std::span<const SoundImport> SoundImports()
{
    return kSound;
}
