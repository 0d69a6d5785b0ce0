// A host of another project: calls the library, and catches what the DLL throws by its type.

#include <Kestrovane.h>

#include <cstdarg>
#include <cstdio>
#include <cstring>

#if defined(KESTROVANE_BUILD) || defined(KESTROVANE_STATIC) || defined(_GLIBCXX_ASSERTIONS)
#error "a definition of the library's own build is passed on to its hosts"
#endif

namespace {

int __cdecl Log(int /*level*/, const char* format, ...)
{
    va_list arguments;
    va_start(arguments, format);
    const int printed = std::vprintf(format, arguments);
    va_end(arguments);
    return printed;
}

int __cdecl KeepAlive(int seconds, ...)
{
    return std::printf("keep-alive %d\n", seconds);
}

// A string that claims the greatest length: nothing can be appended to it, so the library throws E_OUTOFMEMORY.
struct FullString {
    unsigned int unused = 0;
    unsigned int bytes = 0x7FFFFFFE; // what a BSTR stores before its characters
    wchar_t characters[2] = {};
};

HRESULT CatchFromLibrary()
{
    FullString full;
    CComBSTR path;
    std::map<std::wstring, std::wstring> snapshots;
    HRESULT caught = S_OK;
    path.m_str = full.characters;
    try {
        BuildSnapshotFilePath(L"no volume", path, snapshots);
    } catch (const CAtlException& failure) {
        caught = failure.m_hr;
    }
    path.m_str = nullptr;
    return caught;
}

} // namespace

int main()
{
    SetVssFileManagerLogger(&Log, &KeepAlive, &Log);
    SendKA(nullptr);
    std::printf("name %ls\n", GetFileName(L"C:\\dir\\f.tar.gz").c_str());
    std::printf("caught 0x%08lX\n", static_cast<unsigned long>(CatchFromLibrary()));
    return 0;
}
