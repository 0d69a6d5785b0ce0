/// @file
/// BSTR strings of the Kestrovane interface: CComBSTR and the exception CAtlException.
///
/// If the toolchain has ATL, its own classes are used. Otherwise this header defines small classes of the same names
/// that behave as ATL users expect, as far as this library and its hosts need them.
#pragma once

#if __has_include(<atlbase.h>)

#include <atlbase.h>

#else

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <utility>

/// A failure of a BSTR string. Hosts catch it by type, which requires that DLL and host share the C++ runtime.
class CAtlException {
public:
    CAtlException() noexcept = default;
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}

    operator HRESULT() const noexcept { return m_hr; } // NOLINT(google-explicit-constructor): as ATL has it

    HRESULT m_hr = E_FAIL; ///< E_OUTOFMEMORY (0x8007000E), or the result of a failed append
};

/// Owns one BSTR (a length-prefixed COM string). A null string is an empty one.
///
/// Constructors and assignments throw CAtlException(E_OUTOFMEMORY) if no string can be allocated; the target of an
/// assignment is then unchanged. Not for use by two threads at once.
class CComBSTR {
public:
    CComBSTR() noexcept = default;

    /// Copies a NUL-terminated string; null results in a null string.
    CComBSTR(const OLECHAR* string) : m_str(Allocated(string)) {} // NOLINT(google-explicit-constructor)

    /// Allocates `length` characters, all NUL; 0 results in a null string, a negative length throws E_INVALIDARG.
    explicit CComBSTR(int length) : m_str(Allocated(length, nullptr)) {}

    /// Copies `length` characters, embedded NULs included; 0 results in a null string.
    CComBSTR(int length, const OLECHAR* characters) : m_str(Allocated(length, characters)) {}

    CComBSTR(const CComBSTR& other) : m_str(other.CopyOrThrow()) {}
    CComBSTR(CComBSTR&& other) noexcept : m_str(other.Detach()) {}
    ~CComBSTR() { ::SysFreeString(m_str); }

    CComBSTR& operator=(const CComBSTR& other)
    {
        if (this != std::addressof(other)) {
            Attach(other.CopyOrThrow());
        }
        return *this;
    }

    CComBSTR& operator=(CComBSTR&& other) noexcept
    {
        if (this != std::addressof(other)) {
            Attach(other.Detach());
        }
        return *this;
    }

    CComBSTR& operator=(const OLECHAR* string)
    {
        if (string != m_str || string == nullptr) {
            Attach(Allocated(string));
        }
        return *this;
    }

    operator BSTR() const noexcept { return m_str; } // NOLINT(google-explicit-constructor): as ATL has it
    BSTR* operator&() noexcept { return &m_str; }    // NOLINT(google-runtime-operator): as ATL has it
    bool operator!() const noexcept { return m_str == nullptr; }

    /// Returns the length in characters, without the terminator; 0 for a null string.
    [[nodiscard]] unsigned int Length() const noexcept { return ::SysStringLen(m_str); }

    /// Appends `length` characters. On failure, the string is unchanged.
    /// @return S_OK, E_INVALIDARG for a null pointer or a negative length, or E_OUTOFMEMORY.
    HRESULT Append(const OLECHAR* characters, int length) noexcept
    {
        if (length == 0) {
            return S_OK;
        }
        if (characters == nullptr || length < 0) {
            return E_INVALIDARG;
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
        for (unsigned int i = 0; i < old; ++i) {
            joined[i] = m_str[i];
        }
        for (unsigned int i = 0; i < added; ++i) {
            joined[old + i] = characters[i];
        }
        Attach(joined);
        return S_OK;
    }

    HRESULT Append(const OLECHAR* string) noexcept
    {
        return string == nullptr ? S_OK : Append(string, ::lstrlenW(string));
    }

    HRESULT Append(const CComBSTR& other) noexcept { return Append(other.m_str, static_cast<int>(other.Length())); }

    /// Returns a copy that the caller frees with SysFreeString; null if this string is null or memory is short.
    [[nodiscard]] BSTR Copy() const noexcept
    {
        return m_str == nullptr ? nullptr : ::SysAllocStringLen(m_str, Length());
    }

    /// Takes ownership of `string` and frees the former one.
    void Attach(BSTR string) noexcept
    {
        if (string != m_str) {
            ::SysFreeString(std::exchange(m_str, string));
        }
    }

    /// Gives up ownership; the caller frees the string with SysFreeString.
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
            for (int i = 0; i < length; ++i) {
                allocated[i] = L'\0';
            }
        }
        return allocated;
    }

    [[nodiscard]] BSTR CopyOrThrow() const { return Checked(Copy(), m_str != nullptr); }
};

#endif
