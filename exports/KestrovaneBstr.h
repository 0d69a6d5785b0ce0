/// @file
/// BSTR strings of the Kestrovane interface: CComBSTR and the exception CAtlException.
///
/// If the toolchain has ATL, its own classes are used. Otherwise this header defines small classes of the same names
/// that behave as ATL users expect, as far as this library and its hosts need them.
#pragma once

#if !defined(NOMINMAX)
#define NOMINMAX // std::min and std::max stay usable after <windows.h>
#endif

#if __has_include(<atlbase.h>)

#include <atlbase.h>

#else

#include <windows.h>

#include <oleauto.h>

#include <algorithm>
#include <memory>
#include <utility>

/// A failure of a BSTR string. Hosts catch it by type, which requires that DLL and host share the C++ runtime.
class CAtlException {
public:
    /// A failure with E_FAIL.
    CAtlException() noexcept = default;

    /// A failure.
    /// @param hr  Its result code.
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}

    /// @return The result code of the failure.
    operator HRESULT() const noexcept { return m_hr; } // NOLINT(google-explicit-constructor): as ATL has it

    HRESULT m_hr = E_FAIL; ///< E_OUTOFMEMORY (0x8007000E), or the result of a failed append
};

/// Owns one BSTR (a length-prefixed COM string). A null string is an empty one.
///
/// Constructors and assignments throw CAtlException(E_OUTOFMEMORY) if no string can be allocated; the target of an
/// assignment is then unchanged. Not for use by two threads at once.
class CComBSTR {
public:
    /// A null string.
    CComBSTR() noexcept = default;

    /// Copies a NUL-terminated string.
    /// @param string  Null results in a null string.
    CComBSTR(const OLECHAR* string) : m_str(Allocated(string)) {} // NOLINT(google-explicit-constructor)

    /// Allocates characters that are all NUL.
    /// @param length  In characters; 0 results in a null string, a negative length throws E_INVALIDARG.
    explicit CComBSTR(int length) : m_str(Allocated(length, nullptr)) {}

    /// Copies characters, embedded NULs included.
    /// @param length      In characters; 0 results in a null string, a negative length throws E_INVALIDARG.
    /// @param characters  The characters; null stands for NULs.
    CComBSTR(int length, const OLECHAR* characters) : m_str(Allocated(length, characters)) {}

    /// Copies a string, embedded NULs included.
    /// @param other  The string to copy.
    CComBSTR(const CComBSTR& other) : m_str(other.CopyOrThrow()) {}

    /// Takes over a string.
    /// @param other  Its former owner, which is then null.
    CComBSTR(CComBSTR&& other) noexcept : m_str(other.Detach()) {}

    /// Frees the string.
    ~CComBSTR() { ::SysFreeString(m_str); }

    /// Replaces the string by a copy, embedded NULs included.
    /// @param other  The string to copy.
    /// @return This object.
    CComBSTR& operator=(const CComBSTR& other)
    {
        if (this != std::addressof(other)) {
            Attach(other.CopyOrThrow());
        }
        return *this;
    }

    /// Takes over a string.
    /// @param other  Its former owner, which is then null.
    /// @return This object.
    CComBSTR& operator=(CComBSTR&& other) noexcept
    {
        Attach(other.Detach());
        return *this;
    }

    /// Replaces the string by a copy of a NUL-terminated one.
    /// @param string  Null results in a null string.
    /// @return This object.
    CComBSTR& operator=(const OLECHAR* string)
    {
        if (string != m_str) {
            Attach(Allocated(string));
        }
        return *this;
    }

    /// @return The string, still owned by this object.
    operator BSTR() const noexcept { return m_str; } // NOLINT(google-explicit-constructor): as ATL has it

    /// For functions that return a string through a pointer. Empty the string first: it is not freed.
    /// @return Where the string is stored.
    BSTR* operator&() noexcept { return &m_str; } // NOLINT(google-runtime-operator): as ATL has it

    /// @return Whether this is a null string.
    bool operator!() const noexcept { return m_str == nullptr; }

    /// @return The length in characters, without the terminator; 0 for a null string.
    [[nodiscard]] unsigned int Length() const noexcept { return ::SysStringLen(m_str); }

    /// Appends characters, embedded NULs included. On failure, the string is unchanged.
    /// @param characters  The characters.
    /// @param length      Their number.
    /// @return S_OK, E_INVALIDARG for a null pointer or a negative length, or E_OUTOFMEMORY.
    HRESULT Append(const OLECHAR* characters, int length) noexcept
    {
        if (characters == nullptr || length <= 0) {
            return length == 0 ? S_OK : E_INVALIDARG;
        }
        const unsigned int old = Length();
        const auto added = static_cast<unsigned int>(length);
        if (added > kMaxLength - old) {
            return E_OUTOFMEMORY;
        }
        OLECHAR* const joined = ::SysAllocStringLen(nullptr, old + added);
        if (joined == nullptr) {
            return E_OUTOFMEMORY;
        }
        std::copy_n(m_str, old, joined);
        std::copy_n(characters, added, joined + old);
        Attach(joined);
        return S_OK;
    }

    /// Appends a NUL-terminated string. On failure, the string is unchanged.
    /// @param string  Null appends nothing.
    /// @return S_OK or E_OUTOFMEMORY.
    HRESULT Append(const OLECHAR* string) noexcept
    {
        return Append(string, ::lstrlenW(string)); // a null string has no length
    }

    /// Appends a string, embedded NULs included. On failure, the string is unchanged.
    /// @param other  The string to append.
    /// @return S_OK or E_OUTOFMEMORY.
    HRESULT Append(const CComBSTR& other) noexcept { return Append(other.m_str, static_cast<int>(other.Length())); }

    /// @return A copy that the caller frees with SysFreeString; null if this string is null or memory runs out.
    [[nodiscard]] BSTR Copy() const noexcept
    {
        return m_str == nullptr ? nullptr : ::SysAllocStringLen(m_str, Length());
    }

    /// Takes ownership of a string and frees the former one.
    /// @param string  The string to own.
    void Attach(BSTR string) noexcept
    {
        if (string != m_str) {
            ::SysFreeString(std::exchange(m_str, string));
        }
    }

    /// Gives up ownership.
    /// @return The string, which the caller frees with SysFreeString.
    BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }

    /// Frees the string, which is then null.
    void Empty() noexcept { Attach(nullptr); }

    BSTR m_str = nullptr; ///< the string itself; may be null

private:
    static constexpr unsigned int kMaxLength = 0x3FFFFFFF; // characters: a BSTR counts its bytes in 31 bits

    static BSTR Checked(BSTR string, bool required)
    {
        if (required && string == nullptr) {
            throw CAtlException(E_OUTOFMEMORY);
        }
        return string;
    }

    static BSTR Allocated(const OLECHAR* string) { return Checked(::SysAllocString(string), string != nullptr); }

    static BSTR Allocated(int length, const OLECHAR* characters)
    {
        if (length < 0) {
            throw CAtlException(E_INVALIDARG);
        }
        if (length == 0) {
            return nullptr;
        }
        OLECHAR* const allocated = Checked(::SysAllocStringLen(characters, static_cast<unsigned int>(length)), true);
        if (characters == nullptr) { // Windows does not initialise the characters
            std::fill_n(allocated, length, L'\0');
        }
        return allocated;
    }

    [[nodiscard]] BSTR CopyOrThrow() const { return Checked(Copy(), m_str != nullptr); }
};

#endif
