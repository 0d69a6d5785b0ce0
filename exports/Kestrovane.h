/// @file
/// Kestrovane: file-system work around volume snapshots and restores, for backup agents.
///
/// Include this header and link `libKestrovane.dll.a`. The host uses the shared C++ runtime of the toolchain that built
/// the DLL, because C++ strings, containers and exceptions cross this interface. The header includes `<windows.h>`.
///
/// ### Before the first call
///
/// Register the host's functions with SetVssFileManagerLogger. Until then, log lines go to standard output with the
/// prefix "Kestrovane: ".
///
/// ### Threads and process-wide state
///
/// Call the library from one thread at a time. It has one error state and one keep-alive stamp, and no locks. Several
/// functions change the process's current directory while they run and restore it before they return, also when an
/// exception leaves them. Those functions say so under "Side effects".
///
/// ### Paths
///
/// Functions that "validate" a path replace "/" by "\" and make the path absolute: a relative path is appended to the
/// current directory, a path that begins with one backslash takes the drive of the current directory. A path that
/// begins with "..\" becomes an ancestor of the current directory followed by its last component; for that, the
/// process's current directory is changed for a moment. A path is invalid if a component holds ':', '*' or '?'. Only
/// the first 255 characters of a component are validated. Paths that begin with two backslashes are always valid. An
/// invalid path is reported: the thread's last error, unless it is 0, is logged at level 0.
///
/// A relative path is invalid, too, while the current directory cannot be read or has 260 characters or more, and if a
/// directory that its "..\" steps lead through cannot be entered. While the current directory cannot be read, the
/// library reads attributes to check or create an absolute path, instead of changing the current directory.
///
/// A path ends at its first NUL for Windows. A directory with an embedded NUL cannot be searched: listings are empty,
/// and nothing is deleted.
///
/// ### Lengths
///
/// Paths pass through buffers of 260 characters (MAX_PATH, terminator included) wherever Windows or the runtime library
/// requires one. A longer path fails with the error of an over-long path; nothing is written past a buffer.
///
/// ### Exceptions
///
/// Win32 failures are never thrown. CAtlException comes from BSTR strings, std::bad_alloc and std::length_error from
/// standard strings and containers. A function that throws neither says so. An exception that a host function throws
/// passes through the library, unless the called function says that it throws nothing.
///
/// ### Return values that need a second check
///
/// - RecursivelyCreateDirectory is true for every valid path, even if nothing was created. Call isDirectoryExists
///   afterwards.
/// - DoCopyComponentFile and DoCopyComponentFileToDir return 1 if a read error ends the copy early: the target then
///   holds the first part of the source. Compare sizes or contents. A copy that returns 0 may leave an empty or partial
///   target.
/// - getFileSize returns 0 for an empty file and for a missing one.
/// - isFileExists is false for a directory, for a file that this process may not read, and for a file that another
///   handle has opened without sharing.
/// - IsFileExistsSnap is true for a null pointer.
/// - IsCanReplaceFile is true for a file that does not exist and for one that may not be read.
/// - Listings and EnumVolumes return an empty or partial list if they fail. Such a list looks like a complete one.
/// - One directory that cannot be searched, at any depth, reduces ListFilesFilterRecursive to the files of the top
///   directory.
/// - ListDirecoriesRecursive lists one level, not the tree.
/// - DeleteFilesFilter is true for a missing directory.
/// - DeleteDirectoryRecursive returns 0 without a log line if the directory cannot be searched, or cannot be removed
///   once it is empty. What it deleted before is gone.
/// - GetUniqueVolumeNameForPath returns 260 NUL characters for an empty path, the volume path for a share, and an empty
///   string for a path without a volume.
/// - GetDisplayNameForVolumeNoThrow is true with an empty string for a volume without a mount path.
/// - GetAvailableVolumeSpace and GetTotalVolumeSpace return 0.0 if the query fails, as for a full volume.
/// - GetVolumeMaxFreeSpace returns an empty string if no volume has free space, and if none could be queried.
/// - BuildSnapshotFilePath is always true. For a volume that is missing from the map, it appends the path below the
///   volume alone, which does not lead into a snapshot, and adds an empty entry to the map. Check the map first.
/// - IsRunOnWin2003SP1Up returns 1 if the version cannot be read.
/// - ChangeObjectOwner returns the outcome of the object itself. Failures below it are in the log alone.
/// - The path functions return an empty string for an invalid path, and for a path without the character sought.
/// - WStringAfterWCHAR and WStringBeforeWCHAR return the whole string if the character does not occur.
/// - FindMatchStringInList is true for every string if the list holds an empty element.
/// - FindStringKeyInMap returns the stored value, not its key. It and FindStringValueInMap return "NA" for a missing
///   entry, as for one that holds "NA".
/// - CreateCacheFile may return false and leave a cache file: its second argument then names the file.
/// - CreateCacheFile, CreateCacheFileList and RestoreFileListCache are true with a shortened copy after a read error.
///   RestoreFileListCache may be true after memory ran out: the files that follow were not copied.
/// - MoveCacheFile is true for every move that Windows registers, even if it will do nothing at the reboot.
/// - Both DeleteCacheFileList functions are true even if files could be neither deleted nor registered for deletion. If
///   memory runs out, both stop; the map function then returns false, the list function still true.
///
/// ### Pitfalls
///
/// - CleanupDirectory ends the process for a path of more than 260 characters, unless that directory is missing or
///   cannot be searched.
/// - `..\x` as a directory means the parent directory, not its subdirectory x: `DeleteFilesFilter(L"..\\x", L"*")`
///   deletes the files of `..`. `..\..\a\f.txt` loses its middle component a.
/// - A filter may hold a path: `DeleteFilesFilter(dir, L"..\\*")` deletes the files of the parent directory. Pass
///   filters of your own, never those of a user.
/// - Deletion and owner change follow junctions and symbolic links out of the tree. Never run them on a tree whose
///   owner has fewer rights than the process: that owner decides where links lead.
/// - Names that only paths with the prefix `\\?\` reach (trailing dots or blanks, device names) stop a deletion.
/// - C:\#Quorvanta\Cache, the directory of cache files for long paths, can be created first by any user who may write
///   to C:\. Create it at installation, with a DACL that only administrators may change.
/// - RestoreFileListCache with typed keys ("FILE|C:\..."): the colon of the drive makes such a key invalid as a path,
///   so the copies are written into the process's current directory, and the result is true. Use maps with plain paths.
/// - MapRestorePath neither adds nor removes a backslash between the alternate location and the rest: with a mapping
///   path that ends with a backslash, two names run together. MapRestorePath1 does not do this.
/// - The first mapping that covers a file is used, not the most specific one.
/// - GetNQUniqueVolumeNameForPath repeats characters if the first dot is not in the server name.
#pragma once

