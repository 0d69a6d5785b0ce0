# The import library that a host links.

# Adds the members of a library of the toolchain to the import library of a target: a host then links one library,
# although the inline code of the header calls functions of another DLL. The joined archive holds no dates.
function(kestrovane_join_import_library target library)
    kestrovane_compiler_file(${library} added)
    set(script ${PROJECT_BINARY_DIR}/import-library.mri)
    set(name $<TARGET_LINKER_FILE_NAME:${target}>)
    file(GENERATE OUTPUT ${script} CONTENT "create ${name}.joined\naddlib ${name}\naddlib ${added}\nsave\nend\n")
    add_custom_command(TARGET ${target} POST_BUILD
        COMMAND ${CMAKE_AR} -M < ${script}
        COMMAND ${CMAKE_OBJCOPY} --enable-deterministic-archives ${name}.joined ${name}
        COMMAND ${CMAKE_COMMAND} -E rm ${name}.joined
        WORKING_DIRECTORY $<TARGET_LINKER_FILE_DIR:${target}>
        VERBATIM)
endfunction()
