/// @file
/// @brief The interface of Kestrovane: every exported function, in the order of a typical use.

/// @mainpage Kestrovane
///
/// File-system work around volume snapshots and restores, for backup agents.
///
/// Include `Kestrovane.h` and link the import library. The header includes `<windows.h>`, without its `min` and `max`
/// macros, and the standard headers of the types that it uses. Read @ref returns and @ref pitfalls before the first
/// call that deletes, restores or copies.
///
/// ### Before the first call
///
/// Register the host's functions with SetVssFileManagerLogger(). Until then, log lines go to standard output with the
/// prefix "Kestrovane: ".
///
/// ### Threads and process-wide state
///
/// Call the library from one thread at a time: it has one error state and one keep-alive stamp, and no locks. There are
/// two exceptions, which may run beside each other and beside any call but SetVssFileManagerLogger():
///
/// - Functions that use nothing but their arguments and Windows: all of the groups @ref volumes, @ref snapshots,
///   @ref versions and @ref strings, but not GetVolumeMaxFreeSpace(), GetAvailableVolumeSpace() and
///   GetTotalVolumeSpace(); IsFileExistsSnap(), getFileSize(), IsFileDescMatch(), MapRestorePath1(),
///   DeleteCacheFileList(), AppendBackslash().
/// - Functions that use the host's functions as well, which must then be safe in several threads: SendKA(),
///   DeleteDirectoryRecursive(), MapRestorePath() and the group @ref maps.
///
/// The arguments must not be shared while one of the threads changes them. Several other functions change the process's
/// current directory while they run and restore it before they return, also when an exception leaves them; they say so
/// under "Side effects". Relative paths of all threads depend on it: use absolute ones.
///
/// ### Paths
///
/// Functions that "validate" a path replace `/` by `\` and make the path absolute: a relative path is appended to the
/// current directory, a path that begins with one backslash takes the drive of the current directory. A path that
/// begins with `..\` becomes an ancestor of the current directory followed by its last component; for that, the
/// process's current directory is changed for a moment. A path is invalid if a component holds `:`, `*` or `?`. Only
/// the first 255 characters of a component are validated. Paths that begin with two backslashes are always valid. An
/// invalid path is reported: the thread's last error, unless it is 0, is logged at level 0.
///
/// A relative path is invalid, too, while the current directory cannot be read or has 260 characters or more, and if a
/// directory that its `..\` steps lead through cannot be entered. While the current directory cannot be read, the
/// library reads attributes to check or create an absolute path, instead of changing the current directory.
///
/// A path ends at its first NUL for Windows. A directory with an embedded NUL cannot be searched: listings are empty,
/// and nothing is deleted.
///
/// ### Lengths
///
/// Paths pass through buffers of 260 characters (`MAX_PATH`, terminator included) wherever Windows or the runtime
/// library requires one. A longer path fails with the error of an over-long path; nothing is written past a buffer.
///
/// ### Exceptions
///
/// Win32 failures are never thrown. CAtlException comes from BSTR strings, `std::bad_alloc` and `std::length_error`
/// from standard strings and containers: where a function throws `std::bad_alloc`, a string of more than
/// `std::wstring::max_size()` characters throws `std::length_error`. An exception that a host function throws passes
/// through the library, unless the called function says otherwise under "Throws".
///
/// ### Binary compatibility
///
/// C++ strings, containers and exceptions cross this interface. A host can load the DLL if it was built with GCC (or
/// clang) for `x86_64-w64-mingw32`, links the same shared libstdc++ (`libstdc++-6.dll`, dual ABI at its default), and
/// uses the same exception model (SEH) and C runtime. The released DLL uses `msvcrt.dll`. A host of another compiler or
/// runtime builds the library from its sources. The interface changes incompatibly only with the major version: a
/// function that is removed or renamed, other parameters or results, another layout of a record or of CComBSTR, another
/// runtime, and any documented behaviour that changes are such changes. New functions raise the minor version.

