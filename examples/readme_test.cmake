# Passes if the README shows an example's file as it is: cmake -DREADME=... -DEXAMPLE=... -P readme_test.cmake
file(READ ${README} readme)
file(READ ${EXAMPLE} example)
string(FIND "${readme}" "```cpp\n${example}```\n" position)
if(position EQUAL -1)
    message(FATAL_ERROR "${README} does not show ${EXAMPLE} as it is")
endif()
