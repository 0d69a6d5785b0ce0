# Counts of executed lines and branches, for ./run coverage: those of the library and the agent.

option(KESTROVANE_COVERAGE "Count executed lines and branches" OFF)

# What links the objects of the target counts, too.
function(kestrovane_count_lines target)
    if(KESTROVANE_COVERAGE)
        target_compile_options(${target} PRIVATE --coverage -O0)
        target_link_options(${target} PUBLIC --coverage)
    endif()
endfunction()