#include <KestrovaneBstr.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#if defined(KESTROVANE_BUILD)
#define KESTROVANE_API __declspec(dllexport)
#elif defined(KESTROVANE_STATIC)
#define KESTROVANE_API
#else
#define KESTROVANE_API __declspec(dllimport)
#endif

/// @defgroup host Host functions
/// Registration of the host's log and keep-alive functions.
/// @{

/// Receives the log lines of the library. The result is ignored.
///
/// @param level   2 for locations and progress, 0 for details and errors. The library filters nothing.
/// @param format  A narrow printf format with its own line end. Wide arguments use %S, narrow ones %s.
///
/// @warning Two formats pair %s with a wide path (see DeleteDirectoryRecursive), and one pairs %u with a wide path (see
///          ChangeObjectOwner). The platform's printf stops at a %S argument that the current locale cannot convert.
using VssFileManagerLogFn = int(__cdecl*)(int level, const char* format, ...);

/// Tells the host that the library is still working. The result is ignored.
///
/// @param seconds  How long to wait for the next call: 600, or 10800 before a write of security information. No further
///                 arguments are passed.
using VssFileManagerKeepAliveFn = int(__cdecl*)(int seconds, ...);

/// Registers the host's functions.
///
/// They are used until the next registration and must stay callable until the DLL is unloaded.
///
/// @param logger     Receives every log line. A null pointer faults at once.
/// @param keepAlive  Called by long operations. A null pointer faults at the first call.
/// @param auxLogger  Stored, never called.
/// @par Logs          Its location at level 2, through `logger`, before the function returns.
/// @par Side effects  None on the process.
KESTROVANE_API void SetVssFileManagerLogger(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                            VssFileManagerLogFn auxLogger);

/// Calls the host's keep-alive function with 600 seconds.
///
/// @param unused  Never read; may be null.
/// @par Logs          Its location at level 2, before the call.
/// @par Side effects  None.
KESTROVANE_API void SendKA(const char* unused);

/// @}
/// @defgroup paths Paths
/// Decomposition of paths. The first five functions validate the path and never change their argument.
/// @{

/// Returns the string after the last backslash: `f.tar.gz` for `C:\dir\f.tar.gz`.
///
/// @param path  A file or directory.
/// @return Empty for a path that ends with a backslash, for `C:f.txt` (no backslash) and for an invalid path.
/// @par Logs          The last error, for an invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::wstring GetFileName(const std::wstring& path);

/// Returns the string before the last backslash: `C:\dir` for `C:\dir\f.txt`, but `C:` for `C:\f.txt`.
///
/// @param path  A file or directory.
/// @return Without its trailing backslash. Empty for a path without a backslash and for an invalid path.
/// @par Logs          The last error, for an invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::wstring GetPathFileName(const std::wstring& path);

/// Returns the string after the last colon: `\dir\f.txt` for `C:\dir\f.txt`.
///
/// @param path  A file or directory.
/// @return Empty for a path without a colon and for an invalid path.
/// @par Logs          The last error, for an invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::wstring GetPathFileNameNoVolume(const std::wstring& path);

/// Returns the string before the last colon: `C` for `C:\dir`, `\\?\C` for `\\?\C:\dir`.
///
/// @param path  A file or directory.
/// @return Empty for a share and for an invalid path.
/// @par Logs          The last error, for an invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::wstring GetVolume(const std::wstring& path);

