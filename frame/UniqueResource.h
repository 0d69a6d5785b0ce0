// Owning what Windows and the runtime library hand out.

#pragma once

#include <windows.h>

#include <io.h>

#include <cstdlib>
#include <memory>
#include <utility>

// Puts the thread's last error back when it goes.
class LastErrorKeeper {
public:
    LastErrorKeeper() noexcept : m_error(::GetLastError()) {}
    ~LastErrorKeeper() { ::SetLastError(m_error); }
    LastErrorKeeper(const LastErrorKeeper&) = delete;
    LastErrorKeeper& operator=(const LastErrorKeeper&) = delete;

private:
    DWORD m_error;
};

// Owns one resource. The traits say what "nothing" is and how to give it back; giving back keeps the thread's last
// error, because a failure is often reported after the clean-up.
template <typename Traits>
class UniqueResource {
public:
    using Value = typename Traits::Value;

    UniqueResource() noexcept = default;
    explicit UniqueResource(Value value) noexcept : m_value(value) {}
    UniqueResource(UniqueResource&& other) noexcept : m_value(other.Detach()) {}
    UniqueResource& operator=(UniqueResource&& other) noexcept
    {
        Reset(other.Detach());
        return *this;
    }
    ~UniqueResource() { Reset(); }

    explicit operator bool() const noexcept { return m_value != Traits::None(); }
    Value Get() const noexcept { return m_value; }
    Value Detach() noexcept { return std::exchange(m_value, Traits::None()); }

    void Reset(Value value = Traits::None()) noexcept
    {
        const Value old = std::exchange(m_value, value);
        if (old != Traits::None()) {
            const LastErrorKeeper keeper;
            Traits::Free(old);
        }
    }

private:
    Value m_value = Traits::None();
};

struct FileHandleTraits {
    using Value = HANDLE;
    static Value None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Free(Value file) noexcept { ::CloseHandle(file); }
};
using UniqueFileHandle = UniqueResource<FileHandleTraits>;

// A search of Windows (FindFirstFileW).
struct FindHandleTraits {
    using Value = HANDLE;
    static Value None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Free(Value search) noexcept { ::FindClose(search); }
};
using UniqueFindHandle = UniqueResource<FindHandleTraits>;

// A search of the runtime library (_wfindfirst64i32).
struct RuntimeSearchTraits {
    using Value = std::intptr_t;
    static Value None() noexcept { return -1; }
    static void Free(Value search) noexcept { ::_findclose(search); }
};
using UniqueRuntimeSearch = UniqueResource<RuntimeSearchTraits>;

// A file descriptor of the runtime library.
struct FileDescriptorTraits {
    using Value = int;
    static Value None() noexcept { return -1; }
    static void Free(Value file) noexcept { ::_close(file); }
};
using UniqueFileDescriptor = UniqueResource<FileDescriptorTraits>;

struct RuntimeMemoryDeleter {
    void operator()(void* memory) const noexcept { std::free(memory); }
};
// Memory of the runtime's malloc family; null when it is short, never an exception.
using UniqueRuntimeMemory = std::unique_ptr<void, RuntimeMemoryDeleter>;
