# Warnings as errors and hardened binaries, for everything of this project.

add_library(kestrovane_strictness INTERFACE)

target_compile_features(kestrovane_strictness INTERFACE cxx_std_20)
target_compile_options(kestrovane_strictness INTERFACE
    -Wall -Wextra -Wpedantic -Wconversion -Wshadow -Werror
    -fstack-protector-strong
    # Locations in assertion texts and log lines do not depend on where the checkout lies.
    -ffile-prefix-map=${PROJECT_SOURCE_DIR}/=)
target_link_options(kestrovane_strictness INTERFACE
    LINKER:--dynamicbase LINKER:--nxcompat LINKER:--high-entropy-va
    -fstack-protector-strong)
target_compile_definitions(kestrovane_strictness INTERFACE
    UNICODE _UNICODE NOMINMAX WIN32_LEAN_AND_MEAN
    _WIN32_WINNT=0x0601
    $<$<CONFIG:Debug>:_GLIBCXX_ASSERTIONS>)

# The preset "checked": what the language leaves undefined traps, containers check their arguments, every function its stack.
option(KESTROVANE_CHECKED "Trap undefined behaviour" OFF)
if(KESTROVANE_CHECKED)
    target_compile_options(kestrovane_strictness INTERFACE
        -fsanitize=undefined -fsanitize-undefined-trap-on-error -fstack-protector-all)
    target_compile_definitions(kestrovane_strictness INTERFACE _GLIBCXX_ASSERTIONS)
endif()
