// Copy of one file into a directory, which is created first.

#include "frame/FileManager.h"

#include "win32/UniqueResource.h"

#include <windows.h>

namespace {

constexpr DWORD kCopyBlock = 8192; // bytes
constexpr DWORD kSequentialFile = FILE_ATTRIBUTE_NORMAL | FILE_FLAG_SEQUENTIAL_SCAN;

UniqueFileHandle OpenExclusive(const std::wstring& path, DWORD access, DWORD disposition)
{
    return UniqueFileHandle(::CreateFileW(path.c_str(), access, 0, nullptr, disposition, kSequentialFile, nullptr));
}

// Deliberately true if a read error ends the copy early: a restore keeps what could be read. False if a block was not
// written whole; the target stays as it is.
bool CopyBlocks(HANDLE source, HANDLE target)
{
    unsigned char block[kCopyBlock];
    DWORD read = 0;
    while (::ReadFile(source, block, kCopyBlock, &read, nullptr) && read > 0) {
        DWORD written = 0;
        ::WriteFile(target, block, read, &written, nullptr);
        if (written != read) {
            return false;
        }
    }
    return true;
}

bool CopyBytes(const std::wstring& source, const std::wstring& target)
{
    const UniqueFileHandle from = OpenExclusive(source, GENERIC_READ, OPEN_EXISTING);
    if (!from) {
        return false;
    }
    const UniqueFileHandle to = OpenExclusive(target, GENERIC_WRITE, CREATE_ALWAYS);
    return to && CopyBlocks(from.Get(), to.Get());
}

} // namespace

namespace quorvantavss {

bool CVssFileManager::CopyToDirectory(const std::wstring& source, const std::wstring& directory)
{
    return CopyInto(source, directory, nullptr);
}

bool CVssFileManager::CopyToDirectoryAs(const std::wstring& source, const std::wstring& directory,
                                        const std::wstring& name)
{
    return CopyInto(source, directory, &name);
}

// A null name stands for the name of the source.
bool CVssFileManager::CopyInto(const std::wstring& source, const std::wstring& directory, const std::wstring* name)
{
    if (!BeginOperation(source)) {
        return false;
    }
    std::wstring from = source;
    std::wstring into = directory;
    if (!ValidatePath(from) || !NormalizeDirectoryPath(into) || !isFileExists(from) ||
        !RecursivelyCreateDirectory(into)) {
        return false;
    }
    if (!CopyBytes(from, into + (name == nullptr ? FileNamePart(from) : *name))) {
        RecordErrno(from);
        return false;
    }
    return true;
}

} // namespace quorvantavss

int DoCopyComponentFileToDir(const std::wstring& source, const std::wstring& directory)
{
    return g_fileManager.CopyToDirectory(source, directory) ? 1 : 0;
}

int DoCopyComponentFile(const std::wstring& source, const std::wstring& target)
{
    const std::wstring directory = g_fileManager.DirectoryPart(target);
    const std::wstring name = g_fileManager.FileNamePart(target);
    // Only the directory could not be resolved. An empty one would be the current directory.
    if (directory.empty() && !name.empty()) {
        return 0;
    }
    return g_fileManager.CopyToDirectoryAs(source, directory, name) ? 1 : 0;
}
