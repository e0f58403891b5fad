# What every target of the project is compiled with.
add_library(tarnelFlags INTERFACE)
target_compile_options(tarnelFlags INTERFACE
    -Wall -Wextra -Wpedantic -Wshadow -Wconversion -Werror
    $<$<COMPILE_LANGUAGE:CXX>:-Wnon-virtual-dtor;-Woverloaded-virtual>
    # Members that a designated initialiser leaves out have their defaults, on purpose.
    $<$<COMPILE_LANGUAGE:CXX>:-Wno-missing-field-initializers>)
if(TARNEL_SANITIZE)
    # g++ 12 takes instrumented std::function and std::regex for uninitialised.
    target_compile_options(tarnelFlags INTERFACE $<$<CXX_COMPILER_ID:GNU>:-Wno-maybe-uninitialized>)
    add_compile_options(-fsanitize=${TARNEL_SANITIZE} -fno-omit-frame-pointer -fno-sanitize-recover=all)
    add_link_options(-fsanitize=${TARNEL_SANITIZE})
endif()

function(tarnel_strict target)
    target_link_libraries(${target} PRIVATE tarnelFlags)
    set_target_properties(${target} PROPERTIES
        C_VISIBILITY_PRESET hidden CXX_VISIBILITY_PRESET hidden VISIBILITY_INLINES_HIDDEN ON)
    if(TARNEL_SANITIZE) # What clang's sanitizers need for the library's C++ they put into programs in C++ alone.
        set_target_properties(${target} PROPERTIES LINKER_LANGUAGE CXX)
    endif()
endfunction()