/// Returns the local path of an administrative share: `C:\dir\f.txt` for `\\host\volume$C\dir\f.txt`.
///
/// @param path  A path with "volume$" in lower case. The last occurrence counts.
/// @return The validated path if it does not hold "volume$". Empty if no backslash follows the drive letter, and for an
///         invalid path.
/// @par Logs          The last error, for an invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::wstring GetPathFileTranslate(const std::wstring& path);

/// Returns `path` with a trailing backslash.
///
/// @param path  Any string; it is not validated. A trailing "/" does not count as a backslash.
/// @return "\" for an empty path.
/// @par Logs          Nothing.
/// @par Side effects  None.
KESTROVANE_API std::wstring AppendBackslash(std::wstring path);

/// @}
/// @defgroup strings Strings and lists
/// Comparisons and conversions. "Ignoring case" follows the runtime's current locale; in the default locale only A to Z
/// and a to z have case. Comparisons end at the first NUL. Nothing is logged, and there are no side effects.
/// @{

/// Returns whether two strings are equal, ignoring case.
KESTROVANE_API bool IsEqual(std::wstring first, std::wstring second);

/// Returns whether an element of `list` equals `string`, ignoring case.
KESTROVANE_API bool FindStringInList(std::wstring string, std::vector<std::wstring> list);

/// Returns whether an element of `list` occurs inside `string`, ignoring case.
///
/// @param string  The string to search.
/// @param list    Substrings, not patterns: '*' and '?' have no special meaning. An empty element occurs in every
///                string.
KESTROVANE_API bool FindMatchStringInList(std::wstring string, std::vector<std::wstring> list);

/// Returns the part of `string` after the first `character`; the whole string if the character does not occur.
KESTROVANE_API std::wstring WStringAfterWCHAR(std::wstring string, wchar_t character);

/// Returns the part of `string` before the first `character`; the whole string if the character does not occur.
KESTROVANE_API std::wstring WStringBeforeWCHAR(std::wstring string, wchar_t character);

/// Returns `string` with every character passed through the runtime's narrow toupper. The length is unchanged.
KESTROVANE_API std::wstring WString2UpperCase(const std::wstring& string);

/// Replaces each `%NAME%` by the value of the environment variable. Undefined names stay.
///
/// @param string  Changed in place. A string without '%' is not changed. If Windows rejects the expansion, it is
///                unchanged, too.
/// @par Logs          Nothing. "ExpandEnvironmentStrings failed due to error %d.\n" goes to standard output if Windows
///                    rejects the expansion.
/// @par Side effects  None.
/// @throws CAtlException  0x8007000E if no string can be allocated; `string` is then unchanged.
/// @warning A result of more than 259 characters is cut or lost, as Windows leaves it in a buffer of 260 characters.
///          Each such call keeps its working buffer until the process ends.
KESTROVANE_API void DoExpandEnvironmentStrings(CComBSTR& string);

/// @}
/// @defgroup maps String maps and printing
/// Debugging aids for the host. Every line is logged at level 0. The look-ups copy the map and log each entry that they
/// visit: they are meant for small maps. There are no side effects.
/// @{

/// Logs a title between two lines of hyphens, then the elements of `list`, one per line.
KESTROVANE_API void PrintStringVector(std::string title, std::vector<std::wstring> list);

/// Logs a title between two lines of hyphens, then the keys and values of `map` in key order, one entry per line.
KESTROVANE_API void PrintStringMap(std::string title, std::map<std::wstring, std::wstring> map);

/// Returns the value of the first entry, in key order, whose key equals `key`, ignoring case.
///
/// @return "NA" if there is none.
/// @par Logs  The key, the entries visited and the match.
KESTROVANE_API std::wstring FindStringValueInMap(std::wstring key, std::map<std::wstring, std::wstring> map);

/// Returns the first value, in key order, that equals `value`, ignoring case: its spelling in the map. In spite of the
/// name, the result is never a key.
///
/// @return "NA" if there is none.
/// @par Logs  The value, the entries visited and the match.
KESTROVANE_API std::wstring FindStringKeyInMap(std::wstring value, std::map<std::wstring, std::wstring> map);

/// @}
/// @defgroup checks Checks and creation
/// Existence, access and size of files and directories, and the creation of directories. An empty path is false, after
/// the last error, unless it is 0, was logged.
/// @{

/// Returns whether the process can change into `path`.
///
/// @param path  A directory, with or without a trailing backslash; it is validated.
/// @return False for a file, for a directory that may not be entered, and for an empty or invalid path.
/// @par Logs          The last error, for an empty or invalid path.
/// @par Side effects  The current directory is changed and restored. The last error and errno are those of the attempt.
KESTROVANE_API bool isDirectoryExists(const std::wstring& path);

/// Returns whether the DACL of `path` grants the process's user read and write access.
///
/// @param path  A file or directory, used as it is. Attributes and sharing modes are not checked.
/// @return False if the security descriptor or the process token cannot be read.
/// @par Logs          The last error, for an empty path.
/// @par Side effects  None on the current directory. The last error may be changed by a successful call, too.
KESTROVANE_API bool isDirectoryReadWritable(const std::wstring& path);

