// Decomposition of paths: file name, directory, drive, and the local path of a share.

#include "frame/FileManager.h"

#include <string_view>
#include <utility>

namespace {

// Both cut the string that they are passed, so that a decomposition allocates one string alone.
std::wstring AfterLast(wchar_t mark, std::wstring path)
{
    const auto position = path.rfind(mark);
    path.erase(0, position == std::wstring::npos ? position : position + 1);
    return path;
}

std::wstring BeforeLast(wchar_t mark, std::wstring path)
{
    const auto position = path.rfind(mark);
    path.resize(position == std::wstring::npos ? 0 : position);
    return path;
}

} // namespace

namespace quorvantavss {

std::wstring CVssFileManager::FileNamePart(const std::wstring& path)
{
    std::wstring valid = path;
    return ValidatePath(valid) ? AfterLast(L'\\', std::move(valid)) : std::wstring();
}

std::wstring CVssFileManager::DirectoryPart(const std::wstring& path)
{
    std::wstring valid = path;
    return ValidatePath(valid) ? BeforeLast(L'\\', std::move(valid)) : std::wstring();
}

std::wstring CVssFileManager::PartWithoutDrive(const std::wstring& path)
{
    std::wstring valid = path;
    return ValidatePath(valid) ? AfterLast(L':', std::move(valid)) : std::wstring();
}

std::wstring CVssFileManager::DrivePart(const std::wstring& path)
{
    std::wstring valid = path;
    return ValidatePath(valid) ? BeforeLast(L':', std::move(valid)) : std::wstring();
}

std::wstring CVssFileManager::TranslateSharePath(const std::wstring& path)
{
    constexpr std::wstring_view kVolumeMarker = L"volume$";
    std::wstring valid = path;
    if (!ValidatePath(valid)) {
        return {};
    }
    const auto marker = valid.rfind(kVolumeMarker);
    if (marker == std::wstring::npos) {
        return valid;
    }
    const std::wstring local = valid.substr(marker + kVolumeMarker.size());
    const auto backslash = local.find(L'\\');
    if (backslash == std::wstring::npos) {
        return {};
    }
    return local.substr(0, backslash) + L':' + local.substr(backslash);
}

} // namespace quorvantavss

std::wstring GetFileName(const std::wstring& path)
{
    return g_fileManager.FileNamePart(path);
}

std::wstring GetPathFileName(const std::wstring& path)
{
    return g_fileManager.DirectoryPart(path);
}

std::wstring GetPathFileNameNoVolume(const std::wstring& path)
{
    return g_fileManager.PartWithoutDrive(path);
}

std::wstring GetVolume(const std::wstring& path)
{
    return g_fileManager.DrivePart(path);
}

std::wstring GetPathFileTranslate(const std::wstring& path)
{
    return g_fileManager.TranslateSharePath(path);
}

std::wstring AppendBackslash(std::wstring path)
{
    if (path.empty() || path.back() != L'\\') {
        path += L'\\';
    }
    return path;
}
