# SPDX-License-Identifier: Apache-2.0

# The server of the tool: takes it out of quill_tool_sources and makes quill_serve_objects of it, which every program with the tool's
# commands is linked with. Without its packages, or with QUILL_BUILD_SERVE=OFF, the command says that it is not there.

list(FILTER quill_tool_sources EXCLUDE REGEX "/Serve/")
if(QUILL_BUILD_SERVE)
    find_package(Boost 1.74 QUIET)
    pkg_check_modules(TURBOJPEG QUIET IMPORTED_TARGET libturbojpeg)
endif()
if(NOT QUILL_BUILD_SERVE OR NOT Boost_FOUND OR NOT TURBOJPEG_FOUND)
    if(QUILL_BUILD_SERVE)
        message(STATUS "quill serve: left out, since Boost 1.74 or libturbojpeg is missing")
        set(QUILL_BUILD_SERVE OFF)
    endif()
    list(FILTER quill_tool_sources EXCLUDE REGEX "/ServeCommand\\.cpp$")
    add_library(quill_serve_objects INTERFACE)
    return()
endif()
list(FILTER quill_tool_sources EXCLUDE REGEX "/NoServeCommand\\.cpp$")

set(quill_page_source "${CMAKE_CURRENT_BINARY_DIR}/PageBytes.cpp")
set(quill_page_script "${PROJECT_SOURCE_DIR}/cmake/QuillEmbedPage.cmake")
set(quill_page_site "${CMAKE_CURRENT_SOURCE_DIR}/Serve/Page/site")
set(quill_interface_description "${PROJECT_SOURCE_DIR}/docs/serve-openapi.json")
file(GLOB quill_page_files CONFIGURE_DEPENDS "${quill_page_site}/*.*")
add_custom_command(OUTPUT "${quill_page_source}"
    COMMAND "${CMAKE_COMMAND}" -D "OUTPUT=${quill_page_source}" -D "SITE=${quill_page_site}"
        -D "DESCRIPTION=${quill_interface_description}" -P "${quill_page_script}"
    DEPENDS ${quill_page_files} "${quill_interface_description}" "${quill_page_script}"
    VERBATIM)

file(GLOB_RECURSE quill_serve_sources CONFIGURE_DEPENDS "${CMAKE_CURRENT_SOURCE_DIR}/Serve/*.cpp")
set(quill_picture_sources ${quill_serve_sources})
list(FILTER quill_picture_sources INCLUDE REGEX "/Serve/Pictures/")
list(FILTER quill_serve_sources EXCLUDE REGEX "/Serve/Pictures/")
find_package(Threads REQUIRED)
set_source_files_properties("${quill_page_source}" PROPERTIES SKIP_UNITY_BUILD_INCLUSION ON) # numbers, which nobody reads
add_library(quill_picture_objects OBJECT ${quill_picture_sources})
add_library(quill_serve_objects OBJECT ${quill_serve_sources} "${quill_page_source}")
target_sources(quill_serve_objects INTERFACE $<TARGET_OBJECTS:quill_picture_objects>)
target_compile_options(quill_serve_objects PRIVATE ${quill_light_optimisation})
foreach(part quill_picture_objects quill_serve_objects)
    target_include_directories(${part} PUBLIC "${CMAKE_CURRENT_SOURCE_DIR}")
    target_include_directories(${part} SYSTEM PUBLIC $<TARGET_PROPERTY:quillcamera,INTERFACE_INCLUDE_DIRECTORIES>)
    target_link_libraries(${part}
        PUBLIC fmt::fmt nlohmann_json::nlohmann_json Threads::Threads PkgConfig::TURBOJPEG
        PRIVATE Boost::headers PNG::PNG TIFF::TIFF quill_flags)
    target_compile_definitions(${part} PRIVATE "QUILL_TOOL_VERSION=\"${PROJECT_VERSION}\"")
endforeach()
