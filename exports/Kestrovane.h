/// Kestrovane: file-system work around volume snapshots and restores, for backup agents.
///
/// Include this header and link libKestrovane.dll.a. Hosts use the shared C++ runtime of the toolchain that
/// built the DLL, because C++ strings, containers and exceptions cross this interface.
///
/// Before the first call
/// ---------------------
/// Register the host's functions with SetVssFileManagerLogger. Until then log lines go to standard output with
/// the prefix "Kestrovane: ". Every call belongs to one thread at a time: the library keeps one error state, one
/// keep-alive stamp and no locks, and several functions move the process's current directory while they run.
///
/// Results that do not say what they seem to
/// -----------------------------------------
/// - RecursivelyCreateDirectory is true for every well-formed path, also when no directory could be made. Ask
///   isDirectoryExists afterwards.
/// - DoCopyComponentFile and DoCopyComponentFileToDir give 1 when a read error cuts the copy short: the target
///   then holds the first part of the source. Compare sizes or contents. A copy that fails with 0 may leave an
///   empty or partial target behind.
/// - getFileSize gives 0 for an empty file and for a missing one.
/// - isFileExists is false for a directory, and for a file that this process may not read or that another
///   handle holds without sharing.
/// - IsFileExistsSnap is true for a null pointer.
/// - IsCanReplaceFile is true for a file that does not exist and for one that may not be read.
/// - The listings give an empty or partial list when they fail. Nothing tells it from a complete one.
/// - ListDirecoriesRecursive lists one level, not the tree.
/// - DeleteFilesFilter is true for a directory that is missing.
/// - DeleteDirectoryRecursive gives 0 without a log line when the directory cannot be searched or, once empty, not be
///   removed. What it has deleted until then is gone.
/// - CleanupDirectory ends the process for a path of more than 260 characters.
/// - GetUniqueVolumeNameForPath gives 260 NUL characters for an empty path, the path of a share, which has no volume
///   name, and an empty text for a path without a volume. GetNQUniqueVolumeNameForPath repeats a part of the text when
///   the first dot stands behind the server's name.
/// - GetDisplayNameForVolumeNoThrow is true with an empty text for a volume without a mount path.
/// - EnumVolumes gives an empty or partial list when it fails. Nothing tells it from a complete one.
/// - GetAvailableVolumeSpace and GetTotalVolumeSpace give 0.0 when the query fails, as for a full volume.
///   GetVolumeMaxFreeSpace gives an empty text when no volume has room and when none could be asked.
/// - BuildSnapshotFilePath is true always. For a volume that is missing from its map it gives the path below the
///   volume alone, which is no path into a snapshot, and adds an empty entry to the map. Look into the map beforehand.
/// - IsRunOnWin2003SP1Up gives 1 when the version cannot be read, and 0 on the 64-bit Windows XP, which shares its version
///   number with Server 2003.
/// - ChangeObjectOwner tells only what became of the object itself, not of those below it. Look into the log for these.
/// - The path functions give an empty text for a refused path and for a path without the part that was asked
///   for. They take relative paths from the current directory, and lose the middle of ..\..\a\f.txt.
/// - WStringAfterWCHAR and WStringBeforeWCHAR give the whole text when the character does not occur.
/// - FindMatchStringInList is true for every text when the list holds an empty element.
/// - FindStringKeyInMap gives the stored value, not its key. FindStringValueInMap and FindStringKeyInMap give "NA"
///   for a missing entry, as for one that holds the text NA.
/// - MapRestorePath neither adds nor removes a backslash between the alternate location and the rest: with a
///   mapping path that ends with a backslash it runs two names together. MapRestorePath1 does not. The first
///   mapping that covers a file decides, not the best one.
/// - CreateCacheFile gives false and still leaves a cache file when only the copy failed; its second argument names it.
/// - MoveCacheFile is true for every move that Windows registers, also for those that will do nothing at the restart:
///   between volumes, on a share, or of a file that is missing. DeleteCacheFileList is true whatever happened.
///
/// What may be thrown
/// ------------------
/// Failures of Windows are never thrown. CAtlException comes from BSTR strings, std::bad_alloc and
/// std::length_error from string copies; a function that throws neither says so.
///
/// Lengths
/// -------
/// Paths pass through buffers of 260 characters (MAX_PATH, terminator included) wherever Windows or the runtime
/// library asks for one. A longer path fails as an over-long path does; nothing is written past a buffer.
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