/// Creates a directory with all missing parents.
///
/// @param path  A directory, with or without a trailing backslash; it is validated.
/// @return True for every valid path, even if nothing was created. False for an empty or invalid path.
/// @par Logs          The last error, for an empty or invalid path and if the directory cannot be entered in the end.
///                    In that case one of "Unable to locate the directory: %S\n", "Invalid buffer.\n" and "Unknown
///                    error.\n" goes to standard output, too.
/// @par Side effects  The current directory is changed and restored. If the directory cannot be entered, the last error
///                    is that of the last component that could not be created; if all could, it is an older code.
///
/// @code
/// RecursivelyCreateDirectory(directory);
/// const bool created = isDirectoryExists(directory);
/// @endcode
KESTROVANE_API bool RecursivelyCreateDirectory(const std::wstring& path);

/// Returns whether `path` is a file that this process can open for reading.
///
/// @param path  A file; it is validated.
/// @return False for a directory, for a missing file, for one that may not be read or that another handle has opened
///         without sharing, and for an empty or invalid path.
/// @par Logs          The last error, for an empty or invalid path.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`. The last error
///                    and errno are those of the attempt.
KESTROVANE_API bool isFileExists(const std::wstring& path);

/// Returns whether `path`, a file or directory, has attributes that can be read.
///
/// @param path  In the ANSI code page. A null pointer is true.
/// @par Logs          Nothing.
/// @par Side effects  None.
KESTROVANE_API bool IsFileExistsSnap(char* path);

/// Returns whether a restore can replace `path` now.
///
/// @param path  A file. It is validated for reading and used as it is for writing; it is not changed.
/// @return True if the file is missing or can be opened exclusively for writing. True, too, for a file that may not be
///         read. False after a sharing violation, and if the file may not be written.
/// @par Logs          The last error, for an empty or invalid path.
/// @par Side effects  The file is opened for writing without sharing for a moment; its content is not changed.
KESTROVANE_API bool IsCanReplaceFile(std::wstring& path);

/// Returns the size of a file in bytes.
///
/// @param path  A file, used as it is; it is not changed.
/// @return 0 for an empty file, and for one that is missing or cannot be queried.
/// @par Logs          Nothing.
/// @par Side effects  After a failure, the last error is that of the query.
KESTROVANE_API std::int64_t getFileSize(std::wstring& path);

/// @}
/// @defgroup listings Listings
/// Files and subdirectories. Filters are file patterns of the platform, with '*' and '?', ignoring case, short names
/// included; the filter "*" means "*.*". Hidden and system files are listed. Reparse points that lead to directories
/// are entered. Entries whose names hold a separator, as a damaged volume may return them, are skipped. The host's
/// keep-alive function is called with 600 if the last call was more than 599 seconds ago.
/// @{

/// Returns the files of one directory that match `filter`, sorted by code units (upper case first).
///
/// @param directory  It is validated; an empty string is the current directory.
/// @param filter     A file pattern.
/// @param fullPath   True for full paths, false for names.
/// @return Empty if the directory is invalid, missing or cannot be searched.
/// @par Logs          At level 2, each file that is appended to the end of the list when it is found. The last error,
///                    for an invalid directory.
/// @par Side effects  The current directory is changed and restored.
KESTROVANE_API std::vector<std::wstring> ListFilesFilter(const std::wstring& directory, const std::wstring& filter,
                                                         bool fullPath);

/// Returns the files of a tree that match `filter`: first those of `directory`, then those of each directory below it,
/// parents first. They are sorted within each directory.
///
/// @param directory  It is validated; an empty string is the current directory.
/// @param filter     A file pattern.
/// @param fullPath   True for full paths, false for paths relative to `directory`.
/// @return The files of the top directory alone, if one of the directories below it cannot be searched. A partial list
///         looks like a complete one.
/// @par Logs          At level 2, each file, most of them twice; with relative paths, each result once more with its
///                    index. The last error, for an invalid directory.
/// @par Side effects  The current directory is changed and restored.
KESTROVANE_API std::vector<std::wstring> ListFilesFilterRecursive(const std::wstring& directory,
                                                                  const std::wstring& filter, bool fullPath);

/// Returns the immediate subdirectories of `directory`. In spite of the name, it lists one level.
///
/// @param directory  It is validated; an empty string is the current directory.
/// @return Full paths without a trailing backslash, in the order in which Windows returns them. Empty if the directory
///         is invalid or cannot be searched.
/// @par Logs          The last error, for an invalid directory.
/// @par Side effects  The current directory is changed and restored for a path that begins with `..\`.
KESTROVANE_API std::vector<std::wstring> ListDirecoriesRecursive(const std::wstring& directory);

/// @}
/// @defgroup deletion Deletion
/// Deletion of files and trees. Attributes are never changed: a read-only file stops a deletion. Nothing goes to a
/// recycle bin. An entry whose name holds a separator, as a damaged volume may return it, cannot be deleted: it fails
/// with 123 (ERROR_INVALID_NAME).
/// @{

