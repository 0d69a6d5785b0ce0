// Owners of what Windows hands out, for tests; independent of the library under test.

#pragma once

#include <windows.h>

#include <memory>
#include <type_traits>

struct HandleCloser {
    using pointer = HANDLE;
    void operator()(HANDLE handle) const
    {
        if (handle != INVALID_HANDLE_VALUE) {
            ::CloseHandle(handle);
        }
    }
};
using UniqueHandle = std::unique_ptr<void, HandleCloser>; // of a file, an event, a process, a thread

struct SearchCloser {
    using pointer = HANDLE;
    void operator()(HANDLE search) const
    {
        if (search != INVALID_HANDLE_VALUE) {
            ::FindClose(search);
        }
    }
};
using UniqueSearch = std::unique_ptr<void, SearchCloser>;

struct KeyCloser {
    void operator()(HKEY key) const { ::RegCloseKey(key); }
};
using UniqueKey = std::unique_ptr<std::remove_pointer_t<HKEY>, KeyCloser>;

struct LocalMemoryFreer {
    void operator()(void* memory) const { ::LocalFree(memory); }
};
template <typename Value>
using UniqueLocalMemory = std::unique_ptr<Value, LocalMemoryFreer>;
