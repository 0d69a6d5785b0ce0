# The DLLs of the toolchain's C++ runtime, which every program of this project needs beside it.

function(kestrovane_copy_runtime_dlls directory)
    foreach(name libstdc++-6.dll libgcc_s_seh-1.dll libwinpthread-1.dll libssp-0.dll)
        execute_process(
            COMMAND ${CMAKE_CXX_COMPILER} -print-file-name=${name}
            OUTPUT_VARIABLE dll
            OUTPUT_STRIP_TRAILING_WHITESPACE)
        # The compiler answers with the bare name where it has no such file in its own folders.
        if(NOT IS_ABSOLUTE "${dll}")
            cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH tools)
            find_file(dll_${name} ${name} HINTS ${tools} PATH_SUFFIXES lib bin NO_CACHE)
            set(dll "${dll_${name}}")
        endif()
        if(NOT EXISTS "${dll}")
            message(FATAL_ERROR "The toolchain has no ${name}")
        endif()
        file(COPY ${dll} DESTINATION ${directory})
    endforeach()
endfunction()
