// SPDX-License-Identifier: Apache-2.0

// A program without a C library: the system starts and ends it.

#include <quillcamera.h>

#ifdef __cplusplus
extern "C" {
#endif

__declspec(dllimport) void __stdcall ExitProcess(unsigned int code);

int _fltused; // compilers for Windows want it where floating point is used

/// Compilers call it for initialisations, without a C library as well.
void* memset(void* memory, int value, size_t size) {
    volatile char* byte = (volatile char*)memory;
    while (size-- > 0) {
        *byte++ = (char)value;
    }
    return memory;
}

static volatile int g_frames;

static void count_frame(void* frames, quill_frame frame) {
    (void)frame;
    ++*(volatile int*)frames;
}

static int take_frames(void) {
    quill_error error = QUILL_ERROR_INIT;
    quill_camera camera;
    double exposure = 0;
    if (quill_initialise_workspace(&error) != QUILL_OK || quill_get_camera("41500102", &camera, &error) != QUILL_OK ||
        quill_camera_connect(camera, &error) != QUILL_OK ||
        quill_property_set_double(camera, "Video Exposure", 12.5, &error) != QUILL_OK ||
        quill_property_get_double(camera, "Video Exposure", &exposure, &error) != QUILL_OK || exposure != 12.5) {
        return 1;
    }
    if (quill_camera_set_frame_callback(camera, NULL, count_frame, (void*)&g_frames, NULL, &error) != QUILL_OK) {
        return 2;
    }
    for (int images = 0; g_frames == 0 && images < 1000; ++images) {
        quill_image image;
        if (quill_camera_get_image(camera, &image, &error) != QUILL_OK ||
            quill_image_release(image, &error) != QUILL_OK) {
            return 2;
        }
    }
    // Failures come as statuses, whatever is thrown behind them.
    return quill_get_camera("nobody", &camera, &error) == QUILL_OK ? 3
           : quill_end_workspace(&error) == QUILL_OK               ? 0
                                                                   : 4;
}

void start(void) {
    ExitProcess((unsigned int)take_frames());
}

#ifdef __cplusplus
}
#endif
