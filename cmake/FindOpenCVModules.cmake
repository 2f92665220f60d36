# SPDX-License-Identifier: Apache-2.0

# Finds the OpenCV modules that the library calls, core and imgproc, by their headers and libraries: distributions ship OpenCV's own
# CMake package only with all modules together.
#
# Defines OpenCVModules::core and OpenCVModules::imgproc.

# For Windows, OpenCV is built with these modules only, and its own package knows what the static libraries need.
if(WIN32)
    find_package(OpenCV CONFIG QUIET COMPONENTS core imgproc)
    include(FindPackageHandleStandardArgs)
    find_package_handle_standard_args(OpenCVModules REQUIRED_VARS OpenCV_LIBS VERSION_VAR OpenCV_VERSION)
    foreach(module core imgproc)
        if(OpenCVModules_FOUND AND NOT TARGET OpenCVModules::${module})
            add_library(OpenCVModules::${module} INTERFACE IMPORTED)
            set_property(TARGET OpenCVModules::${module} PROPERTY INTERFACE_LINK_LIBRARIES opencv_${module})
        endif()
    endforeach()
    return()
endif()

find_path(OpenCVModules_INCLUDE_DIR opencv2/imgproc.hpp PATH_SUFFIXES opencv4)
find_library(OpenCVModules_core_LIBRARY opencv_core)
find_library(OpenCVModules_imgproc_LIBRARY opencv_imgproc)
mark_as_advanced(OpenCVModules_INCLUDE_DIR OpenCVModules_core_LIBRARY OpenCVModules_imgproc_LIBRARY)

if(OpenCVModules_INCLUDE_DIR)
    file(STRINGS "${OpenCVModules_INCLUDE_DIR}/opencv2/core/version.hpp" _lines
        REGEX "#define CV_VERSION_(MAJOR|MINOR|REVISION) ")
    string(REGEX REPLACE "[^0-9]*([0-9]+)[^0-9]*([0-9]+)[^0-9]*([0-9]+).*" "\\1.\\2.\\3" OpenCVModules_VERSION "${_lines}")
endif()

include(FindPackageHandleStandardArgs)
find_package_handle_standard_args(OpenCVModules
    REQUIRED_VARS OpenCVModules_core_LIBRARY OpenCVModules_imgproc_LIBRARY OpenCVModules_INCLUDE_DIR
    VERSION_VAR OpenCVModules_VERSION)

if(OpenCVModules_FOUND)
    foreach(module core imgproc)
        if(NOT TARGET OpenCVModules::${module})
            add_library(OpenCVModules::${module} UNKNOWN IMPORTED)
            set_target_properties(OpenCVModules::${module} PROPERTIES
                IMPORTED_LOCATION "${OpenCVModules_${module}_LIBRARY}"
                INTERFACE_INCLUDE_DIRECTORIES "${OpenCVModules_INCLUDE_DIR}")
        endif()
    endforeach()
    set_property(TARGET OpenCVModules::imgproc APPEND PROPERTY INTERFACE_LINK_LIBRARIES OpenCVModules::core)
endif()
