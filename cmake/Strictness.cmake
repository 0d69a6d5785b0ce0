# Warnings as errors and hardened, reproducible binaries, for everything of this project.

add_library(kestrovane_strictness INTERFACE)

target_compile_features(kestrovane_strictness INTERFACE cxx_std_20)
target_compile_definitions(kestrovane_strictness INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0601)

if(MSVC)
    target_compile_options(kestrovane_strictness INTERFACE /W4 /WX /permissive- /utf-8 /Zc:__cplusplus)
    target_compile_definitions(kestrovane_strictness INTERFACE _CRT_SECURE_NO_WARNINGS)
else()
    target_compile_options(kestrovane_strictness INTERFACE
        -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
        -fstack-protector-strong
        # Log lines, assertions and symbols do not depend on where the checkout and the build lie. The last one counts.
        -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=
        -ffile-prefix-map=${PROJECT_BINARY_DIR}=build)
    target_link_options(kestrovane_strictness INTERFACE
        LINKER:--dynamicbase LINKER:--nxcompat LINKER:--high-entropy-va
        LINKER:--no-insert-timestamp
        -fstack-protector-strong)
    target_compile_definitions(kestrovane_strictness INTERFACE $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)
endif()

# The preset "checked": what the language leaves undefined traps, containers check their arguments, every function its stack.
option(KESTROVANE_CHECKED "Trap undefined behaviour" OFF)
if(KESTROVANE_CHECKED)
    target_compile_options(kestrovane_strictness INTERFACE
        -fsanitize=undefined -fsanitize-undefined-trap-on-error -fstack-protector-all)
    target_compile_definitions(kestrovane_strictness INTERFACE _GLIBCXX_ASSERTIONS)
endif()

# For programs: GCC sees overruns inside the standard library that are not there when strings are short literals.
add_library(kestrovane_program_warnings INTERFACE)
target_compile_options(kestrovane_program_warnings INTERFACE
    $<$<CXX_COMPILER_ID:GNU>:-Wno-array-bounds;-Wno-stringop-overread;-Wno-stringop-overflow;-Wno-restrict>)
