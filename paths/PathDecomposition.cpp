// Parts of a path that the host asks for by name.

#include "frame/FileManager.h"

#include <string_view>

namespace quorvantavss {

std::wstring CVssFileManager::TextAfterLast(wchar_t mark, std::wstring path)
{
    if (!ValidatePath(path)) {
        return {};
    }
    const auto position = path.rfind(mark);
    return position == std::wstring::npos ? std::wstring() : path.substr(position + 1);
}

std::wstring CVssFileManager::TextBeforeLast(wchar_t mark, std::wstring path)
{
    if (!ValidatePath(path)) {
        return {};
    }
    const auto position = path.rfind(mark);
    return position == std::wstring::npos ? std::wstring() : path.substr(0, position);
}

std::wstring CVssFileManager::FileNamePart(const std::wstring& path)
{
    return TextAfterLast(L'\\', path);
}

std::wstring CVssFileManager::DirectoryPart(const std::wstring& path)
{
    return TextBeforeLast(L'\\', path);
}

std::wstring CVssFileManager::PartWithoutDrive(const std::wstring& path)
{
    return TextAfterLast(L':', path);
}

std::wstring CVssFileManager::DrivePart(const std::wstring& path)
{
    return TextBeforeLast(L':', path);
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
