# What `cmake --install` copies. Its components are the zip of a release; `symbols` is a zip of its own.

include(CMakePackageConfigHelpers)
include(RuntimeNotices)

set(package_directory ${CMAKE_INSTALL_LIBDIR}/cmake/Kestrovane)

# Programs
install(TARGETS kestrovane
    EXPORT KestrovaneTargets
    RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime
    ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR} COMPONENT development)
install(PROGRAMS ${KESTROVANE_RUNTIME_DLLS} DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT runtime)
if(KESTROVANE_AGENT)
    install(TARGETS kestrovane-agent RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} COMPONENT agent)
endif()

# What a host is built with
install(FILES exports/Kestrovane.h exports/KestrovaneBstr.h
    DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}
    COMPONENT development)
install(EXPORT KestrovaneTargets
    NAMESPACE Kestrovane::
    DESTINATION ${package_directory}
    COMPONENT development)

list(TRANSFORM KESTROVANE_RUNTIME_DLLS REPLACE ".*/" "" OUTPUT_VARIABLE runtime_names)
configure_package_config_file(cmake/KestrovaneConfig.cmake.in KestrovaneConfig.cmake
    INSTALL_DESTINATION ${package_directory}
    PATH_VARS CMAKE_INSTALL_BINDIR
    NO_SET_AND_CHECK_MACRO NO_CHECK_REQUIRED_COMPONENTS_MACRO)
write_basic_package_version_file(KestrovaneConfigVersion.cmake COMPATIBILITY SameMajorVersion)
install(FILES ${PROJECT_BINARY_DIR}/KestrovaneConfig.cmake ${PROJECT_BINARY_DIR}/KestrovaneConfigVersion.cmake
    DESTINATION ${package_directory}
    COMPONENT development)

# The prefix is found from the place of the file.
set(pkgconfig_directory ${CMAKE_INSTALL_LIBDIR}/pkgconfig)
file(RELATIVE_PATH path_to_prefix /${pkgconfig_directory} /)
configure_file(cmake/kestrovane.pc.in kestrovane.pc @ONLY)
install(FILES ${PROJECT_BINARY_DIR}/kestrovane.pc DESTINATION ${pkgconfig_directory} COMPONENT development)

# Documentation
set(KESTROVANE_REFERENCE_DIRECTORY ${PROJECT_BINARY_DIR}/docs/html CACHE PATH "The HTML reference, installed if it was built")
set(documents ${CMAKE_INSTALL_DATAROOTDIR}/doc/kestrovane)
file(READ README.md readme)
string(REPLACE "](exports/" "](../../../${CMAKE_INSTALL_INCLUDEDIR}/" readme "${readme}")
string(REPLACE "](build/docs/html/" "](reference/" readme "${readme}")
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/documents/README.md CONTENT "${readme}")
set_property(DIRECTORY APPEND PROPERTY CMAKE_CONFIGURE_DEPENDS README.md)
file(GLOB other_documents CONFIGURE_DEPENDS *.md)
list(REMOVE_ITEM other_documents ${PROJECT_SOURCE_DIR}/README.md)
install(FILES ${PROJECT_BINARY_DIR}/documents/README.md ${other_documents}
    DESTINATION ${documents}
    COMPONENT documentation)
install(DIRECTORY docs DESTINATION ${documents} COMPONENT documentation
    FILES_MATCHING PATTERN "*.md" PATTERN "*.svg" PATTERN "*.png" PATTERN reference EXCLUDE)
install(DIRECTORY examples DESTINATION ${documents} COMPONENT documentation)
install(DIRECTORY ${KESTROVANE_REFERENCE_DIRECTORY}/ DESTINATION ${documents}/reference COMPONENT documentation OPTIONAL)
install(FILES ${KESTROVANE_RUNTIME_NOTICES} DESTINATION ${documents}/notices COMPONENT documentation)

# Symbols
if(MINGW)
    install(FILES $<TARGET_FILE:kestrovane>.debug DESTINATION . COMPONENT symbols EXCLUDE_FROM_ALL)
    if(KESTROVANE_AGENT)
        install(FILES $<TARGET_FILE:kestrovane-agent>.debug DESTINATION . COMPONENT symbols EXCLUDE_FROM_ALL)
    endif()
endif()
