# Files among the compiler's own libraries.

# Sets RESULT to the path of a file, or to its bare name where the compiler has no such file.
function(kestrovane_compiler_file name result)
    separate_arguments(search UNIX_COMMAND "${CMAKE_SHARED_LINKER_FLAGS}")
    if(CMAKE_CXX_COMPILER_TARGET)
        list(APPEND search --target=${CMAKE_CXX_COMPILER_TARGET})
    endif()
    execute_process(
        COMMAND ${CMAKE_CXX_COMPILER} ${search} -print-file-name=${name}
        OUTPUT_VARIABLE path
        OUTPUT_STRIP_TRAILING_WHITESPACE)
    set(${result} ${path} PARENT_SCOPE)
endfunction()