/// Deletes the files of one directory that match `filter`. Its subdirectories stay.
///
/// @param directory  It is validated.
/// @param filter     A file pattern, used as it is ("*" is not widened).
/// @return True if every matching file was deleted, if none matched, and if the directory is missing, invalid or cannot
///         be searched. False at the first file that could not be deleted; later ones are not tried.
/// @par Logs          The files, as ListFilesFilter does.
/// @par Side effects  The current directory is changed and restored. After a failure, the last error is that of the
///                    attempt.
/// @warning An empty directory is the current directory. `..\x` is the parent directory.
KESTROVANE_API bool DeleteFilesFilter(const std::wstring& directory, const std::wstring& filter);

/// Deletes a directory with everything in it.
///
/// @param directory  NUL-terminated, at most 257 characters, used as it is.
/// @return Nonzero on success. 0 at the first failure; nothing is retried. A path or entry that does not fit 260
///         characters fails with 206 (ERROR_FILENAME_EXCED_RANGE), a null or empty path with 3 (ERROR_PATH_NOT_FOUND).
/// @par Logs          At level 0, each deletion. For an entry that cannot be deleted, "File couldn't be deleted: %s \n"
///                    or "Directory couldn't be deleted: %s \n", then the report of the last error. Both formats pair
///                    %s with a wide path. Nothing if the directory itself cannot be searched or removed.
/// @par Side effects  After a failure, the last error is that of the failed call. The report reads it after the log
///                    line, so a logger that changes the last error changes the report.
/// @warning Junctions and symbolic links to directories are entered, and what they lead to is deleted. The first entry
///          that Windows returns is skipped as "."; a drive's root has no such entry, so one file or directory stays
///          there and the result is 0. Each level takes less than 1.5 KiB of stack; paths of 260 characters have at
///          most 129 levels.
KESTROVANE_API int DeleteDirectoryRecursive(const wchar_t* directory);

/// Deletes a directory with everything in it: DeleteDirectoryRecursive for a path of up to 260 characters.
///
/// @param directory  A longer path is validated.
/// @return Whether everything was deleted. For a longer path, whether the files below could be deleted; false if the
///         directory is missing, invalid or cannot be searched.
/// @par Logs          As DeleteDirectoryRecursive; for a longer path the last error, if it is invalid.
/// @par Side effects  For a longer path, the current directory is changed and restored.
/// @warning For a longer path that can be searched, the directories below it are removed with their files, deepest
///          first, and then the process ends with STATUS_INVALID_CRUNTIME_PARAMETER (0xC0000417), unless an
///          invalid-parameter handler returns. The directory itself and its own files stay. With the UCRT, the handler
///          is that of the process. With the older runtime, it can only be set inside this DLL, so a host has none.
/// @warning Junctions and symbolic links to directories are entered, and what they lead to is deleted.
KESTROVANE_API bool CleanupDirectory(const std::wstring& directory);

/// @}
/// @defgroup copy Copy
/// Copies of single files. Source and target are opened exclusively: a copy fails while any other handle is open on
/// either. Content alone is copied, no times, attributes, streams or DACLs. An existing target is overwritten. Missing
/// directories are created first.
/// @{

/// Copies `source` into `directory` under its own name.
///
/// @param source     A file; it is validated.
/// @param directory  It is validated.
/// @return 1 if the copy ran to its end, 0 otherwise.
/// @par Logs          The last error, for an empty or invalid path and if the directory cannot be entered.
/// @par Side effects  The current directory is changed and restored. After a failure, the last error is that of the
///                    call that failed.
/// @warning A read error ends the copy with 1 and a shortened target. A target left by a failed copy is not deleted.
///
/// @code
/// const bool copied = DoCopyComponentFileToDir(source, directory) == 1 && getFileSize(target) == getFileSize(live);
/// @endcode
KESTROVANE_API int DoCopyComponentFileToDir(const std::wstring& source, const std::wstring& directory);

/// Copies `source` to the file `target`.
///
/// @param source  A file; it is validated.
/// @param target  A file; it is validated.
/// @return 1 if the copy ran to its end, 0 otherwise.
/// @par Logs          The last error, for an empty or invalid path and if the directory cannot be entered.
/// @par Side effects  The current directory is changed and restored. After a failure, the last error is that of the
///                    call that failed.
/// @warning A read error ends the copy with 1 and a shortened target. A target left by a failed copy is not deleted.
KESTROVANE_API int DoCopyComponentFile(const std::wstring& source, const std::wstring& target);

/// @}
/// @defgroup volumes Volumes
/// Volume names, mount paths and space. A volume path is the drive or folder under which a volume is mounted, or a
/// share, always with its trailing backslash: `C:\`, `C:\mount\data\`, `\\server\share\`. A volume name has the form
/// `\\?\Volume{GUID}\`. Paths are passed to Windows with a trailing backslash. They need not exist below their volume,
/// and are relative to the current directory if they have no drive. Nothing is logged. There are no side effects but
/// the last error: after a failure, it is that of the call that failed.
/// @{

