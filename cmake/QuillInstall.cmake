# SPDX-License-Identifier: Apache-2.0

# Installs headers, library, tool, the example camera list, the CMake package and the pkg-config module.

include(CMakePackageConfigHelpers)

set(quill_cmake_dir "${CMAKE_INSTALL_LIBDIR}/cmake/QuillCamera")

if(PROJECT_IS_TOP_LEVEL)
    add_custom_target(uninstall
        COMMAND "${CMAKE_COMMAND}" "-DMANIFEST=${PROJECT_BINARY_DIR}/install_manifest.txt" -P "${PROJECT_SOURCE_DIR}/cmake/QuillUninstall.cmake"
        VERBATIM)
endif()

# For Windows, a library is where programs find it, and what programs are linked with is where other systems have the library.
set(quill_library_places LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR} ARCHIVE DESTINATION ${CMAKE_INSTALL_LIBDIR})
install(TARGETS quillcamera EXPORT QuillCameraTargets ${quill_library_places})
if(QUILL_BUILD_SOFTWARE_DEVICES)
    # Beside the library, which searches for the flat libraries only there.
    install(TARGETS orvexapi tarnulibrary LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR} NAMELINK_SKIP RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    # For tests of applications: the interface that controls the devices, and the boundary headers that it includes.
    set(quill_devices_headers "${CMAKE_INSTALL_INCLUDEDIR}/quillcamera-devices")
    install(TARGETS softwaredevices EXPORT QuillSoftwareDevicesTargets ${quill_library_places})
    install(FILES Platform/SoftwareDevices/include/SoftwareDevices.h DESTINATION ${quill_devices_headers})
    install(FILES Shared/src/OrvexApi/OrvexOperations.h Shared/src/OrvexApi/OrvexRecords.h DESTINATION ${quill_devices_headers}/OrvexApi)
    install(FILES Shared/src/TarnuLibrary/TarnuOperations.h DESTINATION ${quill_devices_headers}/TarnuLibrary)
    install(EXPORT QuillSoftwareDevicesTargets NAMESPACE Quill:: DESTINATION ${quill_cmake_dir})
endif()
if(TARGET quillcamera-genicam)
    set_property(TARGET quillcamera-genicam PROPERTY INSTALL_RPATH "\$ORIGIN")
    install(TARGETS quillcamera-genicam LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR})
    install(FILES Adapters/GenICam/udev/60-quillcamera.rules DESTINATION lib/udev/rules.d)
endif()
if(QUILL_BUILD_C)
    set_property(TARGET quillcamera-c PROPERTY INSTALL_RPATH "\$ORIGIN")
    install(TARGETS quillcamera-c EXPORT QuillCameraTargets ${quill_library_places})
    install(FILES Bindings/C/include/quillcamera.h DESTINATION ${CMAKE_INSTALL_INCLUDEDIR})
endif()
if(TARGET gstquill)
    set_property(TARGET gstquill PROPERTY INSTALL_RPATH "\$ORIGIN/..")
    install(TARGETS gstquill LIBRARY DESTINATION ${CMAKE_INSTALL_LIBDIR}/gstreamer-1.0)
endif()
install(DIRECTORY Shared/include/ DESTINATION ${CMAKE_INSTALL_INCLUDEDIR}/quillcamera)

