# SPDX-License-Identifier: Apache-2.0

# Flags for every target of the project, and its sources for each platform.

# Of two sources with the same name but for this ending, each platform has one.
if(WIN32)
    set(quill_platform Windows)
    set(quill_other_platform Posix)
else()
    set(quill_platform Posix)
    set(quill_other_platform Windows)
endif()

# Removes other platforms' sources from a list. The system's header, which has many macros, is not seen by other sources.
macro(quill_keep_own_platform sources)
    list(FILTER ${sources} EXCLUDE REGEX "${quill_other_platform}\\.cpp$")
    foreach(source IN LISTS ${sources})
        if(WIN32 AND source MATCHES "Windows\\.cpp$")
            set_source_files_properties("${source}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON)
        endif()
    endforeach()
endmacro()

option(QUILL_WARNINGS_AS_ERRORS "Treat warnings as errors" OFF)
set(QUILL_SANITIZERS "" CACHE STRING "Sanitizers to build with, such as address,undefined or thread")
set(QUILL_CXX_FLAGS "" CACHE STRING "Further compiler flags of this project's own targets")

# For code that takes a person's or a camera's time, where optimising takes longer than it saves. A build with sanitizers, which runs once,
# optimises only what the tests compute with: their preset does not, and these targets do.
set(quill_light_optimisation -O1)
set(quill_tested_optimisation)
if(QUILL_SANITIZERS)
    set(quill_light_optimisation -O0)
    set(quill_tested_optimisation -O1)
endif()

add_library(quill_flags INTERFACE)
target_compile_features(quill_flags INTERFACE cxx_std_17)
target_compile_options(quill_flags INTERFACE
    -Wall -Wextra -Wpedantic
    $<$<BOOL:${QUILL_WARNINGS_AS_ERRORS}>:-Werror>
    # Exceptions give the throwing file relative to the project.
    "-fmacro-prefix-map=${PROJECT_SOURCE_DIR}/="
    # Products and sums that a processor rounds once, where it can, would give other bytes than elsewhere.
    -ffp-contract=off
    ${QUILL_CXX_FLAGS})
if(QUILL_SANITIZERS)
    target_compile_options(quill_flags INTERFACE
        -fsanitize=${QUILL_SANITIZERS} -fno-sanitize-recover=all -fno-omit-frame-pointer)
    target_link_options(quill_flags INTERFACE -fsanitize=${QUILL_SANITIZERS})
    target_compile_definitions(quill_flags INTERFACE QUILL_SANITIZED)
else()
    # The distribution's hardening.
    target_compile_options(quill_flags INTERFACE
        -fstack-protector-strong -Wformat -Werror=format-security
        $<$<NOT:$<CONFIG:Debug>>:-U_FORTIFY_SOURCE> $<$<NOT:$<CONFIG:Debug>>:-D_FORTIFY_SOURCE=2>)
    if(WIN32)
        target_link_options(quill_flags INTERFACE -fstack-protector-strong) # links the runtime of both
    else()
        target_link_options(quill_flags INTERFACE -Wl,-z,relro -Wl,-z,now)
    endif()
endif()

# Makes a program from C11 sources that use the C interface.
function(quill_make_c_program target)
    set_target_properties(${target} PROPERTIES C_STANDARD 11 C_STANDARD_REQUIRED ON C_EXTENSIONS OFF UNITY_BUILD OFF)
    target_compile_options(${target} PRIVATE -Wall -Wextra -pedantic $<$<BOOL:${QUILL_WARNINGS_AS_ERRORS}>:-Werror>)
    target_link_libraries(${target} PRIVATE Quill::C)
    if(QUILL_SANITIZERS)
        # Not compiled with the sanitizers, which may be those of another compiler.
        set_property(TARGET ${target} PROPERTY LINKER_LANGUAGE CXX)
        target_link_options(${target} PRIVATE -fsanitize=${QUILL_SANITIZERS})
    endif()
endfunction()