/// Returns whether `path` is a volume path, or a volume name where Windows accepts it as one.
///
/// @param path  With or without a trailing backslash.
/// @return False for a folder in which no volume is mounted, for a share, and for a path that Windows cannot look up.
///         In these cases "GetVolumeNameForVolumeMountPoint(%S) failed with %d\n" goes to standard output, with the
///         path and the last error; characters that the current locale cannot convert are printed as '?'. False without
///         a message for an empty path.
KESTROVANE_API bool IsVolume(std::wstring path);

/// Returns the unique name of the volume that contains `path`.
///
/// @param path  With or without a trailing backslash.
/// @return If a look-up fails, the result of the last one that succeeded: the first name found for the volume, or the
///         volume path, which is the result for every share. An empty string without a volume path. For an empty path,
///         260 NUL characters: size() is 260.
KESTROVANE_API std::wstring GetUniqueVolumeNameForPath(std::wstring path);

/// Returns the unique name of the volume that contains `path`, if every look-up succeeds.
///
/// @param path             With or without a trailing backslash.
/// @param[out] uniqueName  Written on success only.
/// @return False for an empty path, for a share, and if a look-up fails.
KESTROVANE_API bool GetUniqueVolumeNameForPathNoThrow(std::wstring path, std::wstring& uniqueName);

/// Returns GetUniqueVolumeNameForPath without the domain of a server name: `\\server\share\` for
/// `\\server.domain\share\f`.
///
/// @param path  With or without a trailing backslash.
/// @warning The string is cut at its first dot, and continued after the server name. If the dot is not in the server
///          name, characters are repeated: `\\server\share.1\` gives `\\server\share\share.1\`.
KESTROVANE_API std::wstring GetNQUniqueVolumeNameForPath(std::wstring path);

/// Returns the first mount path of a volume in Windows' list, to be shown to people.
///
/// @param volumeName        Used as it is; Windows requires its trailing backslash.
/// @param[out] displayName  Written on success only. Empty for a volume that is not mounted.
/// @return False if Windows returns no list.
KESTROVANE_API bool GetDisplayNameForVolumeNoThrow(std::wstring volumeName, std::wstring& displayName);

/// Returns the mount paths of all volumes, in Windows' order: all paths of one volume, then those of the next. A path
/// that occurs more than once, ignoring case, is listed once. Volumes without a mount path are left out.
///
/// @return The paths found before a failure; empty if the search cannot be opened. A volume whose paths cannot be read
///         is left out. Throws nothing.
KESTROVANE_API std::vector<std::wstring> EnumVolumes();

/// Returns the mount path with the most free space for the calling user; the first one if several have the same.
///
/// @return Empty if no volume has free space, and if none could be listed or queried. Throws nothing.
KESTROVANE_API std::wstring GetVolumeMaxFreeSpace();

/// Returns the space available to the calling user on the volume that contains `path`.
///
/// @param path  A directory on the volume. A share needs its trailing backslash.
/// @return Decimal gigabytes (10^9 bytes) after quotas: 1.5 for 1,500,000,000 bytes. 0.0 if the query fails; this looks
///         like a full volume. Throws nothing.
KESTROVANE_API double GetAvailableVolumeSpace(const std::wstring& path);

/// Returns the size of the volume that contains `path`, as far as quotas let the calling user use it.
///
/// @param path  A directory on the volume. A share needs its trailing backslash.
/// @return Decimal gigabytes (10^9 bytes). 0.0 if the query fails. Throws nothing.
KESTROVANE_API double GetTotalVolumeSpace(const std::wstring& path);

/// @}
/// @defgroup snapshots Snapshot paths
/// Paths inside snapshots.
/// @{

/// Appends the path of a live file inside the snapshot of its volume to `result`: the device from the map, then the
/// path below the volume with its leading backslash. With the device D, `C:\data\f.txt` becomes `D\data\f.txt`, and
/// `C:` becomes `D`.
///
/// @param path               A full path on a volume or share; a null pointer counts as an empty path.
/// @param[in,out] result     Appended to, never cleared. Pass an empty string.
/// @param[in,out] snapshots  The devices, without trailing backslash. Keys are volume names (`\\?\Volume{GUID}\`) and,
///                           for shares, volume paths (`\\server\share\`), case-sensitive, as Windows spells them. A
///                           missing key is added with an empty device. A path without a volume uses the empty key and
///                           is appended whole.
/// @return Always true.
/// @par Logs          Nothing.
/// @par Side effects  None on the process.
/// @throws CAtlException   0x8007000E if a string cannot be allocated. If only the path below the volume could not be
///                         appended, the device stays in `result`. A key may have been added.
/// @throws std::bad_alloc  If an entry of the map cannot be allocated.
/// @warning A mount folder or share itself needs its trailing backslash. Without it, the mount folder counts as a
///          folder of its drive, and the share as a path without a volume.
///
/// @code
/// const bool hasSnapshot = snapshots.contains(GetUniqueVolumeNameForPath(path)); // before the call
/// BuildSnapshotFilePath(path.c_str(), result, snapshots);
/// @endcode
KESTROVANE_API bool BuildSnapshotFilePath(const wchar_t* path, CComBSTR& result,
                                          std::map<std::wstring, std::wstring>& snapshots);

/// @}
/// @defgroup versions Windows versions
/// Checks for the 5.x releases of Windows. The version that Windows reports to this process is read at every call.
/// Nothing is logged or thrown, and there are no side effects.
/// @{

