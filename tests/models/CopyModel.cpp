// A plain restatement of the file copy's steps, and the simulated platform that it and the library work on.

#include "tests/models/CopyModel.h"

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <sstream>

namespace {

constexpr const wchar_t* kCurrentDirectory = LR"(Q:\home)";
constexpr int kDescriptor = 77; // of the source, while its existence is checked
constexpr int kErrorLevel = 0;  // of failure reports
constexpr DWORD kBlock = 8192;  // bytes
constexpr DWORD kFlags = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN;

std::wstring Number(std::uintptr_t number)
{
    return std::to_wstring(number);
}

std::wstring Number(HANDLE file)
{
    return Number(reinterpret_cast<std::uintptr_t>(file));
}

void Report(SimulatedFiles& files)
{
    AddFailureReport(files.script, {"   - %S: %d\n", L"", kErrorLevel}, ::GetLastError());
}

// Releasing a handle leaves the last error as it was.
void Release(SimulatedFiles& files, HANDLE file)
{
    const DWORD error = ::GetLastError();
    files.CloseHandle(file);
    ::SetLastError(error);
}

// Without a current directory to return to, nothing is entered, and the attributes decide.
bool Enter(SimulatedFiles& files, bool hasCurrent, const std::wstring& directory)
{
    if (hasCurrent) {
        return files.ChangeDirectory(directory) != -1;
    }
    const DWORD attributes = files.Attributes(directory);
    const bool isDirectory = attributes != INVALID_FILE_ATTRIBUTES && (attributes & FILE_ATTRIBUTE_DIRECTORY) != 0;
    if (!isDirectory) {
        errno = ENOENT;
    }
    return isDirectory;
}

std::wstring Message(const std::wstring& directory)
{
    switch (errno) {
    case ENOENT:
        return L"Unable to locate the directory: %S\n | " + directory;
    case EINVAL:
        return L"Invalid buffer.\n";
    default:
        return L"Unknown error.\n";
    }
}

// Reads and writes block by block. A failed read ends the copy with success.
bool CopyBlocks(SimulatedFiles& files, HANDLE source, HANDLE target)
{
    char block[kBlock];
    for (;;) {
        DWORD read = 0;
        if (files.Read(source, block, kBlock, read) == FALSE || read == 0) {
            return true;
        }
        DWORD written = 0;
        files.Write(target, block, read, written);
        if (written != read) {
            return false;
        }
    }
}

bool CopyBytes(SimulatedFiles& files, const std::wstring& source, const std::wstring& target)
{
    HANDLE from = files.CreateFile(source, GENERIC_READ, 0, OPEN_EXISTING, kFlags);
    if (from == INVALID_HANDLE_VALUE) {
        return false;
    }
    HANDLE to = files.CreateFile(target, GENERIC_WRITE, 0, CREATE_ALWAYS, kFlags);
    const bool copied = to != INVALID_HANDLE_VALUE && CopyBlocks(files, from, to);
    if (to != INVALID_HANDLE_VALUE) {
        Release(files, to);
    }
    Release(files, from);
    return copied;
}

} // namespace

bool SimulatedFiles::RuntimeSucceeds(std::wstring call)
{
    constexpr int kErrnos[] = {ENOENT, EACCES, EINVAL, EMFILE};
    const std::optional<DWORD> error = script.Add(std::move(call));
    if (error) {
        errno = kErrnos[*error % std::size(kErrnos)];
        ::SetLastError(*error);
    }
    return !error;
}

int SimulatedFiles::Open(const std::wstring& path, int flags)
{
    return RuntimeSucceeds(L"_wopen " + path + L" " + std::to_wstring(flags)) ? kDescriptor : -1;
}

int SimulatedFiles::Close(int descriptor)
{
    return RuntimeSucceeds(L"_close " + std::to_wstring(descriptor)) ? 0 : -1;
}

bool SimulatedFiles::ReadCurrentDirectory(wchar_t* buffer, int capacity)
{
    const std::wstring directory = kCurrentDirectory;
    if (!RuntimeSucceeds(L"_wgetcwd " + std::to_wstring(capacity))) {
        return false;
    }
    buffer[directory.copy(buffer, directory.size())] = L'\0';
    return true;
}

int SimulatedFiles::ChangeDirectory(const std::wstring& directory)
{
    return RuntimeSucceeds(L"_wchdir " + directory) ? 0 : -1;
}

int SimulatedFiles::CreateDirectory(const std::wstring& directory)
{
    return RuntimeSucceeds(L"_wmkdir " + directory) ? 0 : -1;
}

