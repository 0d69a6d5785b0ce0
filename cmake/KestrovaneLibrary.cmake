# The library: its objects, the DLL that hosts load, and the import library that they link.

# The objects on their own are what white-box tests link.
add_library(kestrovane_objects OBJECT
    cache/CacheFile.cpp
    cache/CacheFileLists.cpp
    fileops/DirectoryChecks.cpp
    fileops/DirectoryCreation.cpp
    fileops/DirectoryScan.cpp
    fileops/DirectoryWalk.cpp
    fileops/FileChecks.cpp
    fileops/FileCopy.cpp
    fileops/FileDeletion.cpp
    fileops/Listings.cpp
    fileops/TreeDeletion.cpp
    frame/FailureReport.cpp
    frame/FileManager.cpp
    frame/LogSinks.cpp
    frame/ModuleState.cpp
    module/Module.cpp
    paths/CurrentDirectory.cpp
    paths/EnvironmentExpansion.cpp
    paths/PathComponents.cpp
    paths/PathDecomposition.cpp
    paths/PathValidation.cpp
    paths/StringHelpers.cpp
    paths/StringMaps.cpp
    restore/FileDesc.cpp
    restore/RestorePathMapping.cpp
    restore/SpecMatch.cpp
    security/FolderWalk.cpp
    security/ObjectOwner.cpp
    volumes/HardDiskManager.cpp
    volumes/SnapshotPaths.cpp
    volumes/VolumeEnumeration.cpp
    volumes/VolumeNames.cpp
    volumes/VolumeSpace.cpp
    volumes/WindowsVersion.cpp
    win32/InvalidParameter.cpp)
target_include_directories(kestrovane_objects PUBLIC exports ${PROJECT_SOURCE_DIR})
target_compile_definitions(kestrovane_objects PRIVATE KESTROVANE_BUILD INTERFACE KESTROVANE_STATIC)
target_link_libraries(kestrovane_objects PRIVATE kestrovane_strictness INTERFACE advapi32 oleaut32 shlwapi)

configure_file(module/Kestrovane.rc.in Kestrovane.rc @ONLY)

add_library(kestrovane SHARED ${PROJECT_BINARY_DIR}/Kestrovane.rc)
set_target_properties(kestrovane PROPERTIES OUTPUT_NAME Kestrovane PREFIX "")
target_link_libraries(kestrovane PRIVATE kestrovane_objects kestrovane_strictness)
target_include_directories(kestrovane INTERFACE ${PROJECT_SOURCE_DIR}/exports)

# A host links one library: the import library also carries the stubs of the BSTR functions that the header's inline
# code calls.
set(import_library ${CMAKE_ARCHIVE_OUTPUT_DIRECTORY}/libKestrovane.dll.a)
kestrovane_compiler_file(liboleaut32.a oleaut32)
file(GENERATE OUTPUT ${PROJECT_BINARY_DIR}/import-library.mri CONTENT
"create ${import_library}.joined
addlib ${import_library}
addlib ${oleaut32}
save
end
")
add_custom_command(TARGET kestrovane POST_BUILD
    COMMAND ${CMAKE_AR} -M < ${PROJECT_BINARY_DIR}/import-library.mri
    COMMAND ${CMAKE_COMMAND} -E rename ${import_library}.joined ${import_library}
    VERBATIM)

# The released file holds no symbols: they would be mapped at each load. They lie beside it, and the DLL names that file.
find_program(KESTROVANE_OBJCOPY NAMES x86_64-w64-mingw32-objcopy objcopy REQUIRED)
target_compile_options(kestrovane_objects PRIVATE $<$<CONFIG:Release>:-g>)
add_custom_command(TARGET kestrovane POST_BUILD
    COMMAND ${KESTROVANE_OBJCOPY} --only-keep-debug Kestrovane.dll Kestrovane.dll.debug
    COMMAND ${KESTROVANE_OBJCOPY} --strip-all --add-gnu-debuglink=Kestrovane.dll.debug Kestrovane.dll
    WORKING_DIRECTORY $<TARGET_FILE_DIR:kestrovane>
    VERBATIM)
