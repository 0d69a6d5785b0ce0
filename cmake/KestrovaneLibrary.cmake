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
kestrovane_count_lines(kestrovane_objects)

configure_file(module/Kestrovane.rc.in Kestrovane.rc @ONLY)

add_library(kestrovane SHARED ${PROJECT_BINARY_DIR}/Kestrovane.rc)
add_library(Kestrovane::Kestrovane ALIAS kestrovane)
set_target_properties(kestrovane PROPERTIES OUTPUT_NAME Kestrovane PREFIX "" EXPORT_NAME Kestrovane)
target_link_libraries(kestrovane PRIVATE kestrovane_objects kestrovane_strictness)
target_include_directories(kestrovane INTERFACE
    $<BUILD_INTERFACE:${PROJECT_SOURCE_DIR}/exports>
    $<INSTALL_INTERFACE:${CMAKE_INSTALL_INCLUDEDIR}>)
target_compile_features(kestrovane INTERFACE cxx_std_17) # what the public headers need

if(MINGW)
    # Sections that begin at a page of the file are mapped at a load; others would have to be read.
    target_link_options(kestrovane PRIVATE LINKER:--file-alignment,4096)
    kestrovane_join_import_library(kestrovane liboleaut32.a)
    target_compile_options(kestrovane_objects PRIVATE $<$<CONFIG:Release>:-g>)
    kestrovane_split_symbols(kestrovane)
endif()
