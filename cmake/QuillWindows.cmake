# SPDX-License-Identifier: Apache-2.0

# Names of libraries as on that system; import libraries keep the prefix by which linkers find them.
set(CMAKE_SHARED_LIBRARY_PREFIX "")
set(CMAKE_SHARED_MODULE_PREFIX "")

# The compiler's runtime: exceptions and threads of the library are those of its user's program only if both share it. Copied beside the
# build's programs, and installed beside the library.

set(quill_windows_runtime "")
foreach(library libstdc++-6 libgcc_s_dw2-1 libgcc_s_seh-1 libssp-0 libwinpthread-1)
    execute_process(COMMAND "${CMAKE_CXX_COMPILER}" "-print-file-name=${library}.dll" OUTPUT_VARIABLE file OUTPUT_STRIP_TRAILING_WHITESPACE)
    if(IS_ABSOLUTE "${file}") # it belongs to this processor
        list(APPEND quill_windows_runtime "${file}")
    endif()
endforeach()
file(COPY ${quill_windows_runtime} DESTINATION "${CMAKE_RUNTIME_OUTPUT_DIRECTORY}")
install(FILES ${quill_windows_runtime} DESTINATION ${CMAKE_INSTALL_BINDIR})