/// @page returns Return values that need a second check
///
/// In the order of the header:
///
/// - GetUniqueVolumeNameForPath() returns 260 NUL characters for an empty path, the volume path for a share, and an
///   empty string for a path without a volume.
/// - GetDisplayNameForVolumeNoThrow() is true with an empty string for a volume without a mount path.
/// - EnumVolumes() and all listings return an empty or partial list if they fail. Such a list looks like a complete
///   one.
/// - GetVolumeMaxFreeSpace() returns an empty string if no volume has free space, and if none could be queried.
/// - GetAvailableVolumeSpace() and GetTotalVolumeSpace() return 0.0 if the query fails, as for a full volume.
/// - BuildSnapshotFilePath() is always true. For a volume that is missing from the map, it appends the path below the
///   volume alone, which does not lead into a snapshot, and adds an empty entry to the map. Check the map first.
/// - isFileExists() is false for a directory, for a file that this process may not read, and for a file that another
///   handle has opened without sharing.
/// - RecursivelyCreateDirectory() is true for every valid path, even if nothing was created. Call isDirectoryExists()
///   afterwards.
/// - IsFileExistsSnap() is true for a null pointer.
/// - IsCanReplaceFile() is true for a file that does not exist and for one that may not be read.
/// - getFileSize() returns 0 for an empty file and for a missing one.
/// - One directory that cannot be searched, at any depth, reduces ListFilesFilterRecursive() to the files of the top
///   directory.
/// - ListDirecoriesRecursive() lists one level, not the tree.
/// - DoCopyComponentFile() and DoCopyComponentFileToDir() return 1 if a read error ends the copy early: the target then
///   holds the first part of the source. Compare sizes or contents. A copy that returns 0 may leave an empty or partial
///   target.
/// - DeleteFilesFilter() is true for a missing directory.
/// - DeleteDirectoryRecursive() returns 0 without a log line if the directory cannot be searched, or cannot be removed
///   once it is empty. What it deleted before is gone.
/// - CreateCacheFile() may return false and leave a cache file: its second argument then names the file.
/// - CreateCacheFile(), CreateCacheFileList() and RestoreFileListCache() are true with a shortened copy after a read
///   error. RestoreFileListCache() may be true after memory ran out: the files that follow were not copied.
/// - MoveCacheFile() is true for every move that Windows registers, even if it will do nothing at the reboot.
/// - Both DeleteCacheFileList() functions are true even if files could be neither deleted nor registered for deletion.
///   If memory runs out, both stop; the map function then returns false, the list function still true.
/// - ChangeObjectOwner() returns the outcome of the object itself. Failures below it are in the log alone.
/// - The path functions return an empty string for an invalid path, and for a path without the character sought.
/// - FindMatchStringInList() is true for every string if the list holds an empty element.
/// - WStringAfterWCHAR() and WStringBeforeWCHAR() return the whole string if the character does not occur.
/// - FindStringKeyInMap() returns the stored value, not its key. It and FindStringValueInMap() return "NA" for a
///   missing entry, as for one that holds "NA".
/// - IsRunOnWin2003SP1Up() returns 1 if the version cannot be read.

/// @page pitfalls Pitfalls
///
/// In the order of the header:
///
/// - GetNQUniqueVolumeNameForPath() repeats characters if the first dot is not in the server name.
/// - Names that only paths with the prefix `\\?\` reach (trailing dots or blanks, device names) stop a deletion.
/// - Deletion and owner change follow junctions and symbolic links out of the tree: DeleteDirectoryRecursive(),
///   CleanupDirectory(), ChangeObjectOwner(). Never run them on a tree whose owner has fewer rights than the process:
///   that owner decides where links lead.
/// - A filter may hold a path: with the filter `..\*`, DeleteFilesFilter() deletes the files of the parent directory.
///   Pass filters of your own, never those of a user.
/// - `..\x` as a directory means the parent directory, not its subdirectory x: with the directory `..\x`,
///   DeleteFilesFilter() deletes the files of `..`. The path `..\..\a\f.txt` loses its middle component a.
/// - CleanupDirectory() ends the process for a path of more than 260 characters, unless that directory is missing or
///   cannot be searched.
/// - `C:\#Quorvanta\Cache`, where CreateCacheFile() creates cache files for long paths, can be created first by any
///   user who may write to the root of C:. Create it at installation, with a DACL that only administrators may change.
/// - RestoreFileListCache() with typed keys such as `FILE|C:\a.txt`: the colon of the drive makes such a key invalid as
///   a path, so the copies are written into the process's current directory, and the result is true. Use maps with
///   plain paths.
/// - MapRestorePath() neither adds nor removes a backslash between the alternate location and the rest: with a mapping
///   path that ends with a backslash, two names run together. MapRestorePath1() does not do this.
/// - The first mapping that covers a file is used, not the most specific one.
#pragma once

#include <KestrovaneBstr.h>

#include <cstdint>
#include <map>
#include <string>
#include <vector>

/// @def KESTROVANE_API
/// Imports a function from the DLL. Define KESTROVANE_STATIC to link the library's objects instead.
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
/// @param[in] level   2 for locations and progress, 0 for details and errors. The library filters nothing.
/// @param[in] format  A narrow printf format with its own line end. Wide arguments use %S, narrow ones %s.
///
/// @warning Two formats pair %s with a wide path (see DeleteDirectoryRecursive()), and one pairs %u with a wide path
///          (see ChangeObjectOwner()). The platform's printf stops at a %S argument that the current locale cannot
///          convert.
using VssFileManagerLogFn = int(__cdecl*)(int level, const char* format, ...);

/// Tells the host that the library is still working. The result is ignored.
///
/// @param[in] seconds  How long to wait for the next call: 600, or 10800 before a write of security information. No
///                     further arguments are passed.
using VssFileManagerKeepAliveFn = int(__cdecl*)(int seconds, ...);

/// Registers the host's functions.
///
/// They are used until the next registration and must stay callable until the DLL is unloaded.
///
/// @param[in] logger     Receives every log line. A null pointer faults at once.
/// @param[in] keepAlive  Called by long operations. A null pointer faults at the first call.
/// @param[in] auxLogger  Stored, never called.
/// @logs         Its location at level 2, through `logger`, before the function returns.
/// @sideeffects  None on the process.
/// @raises       Nothing of its own.
KESTROVANE_API void SetVssFileManagerLogger(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                            VssFileManagerLogFn auxLogger);

/// Calls the host's keep-alive function with 600 seconds.
///
/// @param[in] unused  Never read; may be null.
/// @logs         Its location at level 2, before the call.
/// @sideeffects  None.
/// @raises       Nothing of its own.
KESTROVANE_API void SendKA(const char* unused);

/// @}
/// @defgroup volumes Volumes
/// Volume names, mount paths and space. A volume path is the drive or folder under which a volume is mounted, or a
/// share, always with its trailing backslash: `C:\`, `C:\mount\data\`, `\\server\share\`. A volume name has the form
/// `\\?\Volume{GUID}\`. Paths are passed to Windows with a trailing backslash. They need not exist below their volume,
/// and are relative to the current directory if they have no drive.
/// @{

