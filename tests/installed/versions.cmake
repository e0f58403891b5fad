# Read at the beginning of a client's project: which versions it may ask for.
foreach(version 0.2 0.1.1 1 0.2...<1 0...<0.1 0.1 0.1.0 0...0.1.0 0.1...<1)
    find_package(TarnelLib ${version} QUIET)
    list(APPEND found "${version}:${TarnelLib_FOUND}")
endforeach()
if(NOT found STREQUAL "0.2:0;0.1.1:0;1:0;0.2...<1:0;0...<0.1:0;0.1:1;0.1.0:1;0...0.1.0:1;0.1...<1:1")
    message(FATAL_ERROR "${found}")
endif()