/// Returns 1 on Windows XP, 64-bit XP included, else 0; 0 if the version cannot be read.
KESTROVANE_API int IsRunsOnWinXP();

/// Returns 0 on Windows 2000, on Windows XP, 64-bit XP included, and on Server 2003 without a service pack. Returns 1
/// on Server 2003 with any service pack and on every later release, and if the version cannot be read.
KESTROVANE_API int IsRunOnWin2003SP1Up();

/// @}
/// @defgroup owner Owner change
/// Owner and DACL of restored files and folders.
/// @{

/// Makes an account the owner of a file or folder and of everything below it, with full access that everything below
/// inherits. Its other entries in each DACL are replaced. Group and SACL are unchanged.
///
/// The order is depth-first, a folder before its contents. Junctions and symbolic links to folders are entered, unless
/// they lead back to a folder on the way down, or cannot be opened: such a link is changed, but not entered. Entries
/// whose names hold a separator are skipped.
///
/// @param path     A file or folder without a trailing backslash, used as it is up to its first NUL.
/// @param account  A user or group as Windows looks it up: `name`, `DOMAIN\name`, `.\name` (the prefix is removed), or
///                 LocalSystem in this spelling.
/// @return True if the object itself was changed. False at its first failure; nothing below it is then changed. An
///         object below that cannot be changed is skipped with everything below it, and does not change the result.
/// @par Logs          For each object: progress at level 2; at level 0 a failure, and a line about the clock without a
///                    line end.
/// @par Side effects  The host's keep-alive function is called with 600, after the line of SendKA, if the last such
///                    call was more than 570 whole seconds ago; with 10800 before owner and DACL are written, because
///                    Windows may propagate them to a whole tree; with 600 after a successful write. After a failed
///                    write, the host is left with 10800.
/// @throws std::bad_alloc  If a string cannot be allocated.
/// @warning Requires the rights to take ownership and to assign it. Links may lead out of the tree: never run this
///          function with more rights than the owner of the tree has.
/// @warning The line "Error creating new DACL for file/folder to include new owner - error %u.\n" passes the path
///          (wide) before the error, so a printf shows a part of an address. The security descriptors that are read,
///          two for each object, stay allocated until the process ends.
KESTROVANE_API bool ChangeObjectOwner(std::wstring path, std::wstring account);

/// @}
/// @defgroup mapping Restore mapping
/// File descriptions and alternate locations. A file description is a directory, a file pattern with '*' (any run of
/// characters) and '?' (one character), and a recursive flag that includes everything below the directory. Case is
/// ignored, and so is one trailing backslash of the directory. An empty directory counts as `\`. Strings end at their
/// first NUL. There are no side effects.
/// @{

/// Returns whether two file descriptions overlap: some name matches both patterns, and the directories are equal, or
/// one is below the other, whose recursive flag is set.
///
/// @param path1       Directory of the first description; it is not changed.
/// @param spec1       Its file pattern; it is not changed. "*.*" requires a dot.
/// @param recursive1  Its recursive flag.
/// @param path2       Directory of the second description; it is not changed.
/// @param spec2       Its file pattern; it is not changed.
/// @param recursive2  Its recursive flag.
/// @par Logs  Nothing.
/// @throws CAtlException  0x8007000E if a string cannot be allocated.
KESTROVANE_API bool IsFileDescMatch(std::wstring& path1, std::wstring& spec1, bool recursive1, std::wstring& path2,
                                    std::wstring& spec2, bool recursive2);

/// One alternate location: the files of a description, and the directory that replaces theirs.
struct VSS_ALTERNATE_MAPPING {
    std::wstring path;              ///< the directory that the mapping covers
    std::wstring alternateLocation; ///< the directory that replaces it
    std::wstring fileSpec;          ///< the file pattern, with '*' and '?'
    bool recursive;                 ///< whether everything below the directory is covered
};

/// Replaces `path` by its alternate location if a mapping covers it.
///
/// @param[in,out] path  The directory of the file to restore. On success, the alternate location followed by the part
///                      of the directory after the length of the mapping's path as it is written. Nothing is inserted
///                      or removed: with the mapping `C:\Data\` to `D:\Restore`, `C:\Data\Sub` becomes `D:\RestoreSub`.
///                      If the mapping's path is longer, nothing follows.
/// @param spec          The name of the file, or a file pattern; it is not changed.
/// @param mappings      Tried in their order; the first that covers the file is used. They are not changed.
/// @return False if no mapping covers the file. `path` is then unchanged, as it is after an exception.
/// @par Logs  At level 2, if a mapping was found: the file, the mapping and up to two diagnostic lines.
/// @throws CAtlException  0x8007000E if a string cannot be allocated.
///
/// @code
/// // Safe for mappings with and without a trailing backslash:
/// const bool isMapped = MapRestorePath1(directory, name, mappings);
/// @endcode
KESTROVANE_API bool MapRestorePath(std::wstring& path, std::wstring& spec,
                                   std::vector<VSS_ALTERNATE_MAPPING>& mappings);

