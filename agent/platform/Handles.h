// Owners of the handles and the memory that Windows hands out.

#pragma once

#include <windows.h>

#include <memory>

namespace agent {

// Releases a resource and keeps the thread's last error, because a failure is often reported after the release.
template <auto Release>
struct Releaser {
    template <typename Resource>
    void operator()(Resource* resource) const noexcept
    {
        const DWORD error = ::GetLastError();
        static_cast<void>(Release(resource));
        ::SetLastError(error);
    }
};

using UniqueHandle = std::unique_ptr<void, Releaser<&::CloseHandle>>;
using UniqueSearch = std::unique_ptr<void, Releaser<&::FindClose>>;

template <typename Value>
using UniqueLocal = std::unique_ptr<Value, Releaser<&::LocalFree>>; // memory for LocalFree

// Windows returns INVALID_HANDLE_VALUE where an owner needs null.
inline UniqueHandle Own(HANDLE handle)
{
    return UniqueHandle(handle == INVALID_HANDLE_VALUE ? nullptr : handle);
}

inline UniqueSearch OwnSearch(HANDLE search)
{
    return UniqueSearch(search == INVALID_HANDLE_VALUE ? nullptr : search);
}

// The widest sharing: other processes may read, write and delete meanwhile.
constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

} // namespace agent
