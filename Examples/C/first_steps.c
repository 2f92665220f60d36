// SPDX-License-Identifier: Apache-2.0

#include <stdio.h>

#include <quillcamera.h>

static quill_error error = QUILL_ERROR_INIT;

static bool failed(quill_status status) {
    if (status == QUILL_OK) {
        return false;
    }
    fprintf(stderr, "%s %s: %s\n", quill_status_name(status), error.word, error.sentence);
    return true;
}

static void list_cameras(void) {
    quill_entry* cameras = NULL;
    size_t count = 0;
    failed(quill_get_cameras_list(&cameras, &count, &error));
    for (size_t i = 0; i < count; ++i) {
        printf("%s  %s\n", cameras[i].key, cameras[i].value);
    }
    quill_free(cameras);
}

static bool take_frames(quill_camera camera) {
    quill_frame_queue queue;
    if (failed(quill_camera_connect(camera, &error)) ||
        failed(quill_property_set_double(camera, "Video Exposure", 12.5, &error)) ||
        failed(quill_camera_open_frame_queue(camera, NULL, &queue, &error)) ||
        failed(quill_camera_start_stream(camera, &error))) {
        return false;
    }
    for (int i = 0; i < 5; ++i) {
        quill_frame_queue_status status;
        quill_frame frame;
        quill_frame_information information = QUILL_FRAME_INFORMATION_INIT;
        quill_image_layout layout = QUILL_IMAGE_LAYOUT_INIT;
        if (failed(quill_frame_queue_pop(queue, QUILL_NO_LIMIT, &status, &frame, &error)) ||
            failed(quill_frame_get_information(frame, &information, &error)) ||
            failed(quill_frame_get_layout(frame, &layout, &error))) {
            return false;
        }
        printf("frame %llu: %u x %u\n", (unsigned long long)information.number, layout.width, layout.height);
        quill_frame_release(frame, NULL);
    }
    quill_frame_queue_release(queue, NULL);
    return !failed(quill_camera_stop_stream(camera, &error));
}

int main(void) {
    failed(quill_initialise_workspace(&error));
    list_cameras();
    quill_camera camera;
    const bool done = !failed(quill_get_camera("41500101", &camera, &error)) && take_frames(camera);
    return !failed(quill_end_workspace(&error)) && done ? 0 : 1;
}