// ---------------------------------------------------------------------------------------------------------
// Host functions
// ---------------------------------------------------------------------------------------------------------

/// Receives the library's log lines. `format` is a narrow printf format that carries its own line end; wide
/// arguments come with %S, narrow ones with %s. Level 2 marks locations and progress, level 0 everything else;
/// the library filters nothing. The result is ignored.
///
/// Two formats pair %s with a wide path (see DeleteDirectoryRecursive), and one pairs %u with a wide path (see
/// ChangeObjectOwner); a host that prints wide text itself has to know them. The platform's own printf stops at a %S
/// argument with a character above U+00FF in the C locale.
using VssFileManagerLogFn = int(__cdecl*)(int level, const char* format, ...);

/// Tells the host that the library is still at work; `seconds` is how long to wait for the next sign of life
/// (600, or 10800 before a write of security information). No further arguments are passed and the result is ignored.
using VssFileManagerKeepAliveFn = int(__cdecl*)(int seconds, ...);

/// Registers the host's functions. They stay in use until the next registration; keep them callable until the
/// DLL is unloaded. None may be null: a null logger faults at once, a null keep-alive when it is first due.
///
/// The new logger is called once, at level 2, before the function returns.
///
/// @param logger     Receives every log line.
/// @param keepAlive  Called by long operations.
/// @param auxLogger  Kept, never called.
KESTROVANE_API void SetVssFileManagerLogger(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                            VssFileManagerLogFn auxLogger);

/// Logs the line of this call at level 2 and calls the host's keep-alive function with 600 seconds.
///
/// @param unused  Never read; null is fine.
KESTROVANE_API void SendKA(const char* unused);

// ---------------------------------------------------------------------------------------------------------
// Paths
// ---------------------------------------------------------------------------------------------------------
//
// The first five functions first make the path absolute: "/" becomes "\", a relative path is put behind the
// current directory, a path that begins with one backslash behind its drive. A path that begins with "..\"
// becomes an ancestor of the current directory followed by the last part alone; the process's current directory
// is changed for that and put back. A part with ':', '*' or '?' is refused: the answer is empty, and the thread's
// last error, if it is not 0, is logged. Paths that begin with two backslashes are taken as they are.
// A part of the path of more than 255 characters is looked at up to there. A current directory of 260 characters
// or more counts as empty.
// They change neither their argument nor, on their own account, the last error.

/// The text after the last backslash: "f.tar.gz" of C:\dir\f.tar.gz.
/// Empty for C:\dir\, for C:f.txt (no backslash) and for a refused path.
KESTROVANE_API std::wstring GetFileName(const std::wstring& path);

/// The text before the last backslash, without it: "C:\dir" of C:\dir\f.txt, but "C:" of C:\f.txt.
/// Empty for a path without a backslash and for a refused path.
KESTROVANE_API std::wstring GetPathFileName(const std::wstring& path);

/// The text after the last colon: "\dir\f.txt" of C:\dir\f.txt. Empty without a colon and for a refused path.
KESTROVANE_API std::wstring GetPathFileNameNoVolume(const std::wstring& path);

/// The text before the last colon: "C" of C:\dir, "\\?\C" of \\?\C:\dir.
/// Empty for a share and for a refused path.
KESTROVANE_API std::wstring GetVolume(const std::wstring& path);

/// The local path behind an administrative share: C:\dir\f.txt of \\host\volume$C\dir\f.txt.
///
/// The last "volume$" counts, in this case only. A path without it is returned made absolute; a path with
/// nothing but a drive after it, and a refused path, give an empty text.
KESTROVANE_API std::wstring GetPathFileTranslate(const std::wstring& path);

/// `path` with a backslash at its end; "\" for an empty path. A trailing "/" is not taken for one.
KESTROVANE_API std::wstring AppendBackslash(std::wstring path);

