// Copies files as they were when a snapshot of their volume was taken:
//
//   read-snapshot VOLUME DEVICE TARGET FILE...
//
// VOLUME is a mount path such as C:\, DEVICE the snapshot of that volume, such as
// \\?\GLOBALROOT\Device\HarddiskVolumeShadowCopy1, TARGET the directory that receives the copies. Each FILE is the path of
// the live file. The exit code is 0 if every file was copied, 1 if one was not, and 2 after wrong usage.

#include <Kestrovane.h>

#include <cstdarg>
#include <cstdio>
#include <exception>
#include <map>
#include <string>

namespace {

using SnapshotMap = std::map<std::wstring, std::wstring>; // volume names and the devices of their snapshots

void Print(const std::wstring& line)
{
    const int length = static_cast<int>(line.size());
    std::string utf8(line.size() * 3, '\0'); // one UTF-16 code unit takes up to three bytes
    utf8.resize(static_cast<std::size_t>(::WideCharToMultiByte(CP_UTF8, 0, line.c_str(), length, utf8.data(),
                                                               static_cast<int>(utf8.size()), nullptr, nullptr)));
    std::printf("%s\n", utf8.c_str());
}

// Level 2 is progress. Level 0 holds the details of failures.
int __cdecl Log(int level, const char* format, ...)
{
    if (level != 0) {
        return 0;
    }
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vfprintf(stderr, format, arguments);
    va_end(arguments);
    return printed;
}

// A console program has no supervisor that waits for a sign. A service reports its progress here.
int __cdecl KeepAlive(int /*seconds*/, ...)
{
    return 0;
}

// A copy that ends with a read error reports success and leaves a shortened target, so the sizes are compared.
bool CopyCompletely(std::wstring source, const std::wstring& directory)
{
    std::wstring target = AppendBackslash(directory) + GetFileName(source);
    return DoCopyComponentFileToDir(source, directory) == 1 && getFileSize(source) == getFileSize(target) &&
           isFileExists(target);
}

// Returns the path of `file` inside the snapshot of its volume; empty if that volume has none. The map must be asked before
// the path is built: for a volume that is missing, the result would be a path on the current drive.
std::wstring SnapshotPath(const std::wstring& file, SnapshotMap& snapshots)
{
    if (!snapshots.contains(GetUniqueVolumeNameForPath(file))) {
        return {};
    }
    CComBSTR path; // the library appends to it
    BuildSnapshotFilePath(file.c_str(), path, snapshots);
    return {path, path.Length()};
}

bool CopyFromSnapshot(const std::wstring& file, const std::wstring& directory, SnapshotMap& snapshots)
{
    const std::wstring source = SnapshotPath(file, snapshots);
    if (source.empty()) {
        Print(L"FAILED " + file + L": its volume has no snapshot");
        return false;
    }
    const bool copied = CopyCompletely(source, directory);
    Print((copied ? L"copied " : L"FAILED ") + source);
    return copied;
}

} // namespace

int wmain(int count, wchar_t** arguments)
{
    if (count < 5) {
        Print(L"usage: read-snapshot VOLUME DEVICE TARGET FILE...");
        return 2;
    }
    SetVssFileManagerLogger(&Log, &KeepAlive, &Log); // before any other call
    try {
        SnapshotMap snapshots = {{GetUniqueVolumeNameForPath(arguments[1]), arguments[2]}};
        bool allCopied = true;
        for (int i = 4; i < count; ++i) {
            allCopied = CopyFromSnapshot(arguments[i], arguments[3], snapshots) && allCopied;
        }
        return allCopied ? 0 : 1;
    } catch (const CAtlException& error) {
        std::fprintf(stderr, "error 0x%08lX\n", static_cast<unsigned long>(error.m_hr));
    } catch (const std::exception& error) { // std::bad_alloc
        std::fprintf(stderr, "%s\n", error.what());
    }
    return 1;
}
