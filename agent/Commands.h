// The agent's commands: their options, and the function that runs each. Each function gives the exit code.

#pragma once

#include "agent/Mappings.h"

#include <string>
#include <vector>

namespace agent {

struct CommonOptions {
    bool json = false;
    bool verbose = false;
};

struct ListOptions {
    std::wstring directory;
    std::wstring filter = L"*";
    bool recursive = false;
    bool fullPaths = false;
};
int RunList(const ListOptions& options, const CommonOptions& common);

struct BackupOptions {
    std::wstring directory;
    std::wstring target;
    std::wstring filter = L"*";
    std::vector<std::wstring> snapshots; // VOLUME=DEVICE
};
int RunBackup(const BackupOptions& options, const CommonOptions& common);

struct MapOptions {
    std::wstring path;
    std::wstring name; // empty: `path` is a file, or else a directory
    Mappings mappings;
    bool explain = false;
};
int RunMap(const MapOptions& options, const CommonOptions& common);

enum class Overwrite { kAlways, kIfNewer, kNever };

struct RestoreOptions {
    std::wstring backup;
    Mappings mappings;
    Overwrite overwrite = Overwrite::kAlways;
    bool dryRun = false;
    bool temporaryCache = false; // cache files in the temporary directory instead of beside the files in use
    bool protectLive = false;    // copies of the live files until the restore is through
    std::wstring owner;          // empty: owners stay
};
int RunRestore(const RestoreOptions& options, const CommonOptions& common);

struct DeleteOptions {
    std::wstring directory;
    std::wstring filter; // empty: the whole tree
    bool yes = false;
    bool clearReadOnly = false;
    bool followLinks = false;
};
int RunDelete(const DeleteOptions& options, const CommonOptions& common);

int RunPending(const CommonOptions& common);

int RunVolumes(const CommonOptions& common);

struct ResolveOptions {
    std::wstring path;
};
int RunResolve(const ResolveOptions& options, const CommonOptions& common);

struct OwnOptions {
    std::wstring path;
    std::wstring account;
    bool yes = false;
};
int RunOwn(const OwnOptions& options, const CommonOptions& common);

int RunPlatform(const CommonOptions& common);

} // namespace agent