// ---------------------------------------------------------------------------------------------------------
// Strings and lists
// ---------------------------------------------------------------------------------------------------------
//
// Case is that of the runtime's current locale; in the default one only A to Z and a to z have case.
// Comparisons end at a terminator inside a text. Nothing is logged.

/// Whether two texts are equal without regard to case.
KESTROVANE_API bool IsEqual(std::wstring first, std::wstring second);

/// Whether some element of `list` equals `text` without regard to case.
KESTROVANE_API bool FindStringInList(std::wstring text, std::vector<std::wstring> list);

/// Whether some element of `list` occurs inside `text` without regard to case. The elements are fragments, not
/// patterns: '*' and '?' stand for themselves. An empty element occurs in every text.
KESTROVANE_API bool FindMatchStringInList(std::wstring text, std::vector<std::wstring> list);

/// The part of `text` after the first `character`; all of it when the character does not occur.
KESTROVANE_API std::wstring WStringAfterWCHAR(std::wstring text, wchar_t character);

/// The part of `text` before the first `character`; all of it when the character does not occur.
KESTROVANE_API std::wstring WStringBeforeWCHAR(std::wstring text, wchar_t character);

/// `text` with every character passed through the runtime's narrow toupper; the length stays.
KESTROVANE_API std::wstring WString2UpperCase(const std::wstring& text);

/// Replaces each %NAME% in `text` by the environment variable's value. Names that are not defined stay.
///
/// Hazards: a result of more than 259 characters is cut, or lost, as Windows leaves it in a buffer of 260
/// characters, and each such call keeps its working buffer for the life of the process. When Windows refuses the
/// expansion, "ExpandEnvironmentStrings failed due to error %d.\n" goes to standard output and the text stays.
/// A text without '%' is not looked at any further.
///
/// Throws CAtlException (0x8007000E) when no string can be allocated; `text` is then as it was.
KESTROVANE_API void DoExpandEnvironmentStrings(CComBSTR& string);

// ---------------------------------------------------------------------------------------------------------
// String maps and printing
// ---------------------------------------------------------------------------------------------------------
//
// Aids for the host's own diagnosis; the library does not call them. Every line is logged at level 0. Case is as under
// "Strings and lists". The lookups copy the map and log each entry that they visit: they are meant for small maps.

/// Logs a heading, the title between two lines of hyphens, and then the elements of `list`, one a line.
KESTROVANE_API void PrintStringVector(std::string title, std::vector<std::wstring> list);

/// Logs a heading like PrintStringVector's, and then the keys and values of `map` in the order of the keys.
KESTROVANE_API void PrintStringMap(std::string title, std::map<std::wstring, std::wstring> map);

/// The value of the first entry, in the order of the keys, whose key equals `key` without regard to case.
///
/// @return "NA" when there is none, which an entry with that value looks like.
/// Logs the key, the entries visited and the match.
KESTROVANE_API std::wstring FindStringValueInMap(std::wstring key, std::map<std::wstring, std::wstring> map);

/// How `value` is spelled in `map`: the first value, in the order of the keys, that equals it without regard to case.
/// In spite of the name, the answer is never a key.
///
/// @return "NA" when there is none, which a value of that text looks like.
/// Logs the value, the entries visited and the match.
KESTROVANE_API std::wstring FindStringKeyInMap(std::wstring value, std::map<std::wstring, std::wstring> map);

// ---------------------------------------------------------------------------------------------------------
// Checks and creation
// ---------------------------------------------------------------------------------------------------------
//
// An empty path is false, after the thread's last error, if it is not 0, has been logged.

/// Whether the process can change into `path`, which is what "exists" means here.
///
/// @return false for an empty path, a file, a directory that may not be entered, and a path with ':', '*' or '?'
///         in a part of it; a path that begins with two backslashes skips that last check.
///
/// Moves the process's current directory during the call and puts it back. The last error is that of the attempt.
KESTROVANE_API bool isDirectoryExists(const std::wstring& path);

/// Whether the process's user may both read and write `path`, by the access list of the file or directory.
///
/// The path is used as it is given. Only the access list is asked: attributes and other handles do not count.
/// @return false also when the access list or the process's token cannot be read; nothing is logged then.
KESTROVANE_API bool isDirectoryReadWritable(const std::wstring& path);