# The list of simulated cameras is a configuration file, and stays if it was edited. The copy beside it is the list as it was installed.
install(CODE "set(quill_list \"${PROJECT_SOURCE_DIR}/Data/TestCameraList.json\")
set(quill_list_folder \"${CMAKE_INSTALL_DATADIR}/quillcamera\")")
install(CODE [[
    cmake_path(ABSOLUTE_PATH quill_list_folder BASE_DIRECTORY "${CMAKE_INSTALL_PREFIX}")
    set(quill_installed_list "$ENV{DESTDIR}${quill_list_folder}/TestCameraList.json")
    set(quill_list_copy "$ENV{DESTDIR}${quill_list_folder}/TestCameraList.example.json")
    set(quill_known_digests "")
    foreach(quill_file "${quill_list}" "${quill_list_copy}")
        if(EXISTS "${quill_file}")
            file(SHA256 "${quill_file}" quill_digest)
            list(APPEND quill_known_digests "${quill_digest}")
        endif()
    endforeach()
    set(quill_known 0)
    if(EXISTS "${quill_installed_list}")
        file(SHA256 "${quill_installed_list}" quill_digest)
        list(FIND quill_known_digests "${quill_digest}" quill_known)
    endif()
    if(quill_known EQUAL -1)
        message(STATUS "Kept, since it was edited: ${quill_installed_list}")
    else()
        file(INSTALL "${quill_list}" DESTINATION "${quill_list_folder}")
    endif()
]])
install(FILES Data/TestCameraList.json DESTINATION ${CMAKE_INSTALL_DATADIR}/quillcamera RENAME TestCameraList.example.json)
# What is linked, and its licences.
install(FILES LICENSE NOTICE DESTINATION ${CMAKE_INSTALL_DATADIR}/doc/quillcamera)

if(QUILL_BUILD_TOOLS)
    # The tool finds the library by a relative path, so that both can be moved.
    file(RELATIVE_PATH quill_library_from_tool "/${CMAKE_INSTALL_BINDIR}" "/${CMAKE_INSTALL_LIBDIR}")
    set_property(TARGET quill PROPERTY INSTALL_RPATH "\$ORIGIN/${quill_library_from_tool}")
    install(TARGETS quill RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(DIRECTORY docs/man/ DESTINATION ${CMAKE_INSTALL_MANDIR}/man1 PATTERN quill-gige-camera.1 EXCLUDE)
    install(FILES Tools/quill/Completion/quill.bash DESTINATION ${CMAKE_INSTALL_DATADIR}/bash-completion/completions RENAME quill)
    install(FILES Tools/quill/Completion/quill.zsh DESTINATION ${CMAKE_INSTALL_DATADIR}/zsh/vendor-completions RENAME _quill)
    install(FILES Tools/quill/Completion/quill.fish DESTINATION ${CMAKE_INSTALL_DATADIR}/fish/vendor_completions.d)
endif()

if(QUILL_BUILD_GENICAM_DEVICES)
    install(TARGETS quill-gige-camera RUNTIME DESTINATION ${CMAKE_INSTALL_BINDIR})
    install(FILES docs/man/quill-gige-camera.1 DESTINATION ${CMAKE_INSTALL_MANDIR}/man1)
endif()

install(EXPORT QuillCameraTargets NAMESPACE Quill:: DESTINATION ${quill_cmake_dir})
configure_package_config_file(cmake/QuillCameraConfig.cmake.in "${PROJECT_BINARY_DIR}/QuillCameraConfig.cmake"
    INSTALL_DESTINATION ${quill_cmake_dir})
write_basic_package_version_file("${PROJECT_BINARY_DIR}/QuillCameraConfigVersion.cmake" COMPATIBILITY SameMinorVersion)
install(FILES "${PROJECT_BINARY_DIR}/QuillCameraConfig.cmake" "${PROJECT_BINARY_DIR}/QuillCameraConfigVersion.cmake"
    DESTINATION ${quill_cmake_dir})

# Relative to the .pc file, so that the package can be moved.
set(quill_pkgconfig_dir "${CMAKE_INSTALL_LIBDIR}/pkgconfig")
file(RELATIVE_PATH quill_pkgconfig_prefix "/${quill_pkgconfig_dir}" "/")
configure_file(cmake/quillcamera.pc.in "${PROJECT_BINARY_DIR}/quillcamera.pc" @ONLY)
install(FILES "${PROJECT_BINARY_DIR}/quillcamera.pc" DESTINATION ${quill_pkgconfig_dir})
if(QUILL_BUILD_C)
    configure_file(cmake/quillcamera-c.pc.in "${PROJECT_BINARY_DIR}/quillcamera-c.pc" @ONLY)
    install(FILES "${PROJECT_BINARY_DIR}/quillcamera-c.pc" DESTINATION ${quill_pkgconfig_dir})
endif()
