# The licences of the toolchain's runtime DLLs, which are distributed with them: KESTROVANE_RUNTIME_NOTICES.

set(KESTROVANE_RUNTIME_NOTICES)

# kestrovane_runtime_notice(NAME FILE...): copies the first file that exists to notices/NAME.
function(kestrovane_runtime_notice name)
    foreach(file IN LISTS ARGN)
        if(EXISTS ${file})
            configure_file(${file} notices/${name} COPYONLY)
            set(KESTROVANE_RUNTIME_NOTICES ${KESTROVANE_RUNTIME_NOTICES} ${PROJECT_BINARY_DIR}/notices/${name} PARENT_SCOPE)
            return()
        endif()
    endforeach()
    message(WARNING "No ${name} was found: without it, do not distribute an installation that holds the runtime DLLs")
endfunction()

if(MINGW)
    cmake_path(GET CMAKE_CXX_COMPILER PARENT_PATH tools)
    cmake_path(GET tools PARENT_PATH toolchain)
    set(msys2 ${toolchain}/share/licenses)
    set(debian /usr/share/doc)
    kestrovane_runtime_notice(gcc.txt ${debian}/gcc-mingw-w64-base/copyright ${msys2}/gcc-libs/RUNTIME.LIBRARY.EXCEPTION)
    kestrovane_runtime_notice(mingw-w64.txt ${debian}/mingw-w64-x86-64-dev/copyright ${msys2}/winpthreads/COPYING)
    kestrovane_runtime_notice(GPL-3.txt /usr/share/common-licenses/GPL-3 ${msys2}/gcc-libs/COPYING3)
endif()