/// Creates a directory with all its missing parents.
///
/// @return true whenever the path is well formed, even if nothing could be made: callers that need to be sure
///         ask isDirectoryExists afterwards. false for an empty or refused path.
///
/// If the directory cannot be entered in the end, one of "Unable to locate the directory: %S\n",
/// "Invalid buffer.\n" and "Unknown error.\n" goes to standard output, the failure is logged, and the last error
/// is set to that of the last directory that could not be made; when all could be made, to an older code.
/// Moves the process's current directory during the call and puts it back. Relative paths with "..\" in front
/// are reduced as described under "Paths".
KESTROVANE_API bool RecursivelyCreateDirectory(const std::wstring& path);

/// Whether `path` is a file that this process can open for reading.
///
/// @return false for a directory, a missing file, a file that may not be read, one that another handle holds
///         without sharing, and a refused path. The last error and errno are those of the attempt.
KESTROVANE_API bool isFileExists(const std::wstring& path);

/// Whether `path`, a file or a directory, has attributes that can be read. The path is in the ANSI code page.
///
/// @return true for a null pointer: no path counts as present.
KESTROVANE_API bool IsFileExistsSnap(char* path);

/// Whether `path` can be replaced by a restore now: it is missing, or it can be opened for writing alone.
///
/// @return false when another handle is open on it, or when it may not be written. A file that is there but may
///         not be read counts as missing (true).
/// Opens the file for writing without sharing for a moment; the content is not touched.
KESTROVANE_API bool IsCanReplaceFile(std::wstring& path);

/// Size of a file in bytes. 0 for an empty file, and for one that is missing or cannot be queried; the last error
/// tells only after a failure.
KESTROVANE_API std::int64_t getFileSize(std::wstring& path);

// ---------------------------------------------------------------------------------------------------------
// Listings
// ---------------------------------------------------------------------------------------------------------
//
// Filters are the platform's: '*' and '?', without regard to case, short names included; "*" stands for "*.*".
// Hidden and system files are listed like all others. Directories that are links are entered.
// While a listing runs, the host's keep-alive function is called with 600 when 599 seconds have gone by since the
// last time. Files are logged at level 2 as they are found. Each call moves the process's current directory for a
// moment and puts it back. A directory that is missing or refused gives an empty list.

/// The files of one directory that match `filter`, in the order of their code units (capitals first).
///
/// @param directory  Made absolute as described under "Paths"; an empty one is the current directory.
/// @param fullPath   true: full paths; false: names alone.
KESTROVANE_API std::vector<std::wstring> ListFilesFilter(const std::wstring& directory, const std::wstring& filter,
                                                         bool fullPath);

/// The files of a whole tree that match `filter`: first those of `directory`, then those of each directory below
/// it, parents first. They are sorted within each directory.
///
/// @param fullPath  true: full paths; false: paths from `directory` on, without a backslash in front.
/// @return What was found before the first directory that could not be searched. Nothing tells a partial list
///         from a complete one.
KESTROVANE_API std::vector<std::wstring> ListFilesFilterRecursive(const std::wstring& directory,
                                                                  const std::wstring& filter, bool fullPath);

/// The directories right below `directory`, as full paths without a trailing backslash, in the order in which
/// Windows gives them. In spite of the name, one level only. Nothing is logged.
KESTROVANE_API std::vector<std::wstring> ListDirecoriesRecursive(const std::wstring& directory);

// ---------------------------------------------------------------------------------------------------------
// Deletion
// ---------------------------------------------------------------------------------------------------------
//
// Hazard: the deleters enter directories that are links (junctions, directory symbolic links) and delete what these lead
// to. Attributes are never changed, so a read-only file stops them. Nothing goes to a recycle bin.

/// Deletes the files of one directory that match `filter`; its subdirectories stay.
///
/// @param directory  Made absolute as described under "Paths". Hazard: an empty one is the current directory.
/// @param filter     The platform's '*' and '?'; "*" is taken as it stands here.
/// @return true when every matching file was deleted, also when none matched or the directory is missing. false at the
///         first file that could not be deleted; later ones are not tried, and the last error is that of the attempt.
///
/// Deletes in the order of the names' code units and logs the files as a listing does. Moves the process's current
/// directory for a moment and puts it back.
KESTROVANE_API bool DeleteFilesFilter(const std::wstring& directory, const std::wstring& filter);

