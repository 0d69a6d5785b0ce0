// Owners of handles and memory that Windows and the runtime library hand out.

#pragma once

#include "win32/LastErrorGuard.h"

#include <windows.h>

#include <io.h>

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <utility>

// Owns one resource. The traits name the invalid value and the release function. Releasing preserves the thread's last
// error, because a failure is often reported after the clean-up.
template <typename Traits>
class UniqueResource {
public:
    using Value = typename Traits::Value;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Value value) noexcept : m_value(value) {}
    UniqueResource(UniqueResource&& other) noexcept : m_value(other.Release()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        Reset(other.Release());
        return *this;
    }
    ~UniqueResource() { Reset(); }

    explicit operator bool() const noexcept { return m_value != Traits::Invalid(); }
    [[nodiscard]] Value Get() const noexcept { return m_value; }

    // Gives up ownership; the caller releases the resource.
    Value Release() noexcept { return std::exchange(m_value, Traits::Invalid()); }

    void Reset(Value value = Traits::Invalid()) noexcept
    {
        const Value old = std::exchange(m_value, value);
        if (old != Traits::Invalid()) {
            const LastErrorGuard keepLastError;
            Traits::Close(old);
        }
    }

private:
    Value m_value = Traits::Invalid();
};

struct FileHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value file) noexcept { ::CloseHandle(file); }
};
using UniqueFileHandle = UniqueResource<FileHandleTraits>;

struct TokenTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return nullptr; }
    static void Close(Value token) noexcept { ::CloseHandle(token); }
};
using UniqueToken = UniqueResource<TokenTraits>;

// A search opened by FindFirstFileW.
struct FindHandleTraits {
    using Value = HANDLE;
    static Value Invalid() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Value search) noexcept { ::FindClose(search); }
};
using UniqueFindHandle = UniqueResource<FindHandleTraits>;

// A search opened by the runtime library's _wfindfirst64i32.
struct CrtSearchTraits {
    using Value = std::intptr_t;
    static Value Invalid() noexcept { return -1; }
    static void Close(Value search) noexcept { ::_findclose(search); }
};
using UniqueCrtSearch = UniqueResource<CrtSearchTraits>;

// A file descriptor of the runtime library.
struct FileDescriptorTraits {
    using Value = int;
    static Value Invalid() noexcept { return -1; }
    static void Close(Value file) noexcept { ::_close(file); }
};
using UniqueFileDescriptor = UniqueResource<FileDescriptorTraits>;

// Memory that Windows allocates for its caller. LocalFree is not called for null.
struct LocalMemoryDeleter {
    void operator()(void* memory) const noexcept
    {
        const LastErrorGuard keepLastError;
        ::LocalFree(memory);
    }
};
template <typename T>
using UniqueLocalMemory = std::unique_ptr<T, LocalMemoryDeleter>;

// Memory of the runtime's malloc family.
struct CrtMemoryDeleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
using UniqueCrtMemory = std::unique_ptr<void, CrtMemoryDeleter>;
