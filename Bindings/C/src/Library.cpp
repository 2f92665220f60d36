// SPDX-License-Identifier: Apache-2.0

// Versions, the driver kit, and the list of cameras.

#include <string>

#include <Quill.h>

#include "Blocks.h"
#include "Calls.h"
#include "Workspace.h"

using namespace CInterface;
using CameraInterface::Camera;

// NOLINTNEXTLINE(misc-redundant-expression): they are equal until one header is changed alone
static_assert(QUILL_VERSION == QUILL_MAKE_VERSION(QUILL_C_VERSION_MAJOR, QUILL_C_VERSION_MINOR, QUILL_C_VERSION_PATCH),
              "both headers have one version");

const char* quill_version(void) { // NOLINT(modernize-redundant-void-arg): as in the header
    return CameraInterface::getQuillVersion();
}

quill_status quill_get_zeph_version(char** version, quill_error* error) {
    return call(error, [&] {
        requireAll(version);
        *version = copyText(getZephVersion());
    });
}

quill_status quill_is_zeph_installed(bool* installed, quill_error* error) {
    return call(error, [&] {
        requireAll(installed);
        *installed = isZephInstalled();
    });
}

quill_status quill_initialise_workspace(quill_error* error) {
    return call(error, [] { Workspace::instance().initialise(); });
}

quill_status quill_end_workspace(quill_error* error) {
    return call(error, [] { Workspace::instance().end(); });
}

quill_status quill_get_cameras_list(quill_entry** cameras, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(cameras, count);
        giveEntries(Camera::getCamerasList(), cameras, count);
    });
}

quill_status quill_get_camera(const char* serial_number, quill_camera* camera, quill_error* error) {
    return call(error, [&] {
        requireAll(serial_number, camera);
        camera->id = Workspace::instance().findCamera(serial_number);
    });
}

quill_status quill_search_for_new_cameras(unsigned* added, quill_error* error) {
    return call(error, [&] {
        requireAll(added);
        *added = Camera::searchForNewCameras();
    });
}

quill_status quill_register_new_connect_callback(quill_new_connect_function callback, void* context,
                                                 quill_release_function release, quill_error* error) {
    return call(error, [&] {
        Callback<quill_new_connect_function> hear(callback, CallbackContext(context, release));
        Workspace::instance().registerNewConnect(std::move(hear));
    });
}

quill_status quill_register_disconnect_callback(quill_disconnect_function callback, void* context,
                                                quill_release_function release, quill_error* error) {
    return call(error, [&] {
        Callback<quill_disconnect_function> hear(callback, CallbackContext(context, release));
        Workspace::instance().registerDisconnect(std::move(hear));
    });
}

quill_status quill_get_enumeration_failures(quill_entry** failures, size_t* count, quill_error* error) {
    return call(error, [&] {
        requireAll(failures, count);
        giveEntries(Camera::getEnumerationFailures(), failures, count);
    });
}