/// Deletes a directory with everything in it.
///
/// @param directory  Zero-terminated, at most 257 characters, with or without a drive; used as it is given.
/// @return nonzero on success. 0 at the first failure, with nothing retried: silently when the directory cannot be
///         searched or, once empty, not be removed; after a log line and the report of the Win32 error when something in
///         it cannot be deleted. The last error tells why. A path or entry that does not fit 260 characters fails with
///         206 (ERROR_FILENAME_EXCED_RANGE). A null or empty path is refused with 3 (ERROR_PATH_NOT_FOUND).
///
/// Hazards: the first entry that Windows gives is skipped as ".", so in a drive's root, which has no such entry, one file or
/// directory stays and the result is 0. Stack: less than 1.5 KiB for each level of directories, and paths of 260
/// characters have at most 129 levels.
///
/// Logs every deletion at level 0. The lines "Directory couldn't be deleted: %s \n" and "File couldn't be deleted: %s \n"
/// pass the path as a wide text although their conversion is %s.
KESTROVANE_API int DeleteDirectoryRecursive(const wchar_t* directory);

/// Deletes a directory with everything in it: DeleteDirectoryRecursive for up to 260 characters.
///
/// Hazard: for a longer path the directories below it are emptied of files and removed, deepest first, and then the process
/// ends with STATUS_INVALID_CRUNTIME_PARAMETER (0xC0000417), unless an invalid-parameter handler returns. The directory
/// itself and the files right in it stay. Never pass such a path without such a handler. With the UCRT the handler is that
/// of the process; with the older runtime it can only be set inside this DLL's own module, so a host has none.
/// @return whether everything was deleted; of a long path, whether the files below could be.
KESTROVANE_API bool CleanupDirectory(const std::wstring& directory);

// ---------------------------------------------------------------------------------------------------------
// Copy
// ---------------------------------------------------------------------------------------------------------
//
// Source and target are opened without sharing, so a copy fails while any other handle is open on either. The
// content alone is copied: no times, attributes, streams or access lists. An existing target is overwritten.
// Missing directories are made first. Nothing is logged on a failed copy; the last error is that of the call
// that failed. A path of the source that is empty is logged if the last error is not 0.

/// Copies `source` into `directory` under its own name.
///
/// @return 1 when the copy ran to its end, 0 otherwise. Hazard: a read error in mid-file ends the copy with 1 and a
///         short target, and a target left by a failed copy is not deleted.
KESTROVANE_API int DoCopyComponentFileToDir(const std::wstring& source, const std::wstring& directory);

/// Copies `source` to the file `target`. Result and hazards are those of DoCopyComponentFileToDir.
KESTROVANE_API int DoCopyComponentFile(const std::wstring& source, const std::wstring& target);

// ---------------------------------------------------------------------------------------------------------
// Volumes
// ---------------------------------------------------------------------------------------------------------
//
// A volume path is the drive or folder under which a volume is mounted, or a share, always with its trailing backslash
// (C:\, C:\mount\data\, \\server\share\). A volume name has the form \\?\Volume{GUID}\. Paths are taken with or without a
// trailing backslash, need not exist below their volume, and are relative to the current directory where they have no
// drive. Nothing is logged; the last error after a failure is that of the call that failed.

/// Whether `path` is itself a volume path, or a volume name where Windows takes it for one.
///
/// @return false for a folder that no volume is mounted in, a share, a path that Windows cannot look up, and, without
///         a message, the empty path.
/// A false answer is printed: "GetVolumeNameForVolumeMountPoint(%S) failed with %d\n" goes to standard output with the
/// path, its trailing backslash included, and the last error.
KESTROVANE_API bool IsVolume(std::wstring path);

/// The unique name of the volume that holds `path`.
///
/// @return Less when Windows cannot tell it: the first name found for the volume; the volume path, which is always the
///         answer for a share; the empty text when there is no volume path either. For an empty path, 260 characters
///         that are all NUL: size() is 260, and the text ends at once.
KESTROVANE_API std::wstring GetUniqueVolumeNameForPath(std::wstring path);

