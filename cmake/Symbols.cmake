# Symbols of released programs: in a file beside the program, which names that file. Within the program they would be mapped
# at each load.

# Moves the symbols of a program or DLL into <its name>.debug.
function(kestrovane_split_symbols target)
    set(name $<TARGET_FILE_NAME:${target}>)
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_OBJCOPY} --only-keep-debug ${name} ${name}.debug
        COMMAND ${CMAKE_OBJCOPY} --strip-all --add-gnu-debuglink=${name}.debug ${name}
        WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
