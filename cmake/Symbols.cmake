# Symbols of released programs: in a file beside the program, which names that file. Within the program they would be mapped
# at each load.

# Moves the symbols of a program or DLL into <its name>.debug. objcopy stores a time in both: always the same one.
function(kestrovane_split_symbols target)
    set(name $<TARGET_FILE_NAME:${target}>)
    set(objcopy ${CMAKE_COMMAND} -E env SOURCE_DATE_EPOCH=0 ${CMAKE_OBJCOPY})
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${objcopy} --only-keep-debug ${name} ${name}.debug
        COMMAND ${objcopy} --strip-all --add-gnu-debuglink=${name}.debug ${name}
        WORKING_DIRECTORY $<TARGET_FILE_DIR:${target}>
        VERBATIM)
endfunction()
