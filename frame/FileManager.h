// The one file-manager object: the error state that all path and file operations share, and the operations.
//
// Each operation is defined in the folder of its subject. All of them may change the error state; none may run in two
// threads at once.

#pragma once

#include <Kestrovane.h>

#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

class CurrentDirectoryGuard; // paths/CurrentDirectory.h

namespace quorvantavss {

// The outcome of opening a file for reading.
enum class FileProbe {
    kReadable,
    kSharingViolation, // another handle excludes readers
    kUnknown,          // the process has no free file descriptor
    kNotReadable       // invalid path, missing, a directory, access denied
};

class CVssFileManager {
public:
    CVssFileManager() noexcept;

    // The error state: string and code of the last failure. The string is empty after a success. Nothing reads it: the
    // host sees failures in the log alone.
    //
    // Virtual, in this slot order and without a virtual destructor: this table is part of the object's fixed layout.
    // Nothing overrides it.
    virtual std::wstring GetErrorText();
    // Records a failure of the runtime library; logs nothing.
    virtual void SetErrnoError(std::int32_t code, const std::wstring& subject);
    // Logs the thread's last error, unless it is 0, and leaves it unchanged.
    virtual void ReportLastError();

    void SetHostFunctions(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                          VssFileManagerLogFn auxLogger);

    // Validation, both in place (paths/PathValidation.cpp). False after a report for an invalid path.
    [[nodiscard]] bool ValidatePath(std::wstring& path);
    [[nodiscard]] bool NormalizeDirectoryPath(std::wstring& path);

    // Decomposition (paths/PathDecomposition.cpp). Empty for an invalid path and without the character sought.
    [[nodiscard]] std::wstring FileNamePart(const std::wstring& path);
    [[nodiscard]] std::wstring DirectoryPart(const std::wstring& path);
    [[nodiscard]] std::wstring PartWithoutDrive(const std::wstring& path);
    [[nodiscard]] std::wstring DrivePart(const std::wstring& path);
    [[nodiscard]] std::wstring TranslateSharePath(const std::wstring& path);

    // Checks (fileops/DirectoryChecks.cpp, fileops/FileChecks.cpp).
    [[nodiscard]] bool isDirectoryExists(const std::wstring& path);
    // Kept for compatibility: the mask is ignored, read and write access is what is checked.
    [[nodiscard]] bool isDirectoryReadWritable(const std::wstring& path, std::uint32_t accessMask);
    [[nodiscard]] bool isFileExists(const std::wstring& path);
    [[nodiscard]] FileProbe ProbeFile(const std::wstring& path);

    // Creation (fileops/DirectoryCreation.cpp). True for every valid path, even if nothing could be created.
    [[nodiscard]] bool RecursivelyCreateDirectory(const std::wstring& path);

    // Listings (fileops/DirectoryScan.cpp, fileops/DirectoryWalk.cpp, fileops/Listings.cpp). ScanDirectory adds files
    // to a list that is sorted or empty, WalkDirectories adds directories to any list. Both return false if the
    // directory is invalid, missing or, in the walk, cannot be searched; what was added before stays in the list.
    // Entries whose names hold a separator lead out of their directory; a damaged volume or a hostile server may return
    // them. They are skipped; `invalid` receives such files.
    bool ScanDirectory(const std::wstring& filter, const std::wstring& directory, std::vector<std::wstring>& files,
                       bool fullPath, std::vector<std::wstring>* invalid = nullptr);
    [[nodiscard]] bool WalkDirectories(const std::wstring& directory, std::vector<std::wstring>& directories);
    [[nodiscard]] std::vector<std::wstring> ListFiles(const std::wstring& directory, const std::wstring& filter,
                                                      bool fullPath);
    [[nodiscard]] std::vector<std::wstring> ListTree(const std::wstring& directory, const std::wstring& filter,
                                                     bool fullPath);
    [[nodiscard]] std::vector<std::wstring> ListDirectories(const std::wstring& directory);

    // Copy (fileops/FileCopy.cpp).
    [[nodiscard]] bool CopyToDirectory(const std::wstring& source, const std::wstring& directory);
    [[nodiscard]] bool CopyToDirectoryAs(const std::wstring& source, const std::wstring& directory,
                                         const std::wstring& name);

    // Deletion on the runtime library (fileops/FileDeletion.cpp, fileops/TreeDeletion.cpp).
    [[nodiscard]] bool DeleteMatchingFiles(const std::wstring& directory, const std::wstring& filter);
    [[nodiscard]] bool RemoveOneDirectory(const std::wstring& directory);
    [[nodiscard]] bool CleanUpLongPath(const std::wstring& directory);

    // What the operations share.

    // Clears the error text. Returns false, after a report, for an empty path.
    [[nodiscard]] bool BeginOperation(const std::wstring& path);
    void ClearErrorText() { m_errorText.clear(); }
    // Records the runtime's current errno.
    void RecordErrno(const std::wstring& subject);
    // Calls the host's keep-alive function if the last call was more than 599 seconds ago.
    void TickKeepAlive();
    [[nodiscard]] VssFileManagerLogFn Logger() const noexcept { return m_pfnLogger; }

private:
    [[nodiscard]] bool CopyInto(const std::wstring& source, const std::wstring& directory, const std::wstring* name);
    [[nodiscard]] std::wstring CreateComponents(const std::wstring& directory,
                                                const CurrentDirectoryGuard& currentDirectory);
    void ReportUnreachableDirectory(const std::wstring& directory);
    [[nodiscard]] bool DeleteOneFile(const std::wstring& path);
    [[nodiscard]] bool DeleteFilesOf(const std::wstring& directory);

    std::wstring m_errorText;
    VssFileManagerLogFn m_pfnLogger;
    VssFileManagerLogFn m_pfnAuxLogger;
    VssFileManagerKeepAliveFn m_pfnKeepAlive;
    std::clock_t m_keepAliveStamp;
    std::int32_t m_lastError = 0;
};

} // namespace quorvantavss

extern quorvantavss::CVssFileManager g_fileManager;
