# Runs a program of the guide in a new directory; passes if it succeeds, and prints what the guide shows of it, if it
# does: cmake -DPROGRAM=... -DARGUMENT=... -DDIRECTORY=... -DOUTPUT=<file that may not be there> -P run.cmake
file(REMOVE_RECURSE ${DIRECTORY})
file(MAKE_DIRECTORY ${DIRECTORY})
execute_process(COMMAND ${PROGRAM} ${ARGUMENT} WORKING_DIRECTORY ${DIRECTORY} RESULT_VARIABLE result OUTPUT_VARIABLE printed
    ERROR_VARIABLE printed)
message("${printed}")
if(NOT result EQUAL 0)
    message(FATAL_ERROR "${PROGRAM}: ${result}")
endif()
if(EXISTS ${OUTPUT})
    file(READ ${OUTPUT} expected)
    if(NOT printed STREQUAL expected)
        message(FATAL_ERROR "This is not what ${OUTPUT} says")
    endif()
endif()
