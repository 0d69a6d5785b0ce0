// The four components of a path: drive, directory, name and extension.

#pragma once

#include <cstddef>
#include <string>
#include <string_view>

// Splits a path as the runtime library does, up to its first NUL, whatever the length of its components. The views are
// valid until the next Split.
class PathComponents {
public:
    // cppcheck-suppress uninitMemberVar ; Split writes the buffers before they are read
    explicit PathComponents(const std::wstring& path) { Split(path); }
    PathComponents(const PathComponents&) = delete;
    PathComponents& operator=(const PathComponents&) = delete;

    void Split(const std::wstring& path);

    [[nodiscard]] std::wstring_view Drive() const noexcept { return m_drive; }         // with its colon, or empty
    [[nodiscard]] std::wstring_view Directory() const noexcept { return m_directory; } // with its last separator
    [[nodiscard]] std::wstring_view Name() const noexcept { return m_name; }
    [[nodiscard]] std::wstring_view Extension() const noexcept { return m_extension; } // with its dot

private:
    static constexpr std::size_t kDriveCapacity = 3;       // characters, terminator included
    static constexpr std::size_t kComponentCapacity = 256; // the same; no component of a shorter path is longer

    void SplitInto(const std::wstring& path, wchar_t* directory, wchar_t* name, wchar_t* extension,
                   std::size_t capacity);

    std::wstring_view m_drive;
    std::wstring_view m_directory;
    std::wstring_view m_name;
    std::wstring_view m_extension;
    wchar_t m_driveBuffer[kDriveCapacity];
    wchar_t m_buffers[3][kComponentCapacity];
    std::wstring m_longBuffer; // for longer paths: three buffers in a row
};