/// Returns whether `path` is a volume path, or a volume name where Windows accepts it as one.
///
/// @param[in] path  With or without a trailing backslash.
/// @return False for a folder in which no volume is mounted, for a share, for a path that Windows cannot look up, and
///         for an empty path.
/// @logs         Nothing through the host's logger. `"GetVolumeNameForVolumeMountPoint(%S) failed with %d\n"` goes to
///               standard output if the result is false and the path is not empty, with the path and the last error;
///               characters that the current locale cannot convert are printed as `?`.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool IsVolume(std::wstring path);

/// Returns the unique name of the volume that contains `path`.
///
/// @param[in] path  With or without a trailing backslash.
/// @return If a look-up fails, the result of the last one that succeeded: the first name found for the volume, or the
///         volume path, which is the result for every share. An empty string without a volume path. For an empty path,
///         260 NUL characters: size() is 260.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetUniqueVolumeNameForPath(std::wstring path);

/// Returns the unique name of the volume that contains `path`, if every look-up succeeds.
///
/// @param[in]  path        With or without a trailing backslash.
/// @param[out] uniqueName  Written on success only.
/// @return False for an empty path, for a share, and if a look-up fails.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool GetUniqueVolumeNameForPathNoThrow(std::wstring path, std::wstring& uniqueName);

/// Returns GetUniqueVolumeNameForPath() without the domain of a server name: `\\server\share\` for
/// `\\server.domain\share\f`.
///
/// @param[in] path  With or without a trailing backslash.
/// @return What GetUniqueVolumeNameForPath() returns; changed only if it is a share with a dot.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       std::bad_alloc if memory runs out.
/// @warning The string is cut at its first dot, and continued after the server name. If the dot is not in the server
///          name, characters are repeated: `\\server\share.1\` gives `\\server\share\share.1\`.
KESTROVANE_API std::wstring GetNQUniqueVolumeNameForPath(std::wstring path);

/// Returns the first mount path of a volume in Windows' list, to be shown to people.
///
/// @param[in]  volumeName   Used as it is; Windows requires its trailing backslash.
/// @param[out] displayName  Written on success only. Empty for a volume that is not mounted.
/// @return False if Windows returns no list.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool GetDisplayNameForVolumeNoThrow(std::wstring volumeName, std::wstring& displayName);

/// Returns the mount paths of all volumes, in Windows' order: all paths of one volume, then those of the next. A path
/// that occurs more than once, ignoring case, is listed once. Volumes without a mount path are left out.
///
/// @return The paths found before a failure; empty if the search cannot be opened. A volume whose paths cannot be read
///         is left out.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       Nothing.
KESTROVANE_API std::vector<std::wstring> EnumVolumes();

/// Returns the mount path with the most free space for the calling user; the first one if several have the same.
///
/// @return Empty if no volume has free space, and if none could be listed or queried.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       Nothing.
KESTROVANE_API std::wstring GetVolumeMaxFreeSpace();

/// Returns the space available to the calling user on the volume that contains `path`.
///
/// @param[in] path  A directory on the volume. A share needs its trailing backslash.
/// @return Decimal gigabytes (10^9 bytes) after quotas: 1.5 for 1,500,000,000 bytes. 0.0 if the query fails; this looks
///         like a full volume.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       Nothing.
KESTROVANE_API double GetAvailableVolumeSpace(const std::wstring& path);

/// Returns the size of the volume that contains `path`, as far as quotas let the calling user use it.
///
/// @param[in] path  A directory on the volume. A share needs its trailing backslash.
/// @return Decimal gigabytes (10^9 bytes). 0.0 if the query fails.
/// @logs         Nothing.
/// @sideeffects  None but the last error: after a failure, that of the call that failed.
/// @raises       Nothing.
KESTROVANE_API double GetTotalVolumeSpace(const std::wstring& path);

/// @}
/// @defgroup snapshots Snapshot paths
/// Paths inside snapshots.
/// @{

/// Appends the path of a live file inside the snapshot of its volume to `result`: the device from the map, then the
/// path below the volume with its leading backslash. With the device D, `C:\data\f.txt` becomes `D\data\f.txt`, and
/// `C:` becomes `D`.
///
/// @param[in]     path       A full path on a volume or share; a null pointer counts as an empty path.
/// @param[in,out] result     Appended to, never cleared. Pass an empty string.
/// @param[in,out] snapshots  The devices, without trailing backslash. Keys are volume names (`\\?\Volume{GUID}\`) and,
///                           for shares, volume paths (`\\server\share\`), case-sensitive, as Windows spells them. A
///                           missing key is added with an empty device. A path without a volume uses the empty key and
///                           is appended whole.
/// @return Always true.
/// @logs         Nothing.
/// @sideeffects  None on the process.
/// @raises       CAtlException (0x8007000E) if a string cannot be allocated; if only the path below the volume could
///               not be appended, the device stays in `result`. std::bad_alloc if an entry of the map cannot be
///               allocated. A key may have been added in both cases.
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
/// @defgroup checks Checks and creation
/// Existence, access and size of files and directories, and the creation of directories. An empty path is false, after
/// the last error, unless it is 0, was logged.
/// @{