/// The unique name of the volume that holds `path`, or nothing.
///
/// @param uniqueName  Written on success only.
/// @return false for an empty path, a share, and whenever a look-up fails.
KESTROVANE_API bool GetUniqueVolumeNameForPathNoThrow(std::wstring path, std::wstring& uniqueName);

/// GetUniqueVolumeNameForPath with the domain cut from a server's name: \\server\share\ of \\server.domain\share\f.
///
/// Hazard: a first dot behind the server's name cuts there, and everything from the server's end on follows once more:
/// \\server\share.1\ gives \\server\share\share.1\.
KESTROVANE_API std::wstring GetNQUniqueVolumeNameForPath(std::wstring path);

/// The first path in Windows' list of those under which a volume is mounted, for showing it to people.
///
/// @param volumeName   Used as it is given; Windows wants the trailing backslash.
/// @param displayName  Written on success only; empty for a volume that is not mounted anywhere.
/// @return false when Windows gives no list.
KESTROVANE_API bool GetDisplayNameForVolumeNoThrow(std::wstring volumeName, std::wstring& displayName);

/// The volume paths of all volumes, in Windows' order: volume by volume, and all paths of one volume together. A path
/// that occurs more than once, case apart, is listed where it came first. Volumes that are not mounted are left out.
///
/// @return The paths found before a failure; empty when the search cannot be opened. A volume whose paths cannot be
///         read is left out.
/// Throws and logs nothing.
KESTROVANE_API std::vector<std::wstring> EnumVolumes();

// ---------------------------------------------------------------------------------------------------------
// Volume space
// ---------------------------------------------------------------------------------------------------------
//
// Space comes in decimal gigabytes (10^9 bytes): 1,500,000,000 bytes give 1.5. Counts are taken as signed 64-bit
// numbers. These functions throw and log nothing. Queries share one set of numbers inside the library: two threads at
// once can read each other's.

/// The volume path from EnumVolumes with the most free space for the calling user, the first of equals.
///
/// @return Empty when no volume has free space, and when none could be listed or asked.
KESTROVANE_API std::wstring GetVolumeMaxFreeSpace();

/// Free space for the calling user, after quotas, on the volume that holds `path`.
///
/// @param path  A directory on the volume; a share needs its trailing backslash.
/// @return 0.0 when the query fails, which a caller cannot tell from a full volume; the last error is that of the query.
KESTROVANE_API double GetAvailableVolumeSpace(const std::wstring& path);

/// Size of the volume that holds `path`, as far as the calling user may use it. Argument and failure are those of
/// GetAvailableVolumeSpace.
KESTROVANE_API double GetTotalVolumeSpace(const std::wstring& path);

// ---------------------------------------------------------------------------------------------------------
// Snapshot paths
// ---------------------------------------------------------------------------------------------------------

/// Appends the path of a live file inside the snapshot of its volume to `result`.
///
/// That is the snapshot's prefix from the map, followed by what `path` has below its volume, with the backslash in
/// front: with a prefix of D, C:\data\f.txt becomes D\data\f.txt, and C: becomes D.
///
/// @param path       A full path on a volume (by drive or mount folder) or on a share; null counts as empty. Hazard: a
///                   mount folder or share itself needs its trailing backslash. Without it, the mount folder is taken
///                   for a folder of its drive, and the share for a path without a volume.
/// @param result     Appended to, never cleared: pass an empty one.
/// @param snapshots  The prefixes, without trailing backslash. Keys are volume names (\\?\Volume{GUID}\) and, for shares,
///                   volume paths (\\server\share\), both as Windows spells them; case counts. Where a key is missing,
///                   the prefix is empty and the key is added with an empty value. A path without a volume has the
///                   empty key and is appended whole.
/// @return true, whether or not there is such a snapshot.
/// Logs nothing. Throws only CAtlException (0x8007000E); nothing is appended then, but the key may have been added.
KESTROVANE_API bool BuildSnapshotFilePath(const wchar_t* path, CComBSTR& result,
                                          std::map<std::wstring, std::wstring>& snapshots);

