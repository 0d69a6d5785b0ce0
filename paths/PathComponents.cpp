// The four components of a path: drive, directory, name and extension.

#include "paths/PathComponents.h"

#include <cstdlib>

void PathComponents::Split(const std::wstring& path)
{
    const std::size_t capacity = path.size() + 1;
    if (capacity <= kComponentCapacity) {
        SplitInto(path, m_buffers[0], m_buffers[1], m_buffers[2], kComponentCapacity);
        return;
    }
    // The runtime's splitter returns no component at all if one does not fit.
    m_longBuffer.resize(3 * capacity);
    wchar_t* const first = m_longBuffer.data();
    SplitInto(path, first, first + capacity, first + 2 * capacity, capacity);
}

void PathComponents::SplitInto(const std::wstring& path, wchar_t* directory, wchar_t* name, wchar_t* extension,
                               std::size_t capacity)
{
    // Not every failure writes the buffers.
    m_driveBuffer[0] = *directory = *name = *extension = L'\0';
    ::_wsplitpath_s(path.c_str(), m_driveBuffer, kDriveCapacity, directory, capacity, name, capacity, extension,
                    capacity);
    m_drive = m_driveBuffer;
    m_directory = directory;
    m_name = name;
    m_extension = extension;
}