/// Returns whether the process can change into `path`.
///
/// @param[in] path  A directory, with or without a trailing backslash; it is validated.
/// @return False for a file, for a directory that may not be entered, and for an empty or invalid path.
/// @logs         The last error, for an empty or invalid path.
/// @sideeffects  The current directory is changed and restored. The last error and errno are those of the attempt.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool isDirectoryExists(const std::wstring& path);

/// Returns whether the DACL of `path` grants the process's user read and write access.
///
/// @param[in] path  A file or directory, used as it is. Attributes and sharing modes are not checked.
/// @return False if the security descriptor or the process token cannot be read.
/// @logs         The last error, for an empty path.
/// @sideeffects  None on the current directory. The last error may be changed by a successful call, too.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool isDirectoryReadWritable(const std::wstring& path);

/// Creates a directory with all missing parents.
///
/// @param[in] path  A directory, with or without a trailing backslash; it is validated.
/// @return True for every valid path, even if nothing was created. False for an empty or invalid path.
/// @logs         The last error, for an empty or invalid path and if the directory cannot be entered in the end. In
///               that case one of `"Unable to locate the directory: %S\n"`, `"Invalid buffer.\n"` and
///               `"Unknown error.\n"` goes to standard output, too.
/// @sideeffects  The current directory is changed and restored. If the directory cannot be entered, the last error is
///               that of the last component that could not be created; if all could, it is an older code.
/// @raises       std::bad_alloc if memory runs out.
///
/// @code
/// RecursivelyCreateDirectory(directory);
/// const bool created = isDirectoryExists(directory);
/// @endcode
KESTROVANE_API bool RecursivelyCreateDirectory(const std::wstring& path);

/// Returns whether `path` is a file that this process can open for reading.
///
/// @param[in] path  A file; it is validated.
/// @return False for a directory, for a missing file, for one that may not be read or that another handle has opened
///         without sharing, and for an empty or invalid path.
/// @logs         The last error, for an empty or invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`. The last error and
///               errno are those of the attempt.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool isFileExists(const std::wstring& path);

/// Returns whether `path`, a file or directory, has attributes that can be read.
///
/// @param[in] path  In the ANSI code page. A null pointer is true.
/// @return False if the attributes cannot be read.
/// @logs         Nothing.
/// @sideeffects  After a failure, the last error is that of the query.
/// @raises       Nothing.
KESTROVANE_API bool IsFileExistsSnap(char* path);

/// Returns whether a restore can replace `path` now.
///
/// @param[in] path  A file. It is validated for reading and used as it is for writing; it is not changed.
/// @return True if the file is missing or can be opened exclusively for writing. True, too, for a file that may not be
///         read. False after a sharing violation, and if the file may not be written.
/// @logs         The last error, for an empty or invalid path.
/// @sideeffects  The file is opened for writing without sharing for a moment; its content is not changed. The current
///               directory is changed and restored for a path that begins with `..\`. The last error and errno are
///               those of the attempts.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool IsCanReplaceFile(std::wstring& path);

/// Returns the size of a file in bytes.
///
/// @param[in] path  A file, used as it is; it is not changed.
/// @return 0 for an empty file, and for one that is missing or cannot be queried.
/// @logs         Nothing.
/// @sideeffects  After a failure, the last error is that of the query.
/// @raises       Nothing.
KESTROVANE_API std::int64_t getFileSize(std::wstring& path);

/// @}
/// @defgroup listings Listings
/// Files and subdirectories. Filters are file patterns of the platform, with `*` and `?`, ignoring case, short names
/// included; the filter `*` means `*.*`. Hidden and system files are listed. Reparse points that lead to directories
/// are entered. Entries whose names hold a separator, as a damaged volume may return them, are skipped. The host's
/// keep-alive function is called with 600 if the last call was more than 599 seconds ago.
/// @{

/// Returns the files of one directory that match `filter`, sorted by code units (upper case first).
///
/// @param[in] directory  It is validated; an empty string is the current directory.
/// @param[in] filter     A file pattern.
/// @param[in] fullPath   True for full paths, false for names.
/// @return Empty if the directory is invalid, missing or cannot be searched.
/// @logs         At level 2, each file that is appended to the end of the list when it is found. The last error, for an
///               invalid directory.
/// @sideeffects  The current directory is changed and restored.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::vector<std::wstring> ListFilesFilter(const std::wstring& directory, const std::wstring& filter,
                                                         bool fullPath);

/// Returns the files of a tree that match `filter`: first those of `directory`, then those of each directory below it,
/// parents first. They are sorted within each directory.
///
/// @param[in] directory  It is validated; an empty string is the current directory.
/// @param[in] filter     A file pattern.
/// @param[in] fullPath   True for full paths, false for paths relative to `directory`.
/// @return The files of the top directory alone, if one of the directories below it cannot be searched. A partial list
///         looks like a complete one.
/// @logs         At level 2, each file, most of them twice; with relative paths, each result once more with its index.
///               The last error, for an invalid directory.
/// @sideeffects  The current directory is changed and restored.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::vector<std::wstring> ListFilesFilterRecursive(const std::wstring& directory,
                                                                  const std::wstring& filter, bool fullPath);

/// Returns the immediate subdirectories of `directory`. In spite of the name, it lists one level.
///
/// @param[in] directory  It is validated; an empty string is the current directory.
/// @return Full paths without a trailing backslash, in the order in which Windows returns them. Empty if the directory
///         is invalid or cannot be searched.
/// @logs         The last error, for an invalid directory.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::vector<std::wstring> ListDirecoriesRecursive(const std::wstring& directory);

