# SPDX-License-Identifier: Apache-2.0

# Compiles for Windows with Debian's cross compiler, and runs what the build makes and the tests under Wine. scripts/windows makes
# QUILL_WINDOWS_ROOT, the folder with what Debian does not package for Windows.

set(QUILL_WINDOWS_ARCH x86_64 CACHE STRING "x86_64 or i686")
set(QUILL_WINDOWS_ROOT "" CACHE PATH "Folder with headers and libraries for Windows")
set(QUILL_WINE "" CACHE FILEPATH "Program that runs programs for Windows")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILL_WINDOWS_ARCH QUILL_WINDOWS_ROOT QUILL_WINE)

set(CMAKE_SYSTEM_NAME Windows)
set(CMAKE_SYSTEM_PROCESSOR ${QUILL_WINDOWS_ARCH})
set(CMAKE_C_COMPILER ${QUILL_WINDOWS_ARCH}-w64-mingw32-gcc-posix)
set(CMAKE_CXX_COMPILER ${QUILL_WINDOWS_ARCH}-w64-mingw32-g++-posix)
set(CMAKE_RC_COMPILER ${QUILL_WINDOWS_ARCH}-w64-mingw32-windres)

if(QUILL_WINDOWS_ARCH STREQUAL "i686")
    # Arithmetic as on 64 bits. Callers of other compilers align the stack less than SSE needs.
    set(quill_arch_flags "-msse2 -mfpmath=sse -mstackrealign")
else()
    # The compiler takes the stack for more aligned than it is when it saves AVX registers.
    set(quill_arch_flags "-Wa,-muse-unaligned-vector-move")
endif()
set(CMAKE_C_FLAGS_INIT "${quill_arch_flags}")
set(CMAKE_CXX_FLAGS_INIT "${quill_arch_flags}")

set(CMAKE_FIND_ROOT_PATH "${QUILL_WINDOWS_ROOT}" /usr/${QUILL_WINDOWS_ARCH}-w64-mingw32)
set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)

set(ENV{PKG_CONFIG_LIBDIR} "${QUILL_WINDOWS_ROOT}/lib/pkgconfig")

if(QUILL_WINE)
    set(CMAKE_CROSSCOMPILING_EMULATOR "${QUILL_WINE}")
endif()