/// Replaces `path` by its alternate location if a mapping covers it. One trailing backslash of a mapping's path is
/// ignored: with the mapping `C:\Data\` to `D:\Restore`, `C:\Data\Sub` becomes `D:\Restore\Sub`.
///
/// @param[in,out] path  The directory of the file to restore, replaced on success.
/// @param spec          The name of the file, or a file pattern; it is not changed.
/// @param mappings      Tried in their order; the first that covers the file is used. They are not changed.
/// @return False if no mapping covers the file. `path` is then unchanged, as it is after an exception.
/// @par Logs  Nothing.
/// @throws CAtlException  0x8007000E if a string cannot be allocated.
KESTROVANE_API bool MapRestorePath1(std::wstring& path, std::wstring& spec,
                                    std::vector<VSS_ALTERNATE_MAPPING>& mappings);

/// @}
/// @defgroup cache Cache files
/// A file in use that a restore cannot replace now is first written to a cache file, and the cache file replaces it at
/// the next reboot. These functions throw nothing and log nothing of their own; the validation of paths, the checks and
/// the copies that they use log as described there. They change and restore the current directory.
/// @{

/// Creates a cache file with a unique name, in the directory of the live file or in the temporary directory. A missing
/// directory is created.
///
/// @param liveFile        The file in use; it is validated. If its directory has more than 246 characters, the cache
///                        file is created in `C:\#Quorvanta\Cache`.
/// @param[out] cacheFile  The path of the cache file. After a failed copy, it names a file that still exists.
/// @param prefix          Its first three characters begin the name. If one of them cannot be in a file name, the call
///                        fails with 123 (ERROR_INVALID_NAME).
/// @param useTempPath     True for the temporary directory of the environment (TMP, TEMP, the profile).
/// @param copyOriginal    True to copy the live file, which must be possible to open exclusively; false for an empty
///                        file.
/// @return False if the directory or the file could not be created, if the copy failed, and if memory ran out. The last
///         error is that of the failure.
/// @warning The copy ends early, and the result is true, after a read error.
KESTROVANE_API bool CreateCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, std::wstring prefix,
                                    bool useTempPath, bool copyOriginal);

/// Registers a cache file to replace `target` at the next reboot. Nothing is moved now. The directory of the target is
/// created if it is missing.
///
/// @param cacheFile  The cache file.
/// @param target     The file to replace; it is validated to find its directory, and not changed.
/// @return False if Windows rejects the registration or the directory cannot be created. Requires administrator rights.
/// @warning True means registered, not replaced. Nothing happens at the reboot if the two files are on different
///          volumes or on a share, or if the cache file no longer exists. Check before the call that both are on the
///          same local volume.
KESTROVANE_API bool MoveCacheFile(const std::wstring& cacheFile, std::wstring& target);

/// Creates a cache file for each file of a list.
///
/// @param files               Paths or, with a separator, entries such as `FILE|C:\a.txt`. Entries of the kind "XML",
///                            ignoring case, are skipped. An entry without the separator is its own kind and path.
/// @param separator           The first occurrence separates kind and path; 0 for plain paths.
/// @param prefix              As for CreateCacheFile.
/// @param useTempPath         As for CreateCacheFile.
/// @param[in,out] cacheMap    Receives each upper-cased entry with its upper-cased cache file. Never cleared. If an
///                            entry is listed twice, its first cache file is in no map.
/// @param copyOriginal        As for CreateCacheFile.
/// @return False at the first cache file that could not be created. Those before it are in the map and on disk. A file
///         that a failed copy left is in no map.
KESTROVANE_API bool CreateCacheFileList(std::vector<std::wstring> files, wchar_t separator, std::wstring prefix,
                                        bool useTempPath, std::map<std::wstring, std::wstring>& cacheMap,
                                        bool copyOriginal);

/// Deletes the cache files of a map; those in use at the next reboot.
///
/// @param cacheMap   Maps live files to cache files; it is not changed.
/// @param separator  Not 0: the path is the part of the value after its first occurrence.
/// @return True, whatever the outcome for each file. False if memory ran out; the remaining files are then not deleted.
KESTROVANE_API bool DeleteCacheFileList(std::map<std::wstring, std::wstring>& cacheMap, wchar_t separator);

/// Deletes the cache files of a list; those in use at the next reboot.
///
/// @param paths  The cache files; they are not changed.
/// @return Always true.
KESTROVANE_API bool DeleteCacheFileList(std::vector<std::wstring>& paths);

/// Copies each cache file into the directory of its live file, under the name of the cache file. The live file is not
/// changed.
///
/// @param cacheMap  Maps live files to cache files, both as plain paths; it is not changed.
/// @return False if a copy failed; the others are done all the same. If memory runs out, the remaining files are not
///         copied, and the result is that of the files before. A cache file that is already in the directory of its
///         live file cannot be copied onto itself: false, and its content is unchanged.
/// @warning With typed keys ("FILE|C:\..."), the copies are written into the process's current directory. A copy ends
///          early, and counts as a success, after a read error.
KESTROVANE_API bool RestoreFileListCache(std::map<std::wstring, std::wstring>& cacheMap);

/// @}