/// @}
/// @defgroup copy Copy
/// Copies of single files. Source and target are opened exclusively: a copy fails while any other handle is open on
/// either. Content alone is copied, no times, attributes, streams or DACLs. An existing target is overwritten. Missing
/// directories are created first.
/// @{

/// Copies `source` into `directory` under its own name.
///
/// @param[in] source     A file; it is validated.
/// @param[in] directory  It is validated.
/// @return 1 if the copy ran to its end, 0 otherwise.
/// @logs         The last error, for an empty or invalid path and if the directory cannot be entered.
/// @sideeffects  The current directory is changed and restored. After a failure, the last error is that of the call
///               that failed.
/// @raises       std::bad_alloc if memory runs out.
/// @warning A read error ends the copy with 1 and a shortened target. A target left by a failed copy is not deleted.
///
/// @code
/// const bool copied = DoCopyComponentFileToDir(source, directory) == 1 && getFileSize(target) == getFileSize(live);
/// @endcode
KESTROVANE_API int DoCopyComponentFileToDir(const std::wstring& source, const std::wstring& directory);

/// Copies `source` to the file `target`.
///
/// @param[in] source  A file; it is validated.
/// @param[in] target  A file; it is validated.
/// @return 1 if the copy ran to its end, 0 otherwise.
/// @logs         The last error, for an empty or invalid path and if the directory cannot be entered.
/// @sideeffects  The current directory is changed and restored. After a failure, the last error is that of the call
///               that failed.
/// @raises       std::bad_alloc if memory runs out.
/// @warning A read error ends the copy with 1 and a shortened target. A target left by a failed copy is not deleted.
KESTROVANE_API int DoCopyComponentFile(const std::wstring& source, const std::wstring& target);

/// @}
/// @defgroup deletion Deletion
/// Deletion of files and trees. Attributes are never changed: a read-only file stops a deletion. Nothing goes to a
/// recycle bin. An entry whose name holds a separator, as a damaged volume may return it, cannot be deleted: it fails
/// with 123 (ERROR_INVALID_NAME).
/// @{

/// Deletes the files of one directory that match `filter`. Its subdirectories stay.
///
/// @param[in] directory  It is validated.
/// @param[in] filter     A file pattern, used as it is (`*` is not widened).
/// @return True if every matching file was deleted, if none matched, and if the directory is missing, invalid or cannot
///         be searched. False at the first file that could not be deleted; later ones are not tried.
/// @logs         The files, as ListFilesFilter() does.
/// @sideeffects  The current directory is changed and restored. After a failure, the last error is that of the attempt.
/// @raises       std::bad_alloc if memory runs out.
/// @warning An empty directory is the current directory. `..\x` is the parent directory.
KESTROVANE_API bool DeleteFilesFilter(const std::wstring& directory, const std::wstring& filter);

/// Deletes a directory with everything in it.
///
/// @param[in] directory  NUL-terminated, at most 257 characters, used as it is.
/// @return Nonzero on success. 0 at the first failure; nothing is retried. A path or entry that does not fit 260
///         characters fails with 206 (ERROR_FILENAME_EXCED_RANGE), a null or empty path with 3 (ERROR_PATH_NOT_FOUND).
/// @logs         At level 0, each deletion. For an entry that cannot be deleted, `"File couldn't be deleted: %s \n"` or
///               `"Directory couldn't be deleted: %s \n"`, then the report of the last error. Both formats pair %s with
///               a wide path. Nothing if the directory itself cannot be searched or removed.
/// @sideeffects  After a failure, the last error is that of the failed call. The report reads it after the log line, so
///               a logger that changes the last error changes the report.
/// @raises       Nothing of its own.
/// @warning Junctions and symbolic links to directories are entered, and what they lead to is deleted. The first entry
///          that Windows returns is skipped as "."; a drive's root has no such entry, so one file or directory stays
///          there and the result is 0. Each level takes less than 1.5 KiB of stack; paths of 260 characters have at
///          most 129 levels.
KESTROVANE_API int DeleteDirectoryRecursive(const wchar_t* directory);

/// Deletes a directory with everything in it: DeleteDirectoryRecursive() for a path of up to 260 characters.
///
/// @param[in] directory  A longer path is validated.
/// @return Whether everything was deleted. For a longer path, whether the files below could be deleted; false if the
///         directory is missing, invalid or cannot be searched.
/// @logs         As DeleteDirectoryRecursive(); for a longer path the last error, if it is invalid.
/// @sideeffects  For a longer path, the current directory is changed and restored.
/// @raises       std::bad_alloc if memory runs out.
/// @warning For a longer path that can be searched, the directories below it are removed with their files, deepest
///          first, and then the process ends with STATUS_INVALID_CRUNTIME_PARAMETER (0xC0000417), unless an
///          invalid-parameter handler returns. The directory itself and its own files stay. With the UCRT, the handler
///          is that of the process. With the older runtime, it can only be set inside this DLL, so a host has none.
/// @warning Junctions and symbolic links to directories are entered, and what they lead to is deleted.
KESTROVANE_API bool CleanupDirectory(const std::wstring& directory);

/// @}
/// @defgroup cache Cache files
/// A file in use that a restore cannot replace now is first written to a cache file, and the cache file replaces it at
/// the next reboot.
/// @{

