// The library as LoadLibrary brings it up: freshly built state, no function of a host registered.

#pragma once

#include <Kestrovane.h>

#include <gtest/gtest.h>

#include <windows.h>

#include <string>
#include <type_traits>
#include <utility>
#include <vector>

// An exported function by its decorated name; null when there is none.
template <typename Function>
Function* Exported(HMODULE module, const char* decoratedName)
{
    return reinterpret_cast<Function*>(reinterpret_cast<void*>(::GetProcAddress(module, decoratedName)));
}

// For programs that do not link the library; unloaded at the end of the scope. The members are the exported functions.
class LoadedLibrary {
public:
    LoadedLibrary() : m_module(::LoadLibraryW(kName)) { EXPECT_NE(nullptr, m_module) << "error " << ::GetLastError(); }
    ~LoadedLibrary()
    {
        EXPECT_TRUE(::FreeLibrary(m_module));
        EXPECT_EQ(nullptr, ::GetModuleHandleW(kName)) << "something else keeps the library";
    }
    LoadedLibrary(const LoadedLibrary&) = delete;
    LoadedLibrary& operator=(const LoadedLibrary&) = delete;

    [[nodiscard]] HMODULE Module() const { return m_module; }

    // Called for their effect, too.
    // NOLINTBEGIN(modernize-use-nodiscard)
    void SetVssFileManagerLogger(VssFileManagerLogFn logger, VssFileManagerKeepAliveFn keepAlive,
                                 VssFileManagerLogFn auxLogger) const
    {
        Call<decltype(::SetVssFileManagerLogger)>("_Z23SetVssFileManagerLoggerPFiiPKczEPFiizES2_", logger, keepAlive,
                                                  auxLogger);
    }
    void SendKA() const { Call<decltype(::SendKA)>("_Z6SendKAPKc", nullptr); }
    bool isDirectoryExists(const std::wstring& path) const
    {
        return Call<decltype(::isDirectoryExists)>(
            "_Z17isDirectoryExistsRKNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE", path);
    }
    std::vector<std::wstring> ListFilesFilter(const std::wstring& directory, const std::wstring& filter,
                                              bool fullPath) const
    {
        return Call<decltype(::ListFilesFilter)>(
            "_Z15ListFilesFilterRKNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEES6_b", directory, filter,
            fullPath);
    }
    bool MapRestorePath(std::wstring& path, std::wstring& spec, std::vector<VSS_ALTERNATE_MAPPING>& mappings) const
    {
        return Call<decltype(::MapRestorePath)>(
            "_Z14MapRestorePathRNSt7__cxx1112basic_stringIwSt11char_traitsIwESaIwEEE"
            "S5_RSt6vectorI21VSS_ALTERNATE_MAPPINGSaIS7_EE",
            path, spec, mappings);
    }
    // NOLINTEND(modernize-use-nodiscard)

private:
    static constexpr const wchar_t* kName = L"Kestrovane.dll";

    template <typename Function, typename... Arguments>
    auto Call(const char* decoratedName, Arguments&&... arguments) const
        -> std::invoke_result_t<Function*, Arguments...>
    {
        auto* const function = Exported<Function>(m_module, decoratedName);
        if (function == nullptr) {
            ADD_FAILURE() << "the library does not export " << decoratedName;
            return std::invoke_result_t<Function*, Arguments...>();
        }
        return function(std::forward<Arguments>(arguments)...);
    }

    HMODULE m_module;
};