void SimulatedFiles::Print(const std::wstring& line)
{
    RuntimeSucceeds(L"printf " + line);
}

DWORD SimulatedFiles::Attributes(const std::wstring& path)
{
    return script.Succeeds(L"GetFileAttributesW " + path) ? FILE_ATTRIBUTE_DIRECTORY | FILE_ATTRIBUTE_HIDDEN
                                                          : INVALID_FILE_ATTRIBUTES;
}

HANDLE SimulatedFiles::CreateFile(const std::wstring& path, DWORD access, DWORD share, DWORD disposition, DWORD flags)
{
    std::wostringstream call;
    call << L"CreateFileW " << path << L" " << access << L" " << share << L" " << disposition << L" " << flags;
    return script.Succeeds(call.str()) ? reinterpret_cast<HANDLE>(++m_handles) : INVALID_HANDLE_VALUE;
}

BOOL SimulatedFiles::Read(HANDLE file, void* buffer, DWORD size, DWORD& read)
{
    read = 0;
    if (!script.Succeeds(L"ReadFile " + Number(file) + L" " + Number(size))) {
        return FALSE;
    }
    read = static_cast<DWORD>(std::min<std::size_t>(size, m_content.size() - m_position));
    std::memcpy(buffer, m_content.data() + m_position, read);
    m_position += read;
    return TRUE;
}

// A failing write has written the half.
BOOL SimulatedFiles::Write(HANDLE file, const void* buffer, DWORD size, DWORD& written)
{
    const bool succeeds = script.Succeeds(L"WriteFile " + Number(file) + L" " + Number(size));
    written = succeeds ? size : size / 2;
    m_written.append(static_cast<const char*>(buffer), written);
    return succeeds ? TRUE : FALSE;
}

BOOL SimulatedFiles::CloseHandle(HANDLE file)
{
    return script.Succeeds(L"CloseHandle " + Number(file)) ? TRUE : FALSE;
}

void CopyModel::CreateDirectories(SimulatedFiles& files, const std::wstring& directory)
{
    wchar_t current[MAX_PATH];
    const bool hasCurrent = files.ReadCurrentDirectory(current, MAX_PATH);
    std::wstring created = directory.substr(0, 2); // the drive
    std::wstring rest = directory.substr(std::min(directory.find_first_not_of(L'\\', 2), directory.size()));
    for (auto end = rest.find(L'\\'); end != std::wstring::npos; end = rest.find(L'\\')) {
        Enter(files, hasCurrent, created);
        created += L'\\' + rest.substr(0, end);
        rest.erase(0, end + 1);
        if (files.CreateDirectory(created) == -1) {
            m_lastErrorCode = static_cast<int>(::GetLastError());
        }
    }
    if (!Enter(files, hasCurrent, created)) {
        const DWORD error = ::GetLastError();
        files.Print(Message(created));
        ::SetLastError(error);
        Report(files);
        ::SetLastError(static_cast<DWORD>(m_lastErrorCode));
    }
    if (hasCurrent) {
        const DWORD error = ::GetLastError();
        const int errnoBefore = errno;
        files.ChangeDirectory(current);
        errno = errnoBefore;
        ::SetLastError(error);
    }
}

// `given` is absolute.
int CopyModel::CopyAs(SimulatedFiles& files, const std::wstring& source, const std::wstring& given,
                      const std::wstring& name)
{
    const std::wstring directory = given.ends_with(L'\\') ? given : given + L'\\';
    if (source.empty()) {
        Report(files);
        return 0;
    }
    const int descriptor = files.Open(source, 0);
    if (descriptor == -1) {
        return 0;
    }
    const DWORD error = ::GetLastError();
    files.Close(descriptor);
    ::SetLastError(error);
    CreateDirectories(files, directory);
    if (!CopyBytes(files, source, directory + name)) {
        m_lastErrorCode = errno;
        return 0;
    }
    return 1;
}

int CopyModel::CopyToDirectory(SimulatedFiles& files, const std::wstring& source, const std::wstring& directory)
{
    const std::wstring name = source.substr(source.rfind(L'\\') + 1);
    return CopyAs(files, source, directory, name);
}

int CopyModel::CopyToPath(SimulatedFiles& files, const std::wstring& source, const std::wstring& target)
{
    const auto backslash = target.rfind(L'\\');
    return CopyAs(files, source, target.substr(0, backslash), target.substr(backslash + 1));
}