/// Creates a cache file with a unique name, in the directory of the live file or in the temporary directory. A missing
/// directory is created.
///
/// @param[in]  liveFile      The file in use; it is validated. If its directory has more than 246 characters, the cache
///                           file is created in `C:\#Quorvanta\Cache`.
/// @param[out] cacheFile     The path of the cache file. After a failed copy, it names a file that still exists.
/// @param[in]  prefix        Its first three characters begin the name. If one of them cannot be in a file name, the
///                           call fails with 123 (ERROR_INVALID_NAME).
/// @param[in]  useTempPath   True for the temporary directory of the environment (TMP, TEMP, the profile).
/// @param[in]  copyOriginal  True to copy the live file, which must be possible to open exclusively; false for an empty
///                           file.
/// @return False if the directory or the file could not be created, if the copy failed, and if memory ran out. The last
///         error is that of the failure.
/// @logs         What the validation of the path, the checks and the copy log.
/// @sideeffects  The current directory is changed and restored. After a failure, the last error is that of the call
///               that failed.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
/// @warning The copy ends early, and the result is true, after a read error.
KESTROVANE_API bool CreateCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, std::wstring prefix,
                                    bool useTempPath, bool copyOriginal);

/// Registers a cache file to replace `target` at the next reboot. Nothing is moved now. The directory of the target is
/// created if it is missing.
///
/// @param[in] cacheFile  The cache file.
/// @param[in] target     The file to replace; it is validated to find its directory, and not changed.
/// @return False if Windows rejects the registration or the directory cannot be created. Requires administrator rights.
/// @logs         What the validation and the creation of the directory log.
/// @sideeffects  The current directory is changed and restored. The registration is kept in the registry until the next
///               reboot.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
/// @warning True means registered, not replaced. Nothing happens at the reboot if the two files are on different
///          volumes or on a share, or if the cache file no longer exists. Check before the call that both are on the
///          same local volume.
KESTROVANE_API bool MoveCacheFile(const std::wstring& cacheFile, std::wstring& target);

/// Creates a cache file for each file of a list.
///
/// @param[in]     files         Paths or, with a separator, entries such as `FILE|C:\a.txt`. Entries of the kind "XML",
///                              ignoring case, are skipped. An entry without the separator is its own kind and path.
/// @param[in]     separator     The first occurrence separates kind and path; 0 for plain paths.
/// @param[in]     prefix        As for CreateCacheFile().
/// @param[in]     useTempPath   As for CreateCacheFile().
/// @param[in,out] cacheMap      Receives each upper-cased entry with its upper-cased cache file. Never cleared. If an
///                              entry is listed twice, its first cache file is in no map.
/// @param[in]     copyOriginal  As for CreateCacheFile().
/// @return False at the first cache file that could not be created. Those before it are in the map and on disk. A file
///         that a failed copy left is in no map.
/// @logs         What the validation of the path, the checks and the copy log.
/// @sideeffects  The current directory is changed and restored.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
KESTROVANE_API bool CreateCacheFileList(std::vector<std::wstring> files, wchar_t separator, std::wstring prefix,
                                        bool useTempPath, std::map<std::wstring, std::wstring>& cacheMap,
                                        bool copyOriginal);

/// Deletes the cache files of a map; those in use at the next reboot.
///
/// @param[in] cacheMap   Maps live files to cache files; it is not changed.
/// @param[in] separator  Not 0: the path is the part of the value after its first occurrence.
/// @return True, whatever the outcome for each file. False if memory ran out; the remaining files are then not deleted.
/// @logs         Nothing.
/// @sideeffects  A file in use is registered for deletion at the next reboot.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
KESTROVANE_API bool DeleteCacheFileList(std::map<std::wstring, std::wstring>& cacheMap, wchar_t separator);

/// Deletes the cache files of a list; those in use at the next reboot.
///
/// @param[in] paths  The cache files; they are not changed.
/// @return Always true.
/// @logs         Nothing.
/// @sideeffects  A file in use is registered for deletion at the next reboot.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
KESTROVANE_API bool DeleteCacheFileList(std::vector<std::wstring>& paths);

/// Copies each cache file into the directory of its live file, under the name of the cache file. The live file is not
/// changed.
///
/// @param[in] cacheMap  Maps live files to cache files, both as plain paths; it is not changed.
/// @return False if a copy failed; the others are done all the same. If memory runs out, the remaining files are not
///         copied, and the result is that of the files before. A cache file that is already in the directory of its
///         live file cannot be copied onto itself: false, and its content is unchanged.
/// @logs         What the copies log.
/// @sideeffects  The current directory is changed and restored.
/// @raises       Nothing; exceptions of the host's functions are caught, too.
/// @warning With typed keys (`FILE|C:\a.txt`), the copies are written into the process's current directory. A copy ends
///          early, and counts as a success, after a read error.
KESTROVANE_API bool RestoreFileListCache(std::map<std::wstring, std::wstring>& cacheMap);

/// @}
/// @defgroup mapping Restore mapping
/// File descriptions and alternate locations. A file description is a directory, a file pattern with `*` (any run of
/// characters) and `?` (one character), and a recursive flag that includes everything below the directory. Case is
/// ignored, and so is one trailing backslash of the directory. An empty directory counts as `\`. Strings end at their
/// first NUL.
/// @{