// ---------------------------------------------------------------------------------------------------------
// Windows versions
// ---------------------------------------------------------------------------------------------------------
//
// The version is that which Windows reports to this process, read at every call. Nothing is logged or thrown.

/// 1 on Windows XP, the 64-bit one included, else 0; 0 when the version cannot be read.
KESTROVANE_API int IsRunsOnWinXP();

/// 0 on Windows 2000, on Windows XP and on Server 2003 without a service pack; 1 on Server 2003 with any service pack
/// and on every later release, and when the version cannot be read.
KESTROVANE_API int IsRunOnWin2003SP1Up();

// ---------------------------------------------------------------------------------------------------------
// Owner change
// ---------------------------------------------------------------------------------------------------------

/// Gives a file or folder, and then everything below it, to an account: the account becomes the owner and gets full
/// access, which everything below inherits. Its other entries in the access list are replaced; group and system list stay.
///
/// @param path     Without a trailing backslash.
/// @param account  A user or group as Windows looks it up: name, DOMAIN\name, .\name (a name without its domain), or
///                 LocalSystem in this spelling.
/// @return true when the object itself was changed. false at its first failure, which is logged; nothing below it is
///         touched then. What becomes of the objects below is logged only: one that cannot be changed is passed over,
///         with everything below it.
///
/// Depth first, in Windows' order, a folder before its contents. Links to folders are followed.
///
/// For each object, the progress is logged at level 2 and the failure and a line about the clock, without a line end, at
/// level 0. The host's keep-alive function is called with 600, after SendKA's line, when more than 570 whole seconds have
/// gone by since the last such call; with 10800 before owner and access list are written, because Windows may carry them
/// to a whole tree; with 600 after that has succeeded. After a failed write the host is left with 10800.
///
/// Hazards: the line "Error creating new DACL for file/folder to include new owner - error %u.\n" comes with the path
/// (wide) before the error, so a printf shows a part of an address. The security descriptors read, two for each
/// object, stay allocated for the life of the process. Needs the rights to take ownership and to give it away.
/// Throws only what a string copy can.
KESTROVANE_API bool ChangeObjectOwner(std::wstring path, std::wstring account);

// ---------------------------------------------------------------------------------------------------------
// Restore mapping
// ---------------------------------------------------------------------------------------------------------
//
// A file description is a directory, a file specification with '*' (any run of characters) and '?' (exactly one
// character), and a flag that takes in all directories below. Case does not matter, nor does one backslash at the
// end of the directory. An empty directory is taken as "\". Texts end at a terminator inside them.
// These functions throw only CAtlException (0x8007000E).

/// Whether two file descriptions overlap: some file name fits both specifications, and the directories are equal
/// or one lies in the tree of the other, where the flag of the outer one is set.
///
/// "*.*" covers only names with a dot. No string is changed. Work is at most the product of the lengths of the two
/// specifications.
KESTROVANE_API bool IsFileDescMatch(std::wstring& path1, std::wstring& spec1, bool recursive1, std::wstring& path2,
                                    std::wstring& spec2, bool recursive2);

/// One alternate location: the files of a description and the directory that takes the place of theirs.
struct VSS_ALTERNATE_MAPPING {
    std::wstring path;              ///< the directory that the mapping covers, in any case
    std::wstring alternateLocation; ///< the directory that replaces it
    std::wstring fileSpec;          ///< which files; may hold '*' and '?'
    bool recursive;                 ///< also everything below the directory
};

/// Rewrites `path` to its alternate location, if some mapping covers it.
///
/// @param path      The directory of the file to restore; on success its alternate location followed by what comes
///                  after the length of the mapping's path as it is written, nothing added or taken out. With the
///                  mapping C:\Data\ to D:\Restore, C:\Data\Sub becomes D:\RestoreSub. Where the mapping's path is the
///                  longer, nothing follows.
/// @param spec      The file's name or specification.
/// @param mappings  Tried in their order; the first that covers the file decides.
/// @return false when no mapping covers the file; `path` is then as it was, as it is after an exception.
///
/// Logs the file, the mapping and two diagnostic lines at level 2 when a mapping was found.
KESTROVANE_API bool MapRestorePath(std::wstring& path, std::wstring& spec,
                                   std::vector<VSS_ALTERNATE_MAPPING>& mappings);

