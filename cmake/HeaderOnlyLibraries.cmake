# Header-only libraries of tests and agent: the targets cli11 and nlohmann_json.
#
# On Debian their folders lie among the build machine's own headers, which a cross compiler must not see, so each gets a link
# in a folder of its own. Elsewhere they are CMake packages, for example those of vcpkg.json.

function(kestrovane_header_only_library target folder package packaged_target)
    find_path(${target}_parent NAMES ${folder} PATHS /usr/include NO_DEFAULT_PATH NO_CMAKE_FIND_ROOT_PATH NO_CACHE)
    add_library(${target} INTERFACE)
    if(${target}_parent)
        set(private ${PROJECT_BINARY_DIR}/include)
        file(MAKE_DIRECTORY ${private})
        file(CREATE_LINK ${${target}_parent}/${folder} ${private}/${folder} SYMBOLIC)
        target_include_directories(${target} SYSTEM INTERFACE ${private})
    else()
        find_package(${package} CONFIG REQUIRED)
        target_link_libraries(${target} INTERFACE ${packaged_target})
    endif()
endfunction()

kestrovane_header_only_library(cli11 CLI CLI11 CLI11::CLI11)
kestrovane_header_only_library(nlohmann_json nlohmann nlohmann_json nlohmann_json::nlohmann_json)