/// Returns whether two file descriptions overlap: some name matches both patterns, and the directories are equal, or
/// one is below the other, whose recursive flag is set.
///
/// @param[in] path1       Directory of the first description; it is not changed.
/// @param[in] spec1       Its file pattern; it is not changed. `*.*` requires a dot.
/// @param[in] recursive1  Its recursive flag.
/// @param[in] path2       Directory of the second description; it is not changed.
/// @param[in] spec2       Its file pattern; it is not changed.
/// @param[in] recursive2  Its recursive flag.
/// @return True if they overlap. Whether such a file exists is not checked.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       CAtlException (0x8007000E) if a string cannot be allocated.
KESTROVANE_API bool IsFileDescMatch(std::wstring& path1, std::wstring& spec1, bool recursive1, std::wstring& path2,
                                    std::wstring& spec2, bool recursive2);

/// One alternate location: the files of a description, and the directory that replaces theirs.
struct VSS_ALTERNATE_MAPPING {
    std::wstring path;              ///< the directory that the mapping covers
    std::wstring alternateLocation; ///< the directory that replaces it
    std::wstring fileSpec;          ///< the file pattern, with `*` and `?`
    bool recursive;                 ///< whether everything below the directory is covered
};

/// Replaces `path` by its alternate location if a mapping covers it.
///
/// @param[in,out] path      The directory of the file to restore. On success, the alternate location followed by the
///                          part of the directory after the length of the mapping's path as it is written. Nothing is
///                          inserted or removed: with the mapping `C:\Data\` to `D:\Restore`, `C:\Data\Sub` becomes
///                          `D:\RestoreSub`. If the mapping's path is longer, nothing follows.
/// @param[in]     spec      The name of the file, or a file pattern; it is not changed.
/// @param[in]     mappings  Tried in their order; the first that covers the file is used. They are not changed.
/// @return False if no mapping covers the file. `path` is then unchanged, as it is after an exception.
/// @logs         At level 2, if a mapping was found: the file, the mapping and up to two diagnostic lines.
/// @sideeffects  None.
/// @raises       CAtlException (0x8007000E) if a string cannot be allocated.
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
/// @param[in,out] path      The directory of the file to restore, replaced on success.
/// @param[in]     spec      The name of the file, or a file pattern; it is not changed.
/// @param[in]     mappings  Tried in their order; the first that covers the file is used. They are not changed.
/// @return False if no mapping covers the file. `path` is then unchanged, as it is after an exception.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       CAtlException (0x8007000E) if a string cannot be allocated.
KESTROVANE_API bool MapRestorePath1(std::wstring& path, std::wstring& spec,
                                    std::vector<VSS_ALTERNATE_MAPPING>& mappings);

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
/// @param[in] path     A file or folder without a trailing backslash, used as it is up to its first NUL.
/// @param[in] account  A user or group as Windows looks it up: `name`, `DOMAIN\name`, `.\name` (the prefix is removed),
///                     or LocalSystem in this spelling.
/// @return True if the object itself was changed. False at its first failure; nothing below it is then changed. An
///         object below that cannot be changed is skipped with everything below it, and does not change the result.
/// @logs         For each object: progress at level 2; at level 0 a failure, and a line about the clock without a line
///               end.
/// @sideeffects  The host's keep-alive function is called with 600, after the line of SendKA(), if the last such call
///               was more than 570 whole seconds ago; with 10800 before owner and DACL are written, because Windows may
///               propagate them to a whole tree; with 600 after a successful write. After a failed write, the host is
///               left with 10800.
/// @raises       std::bad_alloc if memory runs out.
/// @warning Requires the rights to take ownership and to assign it. Links may lead out of the tree: never run this
///          function with more rights than the owner of the tree has.
/// @warning The line `"Error creating new DACL for file/folder to include new owner - error %u.\n"` passes the path
///          (wide) before the error, so a printf shows a part of an address. The security descriptors that are read,
///          two for each object, stay allocated until the process ends.
KESTROVANE_API bool ChangeObjectOwner(std::wstring path, std::wstring account);

/// @}
/// @defgroup paths Paths
/// Decomposition of paths. The first five functions validate the path and never change their argument.
/// @{

/// Returns the string after the last backslash: `f.tar.gz` for `C:\dir\f.tar.gz`.
///
/// @param[in] path  A file or directory.
/// @return Empty for a path that ends with a backslash, for `C:f.txt` (no backslash) and for an invalid path.
/// @logs         The last error, for an invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetFileName(const std::wstring& path);

/// Returns the string before the last backslash: `C:\dir` for `C:\dir\f.txt`, but `C:` for `C:\f.txt`.
///
/// @param[in] path  A file or directory.
/// @return Without its trailing backslash. Empty for a path without a backslash and for an invalid path.
/// @logs         The last error, for an invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetPathFileName(const std::wstring& path);

/// Returns the string after the last colon: `\dir\f.txt` for `C:\dir\f.txt`.
///
/// @param[in] path  A file or directory.
/// @return Empty for a path without a colon and for an invalid path.
/// @logs         The last error, for an invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetPathFileNameNoVolume(const std::wstring& path);

/// Returns the string before the last colon: `C` for `C:\dir`, `\\?\C` for `\\?\C:\dir`.
///
/// @param[in] path  A file or directory.
/// @return Empty for a share and for an invalid path.
/// @logs         The last error, for an invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetVolume(const std::wstring& path);

/// Returns the local path of an administrative share: `C:\dir\f.txt` for `\\host\volume$C\dir\f.txt`.
///
/// @param[in] path  A path with "volume$" in lower case. The last occurrence counts.
/// @return The validated path if it does not hold "volume$". Empty if no backslash follows the drive letter, and for an
///         invalid path.
/// @logs         The last error, for an invalid path.
/// @sideeffects  The current directory is changed and restored for a path that begins with `..\`.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring GetPathFileTranslate(const std::wstring& path);

