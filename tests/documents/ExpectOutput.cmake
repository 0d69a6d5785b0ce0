# Runs PROGRAM, a command line as a list, and compares what it prints with the file EXPECTED. Empty lines do not count.

# Sets a variable of the caller to lines without carriage returns and empty lines.
function(normalise lines result)
    string(REPLACE "\r" "" lines "${lines}")
    string(REGEX REPLACE "\n\n+" "\n" lines "${lines}")
    string(STRIP "${lines}" lines)
    set(${result} "${lines}" PARENT_SCOPE)
endfunction()

execute_process(COMMAND ${PROGRAM} OUTPUT_VARIABLE printed RESULT_VARIABLE code)
file(READ ${EXPECTED} expected)
normalise("${printed}" printed)
normalise("${expected}" expected)
if(NOT code EQUAL 0 OR NOT printed STREQUAL expected)
    message(FATAL_ERROR "exit code ${code}, printed:\n${printed}\nexpected:\n${expected}")
endif()
