# Cross build for 64-bit Windows with clang, against the headers and libraries of MinGW-w64's GCC (posix threads).
include(${CMAKE_CURRENT_LIST_DIR}/mingw-w64.cmake)

execute_process(
    COMMAND ${CMAKE_CXX_COMPILER} -print-libgcc-file-name
    OUTPUT_VARIABLE libgcc
    OUTPUT_STRIP_TRAILING_WHITESPACE)
cmake_path(GET libgcc PARENT_PATH gcc)

set(CMAKE_C_COMPILER clang)
set(CMAKE_CXX_COMPILER clang++)
set(CMAKE_C_COMPILER_TARGET x86_64-w64-mingw32)
set(CMAKE_CXX_COMPILER_TARGET x86_64-w64-mingw32)
# clang takes the first GCC that it finds, which has another thread model. As GCC does, thread-local storage is emulated and
# memory is freed with its size. Not all of GCC's warnings are known.
string(CONCAT CMAKE_CXX_FLAGS_INIT
    "-nostdinc++ -isystem ${gcc}/include/c++ -isystem ${gcc}/include/c++/x86_64-w64-mingw32 "
    "-femulated-tls -fsized-deallocation "
    "-Wno-unknown-warning-option -Wno-unused-command-line-argument")
foreach(kind EXE SHARED MODULE)
    set(CMAKE_${kind}_LINKER_FLAGS_INIT "-B${gcc} -L${gcc}")
endforeach()
# GCC's driver adds the thread library by itself.
set(CMAKE_CXX_STANDARD_LIBRARIES
    "-lpthread -lkernel32 -luser32 -lgdi32 -lwinspool -lshell32 -lole32 -loleaut32 -luuid -lcomdlg32 -ladvapi32")