/// Returns `path` with a trailing backslash.
///
/// @param[in] path  Any string; it is not validated. A trailing "/" does not count as a backslash.
/// @return One backslash for an empty path.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring AppendBackslash(std::wstring path);

/// @}
/// @defgroup strings Strings and lists
/// Comparisons and conversions. "Ignoring case" follows the runtime's current locale; in the default locale only A to Z
/// and a to z have case. Comparisons end at the first NUL.
/// @{

/// Returns whether two strings are equal, ignoring case.
///
/// @param[in] first   A string.
/// @param[in] second  The string to compare it with.
/// @return True if they are equal up to their first NUL.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool IsEqual(std::wstring first, std::wstring second);

/// Returns whether an element of `list` equals `string`, ignoring case.
///
/// @param[in] string  The string to look for.
/// @param[in] list    The strings to compare it with.
/// @return False for an empty list.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool FindStringInList(std::wstring string, std::vector<std::wstring> list);

/// Returns whether an element of `list` occurs inside `string`, ignoring case.
///
/// @param[in] string  The string to search.
/// @param[in] list    Substrings, not patterns: `*` and `?` have no special meaning. An empty element occurs in every
///                    string.
/// @return False for an empty list.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API bool FindMatchStringInList(std::wstring string, std::vector<std::wstring> list);

/// Returns the part of `string` after the first `character`.
///
/// @param[in] string     Any string.
/// @param[in] character  The character to look for, with its case.
/// @return The whole string if the character does not occur.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring WStringAfterWCHAR(std::wstring string, wchar_t character);

/// Returns the part of `string` before the first `character`.
///
/// @param[in] string     Any string.
/// @param[in] character  The character to look for, with its case.
/// @return The whole string if the character does not occur.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring WStringBeforeWCHAR(std::wstring string, wchar_t character);

/// Returns `string` with every character passed through the runtime's narrow toupper. The length is unchanged.
///
/// @param[in] string  Any string; it is not changed.
/// @return A string of the same length.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring WString2UpperCase(const std::wstring& string);

/// Replaces each `%NAME%` by the value of the environment variable. Undefined names stay.
///
/// @param[in] string  Changed in place. A string without '%' is not changed. If Windows rejects the expansion, it is
///                    unchanged, too.
/// @logs         Nothing. `"ExpandEnvironmentStrings failed due to error %d.\n"` goes to standard output if Windows
///               rejects the expansion.
/// @sideeffects  None.
/// @raises       CAtlException (0x8007000E) if a string cannot be allocated; `string` is then unchanged.
/// @warning A result of more than 259 characters is cut or lost, as Windows leaves it in a buffer of 260 characters.
///          Each such call keeps its working buffer until the process ends.
KESTROVANE_API void DoExpandEnvironmentStrings(CComBSTR& string);

/// @}
/// @defgroup maps String maps and printing
/// Debugging aids for the host. Every line is logged at level 0. The look-ups copy the map and log each entry that they
/// visit: they are meant for small maps.
/// @{

/// Logs a title between two lines of hyphens, then the elements of `list`, one per line.
///
/// @param[in] title  A narrow string, logged on a line of its own.
/// @param[in] list   The elements.
/// @logs         The title and the elements, at level 0.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API void PrintStringVector(std::string title, std::vector<std::wstring> list);

/// Logs a title between two lines of hyphens, then the keys and values of `map` in key order, one entry per line.
///
/// @param[in] title  A narrow string, logged on a line of its own.
/// @param[in] map    The entries.
/// @logs         The title and the entries, at level 0.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API void PrintStringMap(std::string title, std::map<std::wstring, std::wstring> map);

/// Returns the value of the first entry, in key order, whose key equals `key`, ignoring case.
///
/// @param[in] key  The key to look for.
/// @param[in] map  The entries to search.
/// @return "NA" if there is none.
/// @logs         The key, the entries visited and the match.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring FindStringValueInMap(std::wstring key, std::map<std::wstring, std::wstring> map);

/// Returns the first value, in key order, that equals `value`, ignoring case: its spelling in the map. In spite of the
/// name, the result is never a key.
///
/// @param[in] value  The value to look for.
/// @param[in] map    The entries to search.
/// @return "NA" if there is none.
/// @logs         The value, the entries visited and the match.
/// @sideeffects  None.
/// @raises       std::bad_alloc if memory runs out.
KESTROVANE_API std::wstring FindStringKeyInMap(std::wstring value, std::map<std::wstring, std::wstring> map);

/// @}
/// @defgroup versions Windows versions
/// Checks for the 5.x releases of Windows. The version that Windows reports to this process is read at every call.
/// @{

/// Returns whether Windows is XP, 64-bit XP included.
///
/// @return 1 on Windows XP, else 0; 0 if the version cannot be read.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       Nothing.
KESTROVANE_API int IsRunsOnWinXP();

/// Returns whether Windows is Server 2003 with a service pack, or a later release.
///
/// @return 1 on Server 2003 with any service pack and on every later release, and if the version cannot be read. 0 on
///         Windows 2000, on Windows XP, 64-bit XP included, and on Server 2003 without a service pack.
/// @logs         Nothing.
/// @sideeffects  None.
/// @raises       Nothing.
KESTROVANE_API int IsRunOnWin2003SP1Up();

/// @}
