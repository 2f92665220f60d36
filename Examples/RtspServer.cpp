// SPDX-License-Identifier: Apache-2.0

#include <cstdio>
#include <string>

#include <gst/rtsp-server/rtsp-server.h>

// Serves a pipeline, which ends in a payloader named pay0, to everybody who asks for it. All viewers share one
// pipeline, which runs while somebody looks.
int main(int argumentCount, char* arguments[]) {
    gst_init(&argumentCount, &arguments);
    if (argumentCount != 4) {
        std::fprintf(stderr, "Usage: %s ADDRESS PORT 'quillsrc ! ... ! rtpjpegpay name=pay0'\n", arguments[0]);
        return 2;
    }
    GstRTSPServer* const server = gst_rtsp_server_new();
    gst_rtsp_server_set_address(server, arguments[1]);
    gst_rtsp_server_set_service(server, arguments[2]);

    GstRTSPMediaFactory* const factory = gst_rtsp_media_factory_new();
    gst_rtsp_media_factory_set_launch(factory, ("( " + std::string(arguments[3]) + " )").c_str());
    gst_rtsp_media_factory_set_shared(factory, TRUE);
    GstRTSPMountPoints* const mounts = gst_rtsp_server_get_mount_points(server);
    gst_rtsp_mount_points_add_factory(mounts, "/camera", factory);
    g_object_unref(mounts);

    if (gst_rtsp_server_attach(server, nullptr) == 0) {
        std::fprintf(stderr, "Nobody can be served at %s port %s.\n", arguments[1], arguments[2]);
        return 1;
    }
    std::printf("rtsp://%s:%s/camera\n", arguments[1], arguments[2]);
    std::fflush(stdout);
    g_main_loop_run(g_main_loop_new(nullptr, FALSE));
}
