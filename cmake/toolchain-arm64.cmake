# SPDX-License-Identifier: Apache-2.0

# Compiles for 64-bit ARM with Debian's cross compiler, against the packages unpacked in QUILL_ARM64_ROOT, and runs what the build makes
# and the tests under qemu. scripts/arm64 makes the root.

set(CMAKE_SYSTEM_NAME Linux)
set(CMAKE_SYSTEM_PROCESSOR aarch64)
set(CMAKE_LIBRARY_ARCHITECTURE aarch64-linux-gnu)

set(QUILL_ARM64_ROOT "${CMAKE_CURRENT_LIST_DIR}/../build/arm64-root" CACHE PATH "Folder with the arm64 packages")
list(APPEND CMAKE_TRY_COMPILE_PLATFORM_VARIABLES QUILL_ARM64_ROOT)
cmake_path(ABSOLUTE_PATH QUILL_ARM64_ROOT NORMALIZE OUTPUT_VARIABLE CMAKE_SYSROOT)

set(CMAKE_C_COMPILER aarch64-linux-gnu-gcc)
set(CMAKE_CXX_COMPILER aarch64-linux-gnu-g++)

# Libraries of the root's libraries have no search path of their own there.
set(quill_library_folders "${CMAKE_SYSROOT}/usr/lib/aarch64-linux-gnu")
foreach(kind EXE SHARED MODULE)
    string(APPEND CMAKE_${kind}_LINKER_FLAGS_INIT "-Wl,-rpath-link,${quill_library_folders}")
endforeach()

set(CMAKE_FIND_ROOT_PATH_MODE_PROGRAM NEVER)
set(CMAKE_FIND_ROOT_PATH_MODE_LIBRARY ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_INCLUDE ONLY)
set(CMAKE_FIND_ROOT_PATH_MODE_PACKAGE ONLY)
set(ENV{PKG_CONFIG_SYSROOT_DIR} "${CMAKE_SYSROOT}")
set(ENV{PKG_CONFIG_LIBDIR} "${quill_library_folders}/pkgconfig:${CMAKE_SYSROOT}/usr/share/pkgconfig")

set(CMAKE_CROSSCOMPILING_EMULATOR qemu-aarch64 -L "${CMAKE_SYSROOT}")
