// The one file-manager object: the error state that all path and file operations share, and the operations.
//
// Each operation is defined in the folder of its subject. All of them may move the error state; none is safe for
// two threads at once.

#pragma once

#include <Kestrovane.h>

#include <cstdint>
#include <ctime>
#include <optional>
#include <string>
#include <vector>

namespace quorvantavss {

// What came of opening a file for reading.
enum class FileProbe {
    kReadable,
    kHeld,       // it is there, but another handle excludes readers
    kNotReadable // refused path, missing, a directory, access denied
};

class SearchedDirectory; // fileops/Listing.cpp

class CVssFileManager {
public:
    CVssFileManager() noexcept;

    // The error state (frame/FileManagerErrors.cpp). The text is that of the last failure, empty after a success;
    // only the log ever shows it.
    virtual std::wstring GetErrorText();
    // Records a failure of the runtime library; logs nothing.
    virtual void SetErrnoError(std::int32_t code, const std::wstring& subject);
    // Logs the thread's last error, if it is not 0, and leaves it as it is.
    virtual void ReportLastError();

    void SetHostFunctions(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                          VssFileManagerLogFn auxLogger);

    // Validation, both in place (paths/PathValidation.cpp).
    bool ValidatePath(std::wstring& path);
    bool NormalizeDirectoryPath(std::wstring& path);

    // Decomposition (paths/PathDecomposition.cpp).
    std::wstring FileNamePart(const std::wstring& path);
    std::wstring DirectoryPart(const std::wstring& path);
    std::wstring PartWithoutDrive(const std::wstring& path);
    std::wstring DrivePart(const std::wstring& path);
    std::wstring TranslateSharePath(const std::wstring& path);

    // Checks (fileops/DirectoryChecks.cpp, fileops/FileChecks.cpp) and creation (fileops/DirectoryCreation.cpp).
    bool isDirectoryExists(const std::wstring& path);
    bool isDirectoryReadWritable(const std::wstring& path);
    bool RecursivelyCreateDirectory(const std::wstring& path);
    bool isFileExists(const std::wstring& path);
    FileProbe ProbeFile(const std::wstring& path);

    // Listings (fileops/Listing.cpp). ScanDirectory adds to a list that is sorted or empty, WalkDirectories to any;
    // they give false when the directory is refused, missing or, in the walk, cannot be searched.
    bool ScanDirectory(const std::wstring& filter, const std::wstring& directory, std::vector<std::wstring>& files,
                       bool fullPath);
    bool WalkDirectories(const std::wstring& directory, std::vector<std::wstring>& directories);
    std::vector<std::wstring> ListFiles(const std::wstring& directory, const std::wstring& filter, bool fullPath);
    std::vector<std::wstring> ListTree(const std::wstring& directory, const std::wstring& filter, bool fullPath);
    std::vector<std::wstring> ListDirectories(const std::wstring& directory);

    // Copy (fileops/FileCopy.cpp).
    bool CopyToDirectory(const std::wstring& source, const std::wstring& directory);
    bool CopyToDirectoryAs(const std::wstring& source, const std::wstring& directory, const std::wstring& name);

    // Deletion on the runtime library (fileops/FileDeletion.cpp).
    bool DeleteMatchingFiles(const std::wstring& directory, const std::wstring& filter);
    bool CleanUpLongPath(const std::wstring& directory);

private:
    void ClearErrorText() { m_errorText.clear(); }
    void RecordErrno(const std::wstring& subject);
    std::wstring TextAfterLast(wchar_t mark, std::wstring path);
    std::wstring TextBeforeLast(wchar_t mark, std::wstring path);
    void TickKeepAlive();
    void LogFile(const std::wstring& file);
    std::optional<SearchedDirectory> SearchSubdirectories(const std::wstring& directory);
    bool ListTreeInto(const std::wstring& filter, const std::wstring& directory, std::vector<std::wstring>& files);
    bool AppendScan(const std::wstring& filter, const std::wstring& directory, std::vector<std::wstring>& files);
    bool CopyInto(const std::wstring& source, const std::wstring& directory, const std::wstring* name);
    std::wstring CreateComponents(const std::wstring& directory);
    bool DeleteFileOrRecord(const std::wstring& path);
    bool DeleteOneFile(const std::wstring& path);
    bool DeleteFilesOf(const std::wstring& directory);
    bool RemoveOneDirectory(const std::wstring& directory);
    void ReportUnreachableDirectory(const std::wstring& directory);

    std::wstring m_errorText;
    VssFileManagerLogFn m_pfnLogger;
    VssFileManagerLogFn m_pfnAuxLogger;
    VssFileManagerKeepAliveFn m_pfnKeepAlive;
    std::clock_t m_keepAliveStamp;
    std::int32_t m_lastError = 0;
};

} // namespace quorvantavss

extern quorvantavss::CVssFileManager g_fileManager;