/// MapRestorePath for mappings whose path may end with a backslash: one such backslash is not counted, so that
/// C:\Data\ to D:\Restore turns C:\Data\Sub into D:\Restore\Sub. Logs nothing.
KESTROVANE_API bool MapRestorePath1(std::wstring& path, std::wstring& spec,
                                    std::vector<VSS_ALTERNATE_MAPPING>& mappings);

// ---------------------------------------------------------------------------------------------------------
// Cache files
// ---------------------------------------------------------------------------------------------------------
//
// A file in use that a restore cannot replace now is put into a cache file first, and the cache file is moved over it at the
// next restart. These functions throw nothing and log nothing of their own; a failure is their result.

/// Makes a new cache file with a unique name, beside the live file or in the temporary directory.
///
/// @param liveFile      The file in use. When its directory has more than 246 characters, the cache file is made in
///                      C:\#Quorvanta\Cache.
/// @param cacheFile     Receives the cache file's path. After a failed copy it names a file that is still there.
/// @param prefix        Its first three characters begin the name.
/// @param useTempPath   true: in the temporary directory of the environment (TMP, TEMP, the profile).
/// @param copyOriginal  true: filled with the live file's content, which takes a live file that can be opened alone;
///                      false: empty.
/// @return false when the directory or the file could not be made or the copy failed; the last error tells why.
///
/// A missing directory is made. Moves the process's current directory for a moment and puts it back.
KESTROVANE_API bool CreateCacheFile(const std::wstring& liveFile, std::wstring& cacheFile, std::wstring prefix,
                                    bool useTempPath, bool copyOriginal);

/// Registers a cache file to replace `target` when the system next starts; nothing is moved now.
///
/// Hazard: true says that the move was registered, not that it will work. It does nothing at the restart when the two files
/// are on different volumes, on a share, or when the cache file is gone by then. It takes an administrator. Check that
/// cache file and target have the same local volume before the call.
///
/// @return false when Windows refuses the registration. The target's directory is made if it is missing.
KESTROVANE_API bool MoveCacheFile(const std::wstring& cacheFile, std::wstring& target);

/// Makes a cache file for each file of a list.
///
/// @param files      Paths, or, with a separator, entries such as "FILE|C:\a.txt". Entries of the kind "XML" (in any case)
///                   are skipped; an entry without the separator is its own kind and path.
/// @param separator  Between kind and path; 0 for plain paths.
/// @param cacheMap   Receives for each entry as given, upper-cased, its cache file, upper-cased. Never cleared. Of an entry
///                   that is listed twice the first cache file is in no map.
/// @return false at the first cache file that could not be made; earlier ones are in the map and on disk, and what that
///         entry's CreateCacheFile left is in no map.
/// The other arguments are those of CreateCacheFile.
KESTROVANE_API bool CreateCacheFileList(std::vector<std::wstring> files, wchar_t separator, std::wstring prefix,
                                        bool useTempPath, std::map<std::wstring, std::wstring>& cacheMap,
                                        bool copyOriginal);

/// Deletes the cache files of a map, those in use at the next restart.
///
/// @param separator  Not 0: the path is what comes after its first occurrence in the map's value.
/// @return true, whatever happened to each file; false only when memory ran out, which ends the work.
KESTROVANE_API bool DeleteCacheFileList(std::map<std::wstring, std::wstring>& cacheMap, wchar_t separator);

/// Deletes the cache files of a list, those in use at the next restart.
/// @return true in every case, even when memory ran out in between.
KESTROVANE_API bool DeleteCacheFileList(std::vector<std::wstring>& paths);

/// Copies each cache file beside its live file, under the cache file's name. The live file is not touched.
///
/// @return false when some copy failed; the others are made all the same. A cache file that already lies beside its live
///         file cannot be copied onto itself: false, and it keeps every byte.
KESTROVANE_API bool RestoreFileListCache(std::map<std::wstring, std::wstring>& cacheMap);
