/// BSTR strings of the Kestrovane interface: CComBSTR and the exception CAtlException.
///
/// Where the toolchain has ATL, its own classes are used. Elsewhere this header gives small classes of the
/// same names that behave as ATL users expect, as far as this library and its hosts need them.
#pragma once

#if __has_include(<atlbase.h>)

#include <atlbase.h>

#else

#include <windows.h>

#include <oleauto.h>

#include <memory>
#include <utility>

/// A failure of a BSTR string. Hosts catch it by type; the DLL and its host share the C++ runtime for that.
class CAtlException {
public:
    CAtlException() noexcept = default;
    explicit CAtlException(HRESULT hr) noexcept : m_hr(hr) {}

    operator HRESULT() const noexcept { return m_hr; } // NOLINT(google-explicit-constructor): as ATL has it

    HRESULT m_hr = E_FAIL; ///< what went wrong: E_OUTOFMEMORY (0x8007000E) or the result of a failed append
};

/// Owns one BSTR (a length-prefixed COM string). A null string is an empty one.
///
/// Constructors and assignments throw CAtlException(E_OUTOFMEMORY) when no string can be allocated and
/// leave an assigned-to object as it was. Not for use by two threads at once.
class CComBSTR {
public:
    CComBSTR() noexcept = default;

    /// A copy of zero-terminated text; null gives a null string.
    CComBSTR(const OLECHAR* text) : m_str(Allocated(text)) {} // NOLINT(google-explicit-constructor)

    /// Room for `length` characters, all zero; 0 gives a null string, a negative length throws E_INVALIDARG.
    explicit CComBSTR(int length) : m_str(Allocated(length, nullptr)) {}

    /// The first `length` characters of `text`, terminators included; 0 gives a null string.
    CComBSTR(int length, const OLECHAR* text) : m_str(Allocated(length, text)) {}

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

    CComBSTR& operator=(const OLECHAR* text)
    {
        if (text != m_str || text == nullptr) {
            Attach(Allocated(text));
        }
        return *this;
    }

    operator BSTR() const noexcept { return m_str; } // NOLINT(google-explicit-constructor): as ATL has it
    BSTR* operator&() noexcept { return &m_str; }    // NOLINT(google-runtime-operator): as ATL has it
    bool operator!() const noexcept { return m_str == nullptr; }

    /// Length in characters, without the terminator; 0 for a null string.
    unsigned int Length() const noexcept { return ::SysStringLen(m_str); }

    /// Appends `length` characters of `text`. On failure the string stays as it was.
    /// @return S_OK, E_INVALIDARG for a null text or a negative length, E_OUTOFMEMORY.
    HRESULT Append(const OLECHAR* text, int length) noexcept
    {
        if (length == 0) {
            return S_OK;
        }
        if (text == nullptr || length < 0) {
            return E_INVALIDARG;
        }
        const unsigned int old = Length();
        const auto added = static_cast<unsigned int>(length);
        if (added > kLongest - old) {
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
            joined[old + i] = text[i];
        }
        Attach(joined);
        return S_OK;
    }

    HRESULT Append(const OLECHAR* text) noexcept { return text == nullptr ? S_OK : Append(text, ::lstrlenW(text)); }

    HRESULT Append(const CComBSTR& other) noexcept { return Append(other.m_str, static_cast<int>(other.Length())); }

    /// A new string with the same text, which the caller frees with SysFreeString; null when this one is null
    /// or memory is short.
    BSTR Copy() const noexcept { return m_str == nullptr ? nullptr : ::SysAllocStringLen(m_str, Length()); }

    /// Takes over `text` and frees the old string.
    void Attach(BSTR text) noexcept
    {
        if (text != m_str) {
            ::SysFreeString(std::exchange(m_str, text));
        }
    }

    /// Gives the string away; the caller frees it with SysFreeString.
    BSTR Detach() noexcept { return std::exchange(m_str, nullptr); }

    /// Frees the string; it is null afterwards.
    void Empty() noexcept { Attach(nullptr); }

    BSTR m_str = nullptr; ///< the string itself, null when empty

private:
    static constexpr unsigned int kLongest = 0x3FFFFFFF; // characters: a BSTR counts its bytes in 31 bits

    static BSTR Checked(BSTR text, bool wanted)
    {
        if (wanted && text == nullptr) {
            throw CAtlException(E_OUTOFMEMORY);
        }
        return text;
    }

    static BSTR Allocated(const OLECHAR* text) { return Checked(::SysAllocString(text), text != nullptr); }

    static BSTR Allocated(int length, const OLECHAR* text)
    {
        if (length < 0) {
            throw CAtlException(E_INVALIDARG);
        }
        if (length == 0) {
            return nullptr;
        }
        OLECHAR* const room = Checked(::SysAllocStringLen(text, static_cast<unsigned int>(length)), true);
        if (text == nullptr) { // Windows leaves the characters as they were
            for (int i = 0; i < length; ++i) {
                room[i] = L'\0';
            }
        }
        return room;
    }

    BSTR CopyOrThrow() const { return Checked(Copy(), m_str != nullptr); }
};

#endif
