# Header-only libraries of tests and agent, from the system's packages.
#
# Their folders lie among the build machine's own headers, which a cross compiler must not see, so each gets a link in a
# folder of its own.

function(kestrovane_header_only_library target folder)
    find_path(${target}_parent NAMES ${folder} PATHS /usr/include NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
    if(NOT ${target}_parent)
        message(FATAL_ERROR "No headers of ${folder}: ./run setup installs them")
    endif()
    set(private ${PROJECT_BINARY_DIR}/include)
    file(MAKE_DIRECTORY ${private})
    file(CREATE_LINK ${${target}_parent}/${folder} ${private}/${folder} SYMBOLIC)
    add_library(${target} INTERFACE)
    target_include_directories(${target} SYSTEM INTERFACE ${private})
endfunction()

kestrovane_header_only_library(cli11 CLI)
kestrovane_header_only_library(nlohmann_json nlohmann)
