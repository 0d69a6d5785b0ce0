# The DLLs of the toolchain's C++ runtime, which every program of this project needs beside it: KESTROVANE_RUNTIME_DLLS.
# Microsoft's runtime is installed on its own.

function(kestrovane_find_runtime_dll name result)
    kestrovane_compiler_file(${name} dll)
    # The compiler prints the bare name where it has no such file in its own folders.
    if(NOT IS_ABSOLUTE "${dll}")
        cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH tools)
        find_file(dll_${name} ${name} HINTS ${tools} PATH_SUFFIXES lib bin NO_CACHE)
        set(dll "${dll_${name}}")
    endif()
    if(NOT EXISTS "${dll}")
        message(FATAL_ERROR "The toolchain has no ${name}")
    endif()
    file(REAL_PATH ${dll} dll)
    set(${result} ${dll} PARENT_SCOPE)
endfunction()

set(KESTROVANE_RUNTIME_DLLS)
if(MINGW)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll libssp-0.dll)
        kestrovane_find_runtime_dll(${name} dll)
        list(APPEND KESTROVANE_RUNTIME_DLLS ${dll})
    endforeach()
endif()
